#include "model/BufferGate.h"
#include "model/BufferVerifier.h"
#include "model/ModelView.h"
#include "model/PropertyValue.h"

#include <Quorlan/ModelTypes.h>
#include <Quorlan/ModelValidator.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>

namespace Quorlan {
namespace {

constexpr std::size_t kMaxProblems = 100;

/// All representation kinds are below this one.
constexpr std::uint8_t kKindLimit = 17;

constexpr std::uint32_t kMaxVertexCount = 65536;
constexpr std::uint32_t kMinLoopLength = 3;

// The tools' time grows with the square of a loop's length and with the square of the number of faces at a vertex.
constexpr std::uint32_t kMaxLoopLength = 65536;
constexpr std::uint32_t kMaxFaceCount = 262144;  ///< twice what a closed surface over 65,536 vertices can have

using LoopVector = flatbuffers::Vector<std::uint16_t>;

/// Walks one verified model and notes what is out of range, each with its place.
class ModelCheck {
public:
    ModelCheck(VerifiedModel const& verified, std::size_t size, std::vector<std::string>& problems)
        : verified_(verified),
          model_(*verified.root),
          geometry_(*model_.geometry()),
          size_(size),
          problems_(problems) {}

    void Run() {
        CheckEntities();
        CheckInstances();
        CheckDefinitions();
        CheckMaterials();
        CheckBReps("facetedBRep", geometry_.facetedBReps());
        CheckBReps("brepWithUV", geometry_.brepsWithUV());
        CheckBReps("brepWithNormal", geometry_.brepsWithNormal());
        if (model_.ownerHistories() != nullptr) CheckOwnerHistories(*model_.ownerHistories());
        if (model_.properties() != nullptr) CheckProperties(*model_.properties());
        CheckSizes();
    }

private:
    void Add(std::string problem) {
        if (problems_.size() < kMaxProblems) problems_.push_back(std::move(problem));
    }

    /// "place: what 9 of 4" unless `index` is below `count`.
    template <class Place>
    void CheckIndex(Place const& place, char const* what, std::uint64_t index, std::uint64_t count) {
        if (index < count) return;
        Add(place() + ": " + what + " " + std::to_string(index) + " of " + std::to_string(count));
    }

    template <class Place>
    void CheckIndexOrNone(Place const& place, char const* what, std::uint32_t index, std::uint64_t count) {
        if (index != kInvalidIndex) CheckIndex(place, what, index, count);
    }

    void CheckEntities() {
        auto const& entities = *model_.entities();
        for (std::uint32_t i = 0; i < entities.records()->size(); ++i) {
            auto const& record = *entities.records()->Get(i);
            auto const place = [i] { return "entity " + std::to_string(i); };
            std::uint32_t const reference = record.identifierReference();
            switch (record.identifierKind()) {
                case 0: CheckIndex(place, "GUID index", reference, CountOf(entities.guids())); break;
                case 1:
                case 3:
                    CheckIndex(place, "identifier text index", reference, CountOf(entities.identifierTexts()));
                    break;
                case 2: CheckIndex(place, "geometric key index", reference, CountOf(entities.geometricKeys())); break;
                default: break;
            }
            CheckIndexOrNone(place, "text index", record.textReference(), CountOf(entities.texts()));
        }
    }

    void CheckInstances() {
        auto const* const instances = geometry_.instances();
        for (std::uint32_t i = 0; i < CountOf(instances); ++i) {
            auto const& instance = *instances->Get(i);
            auto const place = [i] { return "instance " + std::to_string(i); };
            CheckIndex(place, "placement index", instance.placementIndex(), CountOf(geometry_.placements()));
            CheckIndex(place, "entity index", instance.entityIndex(), model_.entities()->records()->size());
            CheckIndex(place, "definition index", instance.definitionIndex(), CountOf(geometry_.definitions()));
            CheckIndexOrNone(place, "material index", instance.materialIndex(), CountOf(geometry_.materials()));
            CheckIndexOrNone(place, "layer index", instance.layerIndex(), CountOf(geometry_.layers()));
        }
    }

    void CheckDefinitions() {
        auto const* const definitions = geometry_.definitions();
        for (std::uint32_t i = 0; i < CountOf(definitions); ++i) {
            auto const& definition = *definitions->Get(i);
            auto const place = [i] { return "definition " + std::to_string(i); };
            CheckIndex(place, "kind", definition.kind(), kKindLimit);
            std::uint32_t const index = definition.kindIndex();
            switch (definition.kind()) {
                case kFacetedBRep:
                    CheckIndex(place, "facetedBRep index", index, CountOf(geometry_.facetedBReps()));
                    break;
                case kGraphicsContainer:
                    CheckIndex(place, "graphicsContainer index", index, CountOf(geometry_.graphicsContainers()));
                    break;
                case kBRepWithUV: CheckIndex(place, "brepWithUV index", index, CountOf(geometry_.brepsWithUV())); break;
                case kBRepWithNormal:
                    CheckIndex(place, "brepWithNormal index", index, CountOf(geometry_.brepsWithNormal()));
                    break;
                default: break;
            }
        }
    }

    void CheckSizes() {
        std::uint64_t shapesSize = 0;
        for (auto const& sizes : verified_.shapeSizes) {
            shapesSize = std::accumulate(sizes.begin(), sizes.end(), shapesSize);
        }
        if (shapesSize > size_) Add("shapes share bytes: their parts add up to more than the buffer");
        std::uint64_t const usedSize = ComputeCopiedSize(verified_) + ComputePropertySize(verified_);
        if (usedSize > kMaxContentFactor * size_) {
            Add("texts, textures or shapes are named so often that they add up to " + std::to_string(usedSize) +
                " bytes");
        }
    }

