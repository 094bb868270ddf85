#include "model/BufferGate.h"

#include "model/BufferVerifier.h"
#include "model/ModelView.h"

#include <algorithm>

namespace Quorlan {
namespace {

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

Schema::Model const* OpenUntrustedModel(std::vector<char> const& buffer, ShapeScans* scans) {
    auto const model = VerifyBuffer(buffer, scans);
    bool const isSafe = model.root != nullptr && AreInstancesPlaced(*model.root) && IsCopyBounded(model, buffer.size());
    return isSafe ? model.root : nullptr;
}

}  // namespace Quorlan
