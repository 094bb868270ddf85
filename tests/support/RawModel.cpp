#include "support/RawModel.h"

#include <model_generated.h>

#include <algorithm>

namespace Quorlan::Testing {
namespace {

using flatbuffers::FlatBufferBuilder;
using flatbuffers::Offset;

Schema::Vector3 ToSchema(Vector3f const& v) { return {v.x, v.y, v.z}; }

Schema::Placement ToSchema(PlacementRecord const& p) {
    return {p.origin[0],
            p.origin[1],
            p.origin[2],
            {p.xAxis[0], p.xAxis[1], p.xAxis[2]},
            {p.yAxis[0], p.yAxis[1], p.yAxis[2]}};
}

Schema::Instance ToSchema(InstanceRecord const& i) {
    return {i.placementIndex, i.entityIndex, i.definitionIndex, i.materialIndex, i.layerIndex};
}

Schema::GeometryDefinitionInfo ToSchema(RawDefinition const& d) {
    return {d.kind, d.kindIndex, ToSchema(d.lo), ToSchema(d.hi)};
}

Schema::Material ToSchema(RawMaterial const& m) { return {200, 200, 200, 255, m.textureIndex, m.twoSided, 0, 0}; }

Schema::LineSegment ToSchema(RawLine const& l) { return {ToSchema(l.start), ToSchema(l.end)}; }

Schema::ArcSegment ToSchema(RawArc const& a) {
    return {ToSchema(a.center), ToSchema(a.axis), ToSchema(a.startDirection), a.radius, a.sweepAngle};
}

/// A vector of structs, or the null offset, which leaves the field out.
template <class Struct, class Value, class Convert>
Offset<flatbuffers::Vector<Struct const*>> WriteStructs(FlatBufferBuilder& builder,
                                                        std::optional<std::vector<Value>> const& values,
                                                        Convert convert) {
    if (!values) return 0;
    std::vector<Struct> structs;
    structs.reserve(values->size());
    for (Value const& value : *values) structs.push_back(convert(value));
    return builder.CreateVectorOfStructs(structs);
}

template <class Struct, class Value>
Offset<flatbuffers::Vector<Struct const*>> WriteStructs(FlatBufferBuilder& builder,
                                                        std::optional<std::vector<Value>> const& values) {
    return WriteStructs<Struct>(builder, values, [](Value const& value) { return ToSchema(value); });
}

template <class Table, class Value, class Write>
Offset<flatbuffers::Vector<Offset<Table>>> WriteTables(FlatBufferBuilder& builder,
                                                       std::optional<std::vector<Value>> const& values, Write write) {
    if (!values) return 0;
    std::vector<Offset<Table>> tables;
    tables.reserve(values->size());
    for (Value const& value : *values) tables.push_back(write(value));
    return builder.CreateVector(tables);
}

Offset<flatbuffers::Vector<std::uint16_t>> WriteLoop(FlatBufferBuilder& builder, RawLoop const& loop) {
    return loop ? builder.CreateVector(*loop) : 0;
}

/// The three BRep tables have the same fields in the same order, so that one function writes all of them.
template <class Table, class Struct, class Create, class ToVertex>
Offset<flatbuffers::Vector<Offset<Table>>> WriteBReps(FlatBufferBuilder& builder,
                                                      std::optional<std::vector<RawBRep>> const& shapes, Create create,
                                                      ToVertex toVertex) {
    return WriteTables<Table>(builder, shapes, [&](RawBRep const& shape) {
        auto const faces = WriteTables<Schema::FaceTable>(builder, shape.faces, [&](RawLoop const& loop) {
            return Schema::CreateFaceTable(builder, WriteLoop(builder, loop));
        });
        auto const holes = WriteTables<Schema::HoleTable>(builder, shape.holes, [&](RawHole const& hole) {
            return Schema::CreateHoleTable(builder, hole.face, WriteLoop(builder, hole.loop));
        });
        std::size_t index = 0;
        auto const vertices = WriteStructs<Struct>(
            builder, shape.vertices, [&](Vector3f const& position) { return toVertex(shape, position, index++); });
        return create(builder, faces, holes, vertices);
    });
}

Offset<Schema::Geometry> WriteGeometry(FlatBufferBuilder& builder, RawModel const& model) {
    using namespace Schema;
    auto const placements = WriteStructs<Placement>(builder, model.placements);
    auto const materials = WriteStructs<Material>(builder, model.materials);
    auto const definitions = WriteStructs<GeometryDefinitionInfo>(builder, model.definitions);
    auto const instances = WriteStructs<Instance>(builder, model.instances);
    auto const layers = model.layers ? builder.CreateVectorOfStrings(*model.layers) : 0;
    auto const plain = WriteBReps<FacetedBRepTable, PositionVertex>(
        builder, model.facetedBReps, CreateFacetedBRepTable,
        [](RawBRep const&, Vector3f const& p, std::size_t) { return PositionVertex(p.x, p.y, p.z); });
    auto const withUV = WriteBReps<FacetedBRepWithUVTable, UVVertex>(
        builder, model.brepsWithUV, CreateFacetedBRepWithUVTable,
        [](RawBRep const& shape, Vector3f const& p, std::size_t i) {
            auto const uv = i < shape.uvs.size() ? shape.uvs[i] : std::pair<float, float>();
            return UVVertex(p.x, p.y, p.z, uv.first, uv.second);
        });
    auto const withNormal = WriteBReps<FacetedBRepWithNormalTable, NormalVertex>(
        builder, model.brepsWithNormal, CreateFacetedBRepWithNormalTable,
        [](RawBRep const& shape, Vector3f const& p, std::size_t i) {
            Vector3f const n = i < shape.normals.size() ? shape.normals[i] : Vector3f();
            return NormalVertex(p.x, p.y, p.z, n.x, n.y, n.z);
        });
    auto const graphics =
        WriteTables<GraphicsContainerTable>(builder, model.graphicsContainers, [&](RawGraphics const& container) {
            auto const segments = WriteStructs<LineSegment>(builder, container.segments);
            auto const arcs = WriteStructs<ArcSegment>(builder, container.arcs);
            return CreateGraphicsContainerTable(builder, segments, arcs);
        });

    GeometryBuilder geometry(builder);
    geometry.add_placements(placements);
    geometry.add_materials(materials);
    geometry.add_layers(layers);
    geometry.add_definitions(definitions);
    geometry.add_instances(instances);
    geometry.add_facetedBReps(plain);
    geometry.add_brepsWithUV(withUV);
    geometry.add_brepsWithNormal(withNormal);
    geometry.add_graphicsContainers(graphics);
    return geometry.Finish();
}

}  // namespace

std::uint32_t RawModel::AddEntity(PlacementRecord const& placement) {
    entities->push_back(placement);
    return static_cast<std::uint32_t>(entities->size() - 1);
}

std::uint32_t RawModel::AddDefinition(Vector3f const& lo, Vector3f const& hi, std::uint8_t kind,
                                      std::uint32_t kindIndex) {
    definitions->push_back({kind, kindIndex, lo, hi});
    return static_cast<std::uint32_t>(definitions->size() - 1);
}

std::uint32_t RawModel::AddBRep(RawBRep const& shape, std::uint8_t kind) {
    auto& shapes = kind == 6 ? brepsWithUV : kind == 7 ? brepsWithNormal : facetedBReps;
    if (!shapes) shapes.emplace();
    shapes->push_back(shape);

    Vector3f lo;
    Vector3f hi;
    if (shape.vertices && !shape.vertices->empty()) {
        lo = hi = shape.vertices->front();
        for (Vector3f const& v : *shape.vertices) {
            lo = {std::min(lo.x, v.x), std::min(lo.y, v.y), std::min(lo.z, v.z)};
            hi = {std::max(hi.x, v.x), std::max(hi.y, v.y), std::max(hi.z, v.z)};
        }
    }
    return AddDefinition(lo, hi, kind, static_cast<std::uint32_t>(shapes->size() - 1));
}

std::uint32_t RawModel::AddInstance(std::uint32_t entity, std::uint32_t definition, PlacementRecord const& placement,
                                    std::uint32_t material, std::uint32_t layer) {
    placements->push_back(placement);
    auto const placementIndex = static_cast<std::uint32_t>(placements->size() - 1);
    instances->push_back({placementIndex, entity, definition, material, layer});
    return static_cast<std::uint32_t>(instances->size() - 1);
}

std::vector<char> RawModel::Write() const {
    FlatBufferBuilder builder;
    Offset<Schema::Entities> entitiesTable = 0;
    if (hasEntities) {
        auto const records =
            WriteStructs<Schema::EntityRecord>(builder, entities, [this](PlacementRecord const& placement) {
                return Schema::EntityRecord(entityKind, kInvalidIndex, kInvalidIndex, 0, ToSchema(placement));
            });
        entitiesTable = Schema::CreateEntities(builder, records);
    }
    Offset<Schema::Geometry> const geometry = hasGeometry ? WriteGeometry(builder, *this) : 0;
    builder.Finish(Schema::CreateModel(builder, entitiesTable, 0, geometry), identifier.c_str());
    auto const* const bytes = reinterpret_cast<char const*>(builder.GetBufferPointer());
    return {bytes, bytes + builder.GetSize()};
}

RawBRep ToRawBRep(GeometryObjectLib::FacetedBRep const& shape) {
    auto const narrow = [](std::vector<std::uint32_t> const& loop) {
        std::vector<std::uint16_t> indices;
        for (std::uint32_t const index : loop) indices.push_back(static_cast<std::uint16_t>(index));
        return indices;
    };
    RawBRep raw;
    for (Vertex const& v : shape.vertices) {
        raw.vertices->push_back({static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)});
    }
    for (auto const& loop : shape.faces) raw.faces->push_back(narrow(loop));
    if (!shape.holes.empty()) raw.holes.emplace();
    for (auto const& [face, loops] : shape.holes) {
        for (auto const& loop : loops) raw.holes->push_back({static_cast<std::uint16_t>(face), narrow(loop)});
    }
    return raw;
}

RawBRep RawBox(Vector3f const& lo, Vector3f const& hi) {
    RawBRep box;
    box.vertices = {{{lo.x, lo.y, lo.z},
                     {hi.x, lo.y, lo.z},
                     {hi.x, hi.y, lo.z},
                     {lo.x, hi.y, lo.z},
                     {lo.x, lo.y, hi.z},
                     {hi.x, lo.y, hi.z},
                     {hi.x, hi.y, hi.z},
                     {lo.x, hi.y, hi.z}}};
    using Loop = std::vector<std::uint16_t>;
    box.faces = std::vector<RawLoop>{Loop{0, 3, 2, 1}, Loop{4, 5, 6, 7}, Loop{0, 1, 5, 4},
                                     Loop{1, 2, 6, 5}, Loop{2, 3, 7, 6}, Loop{3, 0, 4, 7}};
    return box;
}

}  // namespace Quorlan::Testing