    void CheckMaterials() {
        auto const* const materials = geometry_.materials();
        for (std::uint32_t i = 0; i < CountOf(materials); ++i) {
            std::int32_t const texture = materials->Get(i)->textureIndex();
            if (texture == -1) continue;
            if (texture >= 0 && static_cast<std::uint32_t>(texture) < CountOf(geometry_.textures())) continue;
            Add("material " + std::to_string(i) + ": texture index " + std::to_string(texture) + " of " +
                std::to_string(CountOf(geometry_.textures())));
        }
    }

    template <class Table>
    void CheckBReps(char const* name, flatbuffers::Vector<flatbuffers::Offset<Table>> const* tables) {
        for (std::uint32_t i = 0; i < CountOf(tables); ++i) {
            auto const place = [name, i] { return std::string(name) + " " + std::to_string(i); };
            CheckBRep(place, BRepView(*tables->Get(i)));
        }
    }

    template <class Place>
    void CheckBRep(Place const& place, BRepView const& brep) {
        if (brep.vertices == nullptr) Add(place() + ": no vertices");
        if (brep.vertexCount > kMaxVertexCount) Add(place() + ": more than 65536 vertices");
        if (CountOf(brep.faces) > kMaxFaceCount) Add(place() + ": more than 262144 faces");
        for (std::uint32_t i = 0; i < CountOf(brep.faces); ++i) {
            auto const facePlace = [&place, i] { return place() + ", face " + std::to_string(i); };
            CheckLoop(facePlace, brep.faces->Get(i)->outerLoop(), brep.vertexCount);
        }
        for (std::uint32_t i = 0; i < CountOf(brep.holes); ++i) {
            auto const holePlace = [&place, i] { return place() + ", hole " + std::to_string(i); };
            CheckIndex(holePlace, "face index", brep.holes->Get(i)->face(), CountOf(brep.faces));
            CheckLoop(holePlace, brep.holes->Get(i)->innerLoop(), brep.vertexCount);
        }
    }

    template <class Place>
    void CheckLoop(Place const& place, LoopVector const* loop, std::uint32_t vertexCount) {
        if (loop == nullptr) {
            Add(place() + ": no loop");
            return;
        }
        if (loop->size() < kMinLoopLength || loop->size() > kMaxLoopLength) {
            Add(place() + ": a loop of " + std::to_string(loop->size()) + " vertices");
        }
        auto const wrong =
            std::find_if(loop->begin(), loop->end(), [vertexCount](std::uint16_t v) { return v >= vertexCount; });
        if (wrong != loop->end()) CheckIndex(place, "vertex index", *wrong, vertexCount);
    }

    void CheckOwnerHistories(Schema::OwnerHistories const& histories) {
        for (std::uint32_t i = 0; i < CountOf(histories.histories()); ++i) {
            auto const& history = *histories.histories()->Get(i);
            auto const place = [i] { return "owner history " + std::to_string(i); };
            CheckIndexOrNone(place, "part index", history.part(), CountOf(histories.parts()));
            CheckIndexOrNone(place, "record index", history.record(), CountOf(histories.records()));
        }
        for (std::uint32_t i = 0; i < CountOf(histories.links()); ++i) {
            auto const& link = *histories.links()->Get(i);
            auto const place = [i] { return "owner history link " + std::to_string(i); };
            CheckIndex(place, "entity index", link.entity(), model_.entities()->records()->size());
            CheckIndex(place, "owner history index", link.reference(), CountOf(histories.histories()));
        }
    }

    void CheckProperties(Schema::Properties const& properties) {
        std::uint32_t previousEntity = 0;
        for (std::uint32_t i = 0; i < CountOf(properties.entries()); ++i) {
            auto const& entry = *properties.entries()->Get(i);
            auto const place = [i] { return "property " + std::to_string(i); };
            CheckIndex(place, "entity index", entry.entity(), model_.entities()->records()->size());
            CheckIndex(place, "set name index", entry.set(), CountOf(properties.strings()));
            CheckIndex(place, "name index", entry.name(), CountOf(properties.strings()));
            CheckIndex(place, "value kind", entry.valueKind(), kBooleanProperty + 1);
            if (entry.valueKind() == kTextProperty) {
                CheckIndex(place, "value text index", entry.value(), CountOf(properties.strings()));
            }
            if (entry.entity() < previousEntity) Add(place() + ": not in the order of entities");
            previousEntity = entry.entity();
        }
    }

    VerifiedModel const& verified_;
    Schema::Model const& model_;
    Schema::Geometry const& geometry_;
    std::size_t size_;
    std::vector<std::string>& problems_;
};

}  // namespace

bool ModelValidator::Build(std::vector<char> const& buffer) {
    problems_.clear();
    if (buffer.size() < 8 || !HasModelIdentifier(buffer)) {
        problems_.emplace_back("buffer: no model buffer (no identifier \"QLN8\")");
        return false;
    }
    if (buffer.size() >= kMaxBufferSize) {
        problems_.emplace_back("buffer: 2 GiB or more");
        return false;
    }
    auto const model = VerifyBuffer(buffer);
    if (model.root == nullptr) {
        problems_.emplace_back("buffer: damaged or truncated (offsets, vectors or required tables are wrong)");
        return false;
    }
    ModelCheck(model, buffer.size(), problems_).Run();
    return problems_.empty();
}

}  // namespace Quorlan
