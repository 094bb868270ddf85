#include "model/BufferGate.h"
#include "model/ModelView.h"

#include <Quorlan/ModelStatistics.h>

#include <unordered_set>
#include <utility>

namespace Quorlan {
namespace {

using flatbuffers::Offset;
using flatbuffers::Vector;

/// [bytes] Every vector begins with its length.
constexpr std::uint64_t kVectorHead = 4;

/// [bytes] A table with its offset to the vtable; the vtable itself is shared by tables of one shape.
std::uint64_t SizeOfTable(void const* table) {
    auto const* const bytes = static_cast<std::uint8_t const*>(table);
    auto const* const vtable = bytes - flatbuffers::ReadScalar<flatbuffers::soffset_t>(bytes);
    return flatbuffers::ReadScalar<flatbuffers::voffset_t>(vtable + sizeof(flatbuffers::voffset_t));
}

template <class T>
std::uint64_t SizeOfVector(Vector<T> const* vector) {
    return vector == nullptr ? 0 : kVectorHead + std::uint64_t{vector->size()} * sizeof(T);
}

template <class T>
std::uint64_t SizeOfVector(Vector<T const*> const* vector) {
    return vector == nullptr ? 0 : kVectorHead + std::uint64_t{vector->size()} * sizeof(T);
}

std::uint64_t SizeOf(flatbuffers::String const* text) { return text == nullptr ? 0 : kVectorHead + text->size() + 1; }

template <class T, class SizeOfElement>
std::uint64_t SizeOfTree(Vector<Offset<T>> const* vector, SizeOfElement const& sizeOfElement) {
    std::uint64_t size = vector == nullptr ? 0 : kVectorHead + std::uint64_t{vector->size()} * sizeof(Offset<T>);
    for (std::uint32_t i = 0; i < CountOf(vector); ++i) size += sizeOfElement(*vector->Get(i));
    return size;
}

std::uint64_t SizeOfStrings(Vector<Offset<flatbuffers::String>> const* texts) {
    return SizeOfTree(texts, [](flatbuffers::String const& text) { return SizeOf(&text); });
}

template <class Table>
std::uint64_t SizeOfBReps(Vector<Offset<Table>> const* breps) {
    return SizeOfTree(breps, [](Table const& brep) {
        return SizeOfTable(&brep) + SizeOfVector(brep.vertices()) +
               SizeOfTree(
                   brep.faces(),
                   [](Schema::FaceTable const& face) { return SizeOfTable(&face) + SizeOfVector(face.outerLoop()); }) +
               SizeOfTree(brep.holes(), [](Schema::HoleTable const& hole) {
                   return SizeOfTable(&hole) + SizeOfVector(hole.innerLoop());
               });
    });
}

/// Texts of which each is counted where it is met first: owner parts and histories share theirs.
class SharedTexts {
public:
    std::uint64_t CountOnce(flatbuffers::String const* text) { return counted_.insert(text).second ? SizeOf(text) : 0; }

private:
    std::unordered_set<void const*> counted_;
};

}  // namespace

bool ModelStatistics::Build(std::vector<char> const& buffer) {
    auto const* const model = OpenUntrustedModel(buffer);
    if (model == nullptr) return false;

    tables_.clear();
    vertexCount_ = faceCount_ = holeCount_ = 0;
    auto const add = [this](char const* name, std::uint64_t count, std::uint64_t bytes) {
        tables_.push_back({name, count, bytes});
    };
    auto const addStructs = [&add](char const* name, auto const* vector) {
        add(name, CountOf(vector), SizeOfVector(vector));
    };
    auto const addStrings = [&add](char const* name, auto const* texts) {
        add(name, CountOf(texts), SizeOfStrings(texts));
    };
    auto const addBReps = [&](char const* name, auto const* breps) {
        add(name, CountOf(breps), SizeOfBReps(breps));
        for (std::uint32_t i = 0; i < CountOf(breps); ++i) {
            vertexCount_ += CountOf(breps->Get(i)->vertices());
            faceCount_ += CountOf(breps->Get(i)->faces());
            holeCount_ += CountOf(breps->Get(i)->holes());
        }
    };

    auto const& entities = *model->entities();
    addStructs("entities", entities.records());
    addStructs("guids", entities.guids());
    addStrings("texts", entities.texts());
    addStrings("identifierTexts", entities.identifierTexts());
    addStructs("geometricKeys", entities.geometricKeys());

    auto const* const histories = model->ownerHistories();
    auto const* const parts = histories == nullptr ? nullptr : histories->parts();
    auto const* const joined = histories == nullptr ? nullptr : histories->histories();
    SharedTexts texts;
    add("ownerParts", CountOf(parts), SizeOfTree(parts, [&texts](Schema::OwnerPart const& part) {
            return SizeOfTable(&part) + texts.CountOnce(part.user()) + texts.CountOnce(part.organization()) +
                   texts.CountOnce(part.application());
        }));
    addStructs("ownerHistoryRecords", histories == nullptr ? nullptr : histories->records());
    add("ownerHistories", CountOf(joined), SizeOfTree(joined, [&texts](Schema::OwnerHistory const& history) {
            return SizeOfTable(&history) + texts.CountOnce(history.lastModifyingUser()) +
                   texts.CountOnce(history.lastModifyingApplication());
        }));
    addStructs("ownerHistoryLinks", histories == nullptr ? nullptr : histories->links());

    auto const& geometry = *model->geometry();
    addStructs("placements", geometry.placements());
    addStructs("materials", geometry.materials());
    addStrings("layers", geometry.layers());
    addStructs("definitions", geometry.definitions());
    addStructs("instances", geometry.instances());
    add("textures", CountOf(geometry.textures()), SizeOfTree(geometry.textures(), [](Schema::Texture const& texture) {
            return SizeOfTable(&texture) + SizeOfVector(texture.data());
        }));
    addBReps("facetedBReps", geometry.facetedBReps());
    addBReps("brepsWithUV", geometry.brepsWithUV());
    addBReps("brepsWithNormal", geometry.brepsWithNormal());
    auto const* const graphics = geometry.graphicsContainers();
    add("graphicsContainers", CountOf(graphics),
        SizeOfTree(graphics, [](Schema::GraphicsContainerTable const& container) {
            return SizeOfTable(&container) + SizeOfVector(container.segments()) + SizeOfVector(container.arcs());
        }));

    auto const* const properties = model->properties();
    addStructs("properties", properties == nullptr ? nullptr : properties->entries());
    addStrings("propertyStrings", properties == nullptr ? nullptr : properties->strings());
    return true;
}

}  // namespace Quorlan
