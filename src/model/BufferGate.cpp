#include "model/BufferGate.h"

#include "model/ModelView.h"

#include <algorithm>

namespace Quorlan {
namespace {

/// The nesting of the schema is six tables deep; what is deeper is no model.
constexpr flatbuffers::uoffset_t kMaxDepth = 16;

/// A table is at least its 4-byte head and is reached through a 4-byte offset, so that a buffer in which nothing is
/// shared holds at most this many. The bound keeps the verifier linear in the buffer's size.
flatbuffers::uoffset_t GetMaxTables(std::size_t size) { return static_cast<flatbuffers::uoffset_t>(size / 8 + 16); }

bool PassesVerifier(std::vector<char> const& buffer) {
    if (buffer.size() < 8 || buffer.size() >= kMaxBufferSize) return false;
    flatbuffers::Verifier verifier(reinterpret_cast<std::uint8_t const*>(buffer.data()), buffer.size(), kMaxDepth,
                                   GetMaxTables(buffer.size()));
    return Schema::VerifyModelBuffer(verifier);
}

/// The verifier checks where a vector's length stands, not where its elements do.
template <class T>
bool IsAligned(flatbuffers::Vector<T const*> const* vector) {
    return CountOf(vector) == 0 || reinterpret_cast<std::uintptr_t>(vector->Data()) % alignof(T) == 0;
}

bool IsAligned(Schema::Model const& model) {
    if (!IsAligned(model.entities()->records()) || !IsAligned(model.entities()->geometricKeys())) return false;
    if (!IsAligned(model.geometry()->placements())) return false;
    if (model.ownerHistories() != nullptr && !IsAligned(model.ownerHistories()->records())) return false;
    return model.properties() == nullptr || IsAligned(model.properties()->entries());
}

bool AreInstancesPlaced(Schema::Model const& model) {
    auto const* const instances = model.geometry()->instances();
    if (instances == nullptr) return true;
    std::uint32_t const entityCount = CountOf(model.entities()->records());
    std::uint32_t const placementCount = CountOf(model.geometry()->placements());
    std::uint32_t const definitionCount = CountOf(model.geometry()->definitions());
    return std::all_of(instances->begin(), instances->end(), [&](Schema::Instance const* instance) {
        return instance->placementIndex() < placementCount && instance->entityIndex() < entityCount &&
               instance->definitionIndex() < definitionCount;
    });
}

}  // namespace

Schema::Model const* VerifyUntrustedModel(std::vector<char> const& buffer) {
    if (!PassesVerifier(buffer)) return nullptr;
    auto const* const model = Schema::GetModel(buffer.data());
    bool const isWhole =
        model->entities() != nullptr && model->entities()->records() != nullptr && model->geometry() != nullptr;
    return isWhole && IsAligned(*model) ? model : nullptr;
}

Schema::Model const* OpenUntrustedModel(std::vector<char> const& buffer) {
    auto const* const model = VerifyUntrustedModel(buffer);
    return model != nullptr && AreInstancesPlaced(*model) ? model : nullptr;
}

}  // namespace Quorlan
