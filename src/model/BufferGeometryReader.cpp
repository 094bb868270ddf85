#include "model/BufferReaders.h"
#include "model/ShapeReading.h"

namespace Quorlan {
namespace {

/// The table of a definition in the vector of its kind, or null.
template <class Table>
Table const* FindTable(flatbuffers::Vector<flatbuffers::Offset<Table>> const* tables,
                       Schema::GeometryDefinitionInfo const* definition, std::uint8_t kind) {
    if (definition == nullptr || definition->kind() != kind) return nullptr;
    return FindElement(tables, definition->kindIndex());
}

Vertex ToVertex(Schema::Vector3 const& v) { return {v.x(), v.y(), v.z()}; }

}  // namespace

std::uint32_t BufferGeometryReader::GetInstanceCount() const { return CountOf(geometry_.instances()); }

void BufferGeometryReader::GetInstance(InstanceRecord& out, std::uint32_t instance) const {
    auto const* const record = FindElement(geometry_.instances(), instance);
    if (record == nullptr) {
        out = {kInvalidIndex, kInvalidIndex, kInvalidIndex, kInvalidIndex, kInvalidIndex};
        return;
    }
    out = {record->placementIndex(), record->entityIndex(), record->definitionIndex(), record->materialIndex(),
           record->layerIndex()};
}

std::uint32_t BufferGeometryReader::GetDefinitionCount() const { return CountOf(geometry_.definitions()); }

void BufferGeometryReader::GetDefinitionBounds(DefinitionBounds& out, std::uint32_t definition) const {
    auto const* const record = FindDefinition(definition);
    out = record == nullptr ? DefinitionBounds{}
                            : DefinitionBounds{ToVertex(record->boundsMin()), ToVertex(record->boundsMax())};
}

std::uint32_t BufferGeometryReader::GetMaterialCount() const { return CountOf(geometry_.materials()); }

void BufferGeometryReader::GetMaterial(MaterialRecord& out, std::uint32_t material) const {
    auto const* const record = FindElement(geometry_.materials(), material);
    out = {};
    if (record == nullptr) return;
    out.color = {record->red(), record->green(), record->blue(), record->alpha()};
    out.textureIndex = record->textureIndex();
    out.twoSided = record->twoSided() == 1;
}

std::uint32_t BufferGeometryReader::GetTextureCount() const { return CountOf(geometry_.textures()); }

void BufferGeometryReader::GetTexture(Texture& out, std::uint32_t texture) const {
    auto const* const record = FindElement(geometry_.textures(), texture);
    if (record == nullptr) {
        out = {};
        return;
    }
    std::vector<char> data;
    if (record->data() != nullptr) data.assign(record->data()->begin(), record->data()->end());
    out = Texture(static_cast<TextureType>(record->type()), std::move(data));
}

std::uint32_t BufferGeometryReader::GetExtraContentCount() const { return CountOf(geometry_.layers()); }

void BufferGeometryReader::GetLayerName(std::string& out, std::uint32_t layer) const {
    Assign(out, FindElement(geometry_.layers(), layer));
}

Schema::GeometryDefinitionInfo const* BufferGeometryReader::FindDefinition(std::uint32_t definition) const {
    return FindElement(geometry_.definitions(), definition);
}

std::uint32_t BufferGeometryReader::GetDefinitionKind(std::uint32_t definition) const {
    auto const* const record = FindDefinition(definition);
    return record == nullptr ? 0 : record->kind();
}

bool BufferGeometryReader::GetFacetedBRep(FacetedBRep& out, std::uint32_t definition) const {
    auto const* const record = FindDefinition(definition);
    auto const brep = [&]() -> std::optional<BRepView> {
        if (auto const* plain = FindTable(geometry_.facetedBReps(), record, kFacetedBRep)) return BRepView(*plain);
        if (auto const* withUV = FindTable(geometry_.brepsWithUV(), record, kBRepWithUV)) return BRepView(*withUV);
        if (auto const* withNormal = FindTable(geometry_.brepsWithNormal(), record, kBRepWithNormal)) {
            return BRepView(*withNormal);
        }
        return std::nullopt;
    }();
    if (brep && ReadShape(out, *brep)) return true;
    out = {};
    return false;
}

void BufferGeometryReader::GetVertexNormals(std::vector<Vertex>& out, std::uint32_t definition) const {
    out.clear();
    auto const* const table = FindTable(geometry_.brepsWithNormal(), FindDefinition(definition), kBRepWithNormal);
    if (table != nullptr) ReadNormals(out, BRepView(*table));
}

void BufferGeometryReader::GetTextureCoordinates(std::vector<std::pair<float, float>>& out,
                                                 std::uint32_t definition) const {
    out.clear();
    auto const* const table = FindTable(geometry_.brepsWithUV(), FindDefinition(definition), kBRepWithUV);
    if (table != nullptr) ReadTextureCoordinates(out, BRepView(*table));
}

bool BufferGeometryReader::GetGraphicsContainer(GraphicsContainer& out, std::uint32_t definition) const {
    out.lines.clear();
    out.arcs.clear();
    auto const* const table = FindTable(geometry_.graphicsContainers(), FindDefinition(definition), kGraphicsContainer);
    if (table == nullptr) return false;
    out.lines.reserve(CountOf(table->segments()));
    for (std::uint32_t i = 0; i < CountOf(table->segments()); ++i) {
        auto const* const segment = table->segments()->Get(i);
        out.lines.push_back({ToVertex(segment->start()), ToVertex(segment->end())});
    }
    out.arcs.reserve(CountOf(table->arcs()));
    for (std::uint32_t i = 0; i < CountOf(table->arcs()); ++i) {
        auto const* const arc = table->arcs()->Get(i);
        out.arcs.push_back({ToVertex(arc->center()), ToVertex(arc->axis()), ToVertex(arc->startDirection()),
                            arc->radius(), arc->sweepAngle()});
    }
    return true;
}

std::uint32_t BufferGeometryReader::GetPlacementCount() const { return CountOf(geometry_.placements()); }

void BufferGeometryReader::GetPlacement(AffineTransform& out, std::uint32_t placement) const {
    out = ToTransform(FindElement(geometry_.placements(), placement));
}

void BufferGeometryReader::GetPlacementRecord(PlacementRecord& out, std::uint32_t placement) const {
    out = ToRecord(FindElement(geometry_.placements(), placement));
}

}  // namespace Quorlan
