#include "model/BufferGate.h"
#include "model/ModelWriters.h"
#include "model/StoredBounds.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace Quorlan {
namespace {

constexpr auto kRefused = static_cast<GeometryDefinitionIndex_t>(kInvalidIndex);

/// Loop indices and the face index of a hole are 16 bits wide.
constexpr std::size_t kMaxVertexCount = 65536;
constexpr std::uint64_t kMaxHoleFace = 65535;

bool HasIndicesBelow(std::vector<std::uint32_t> const& loop, std::size_t count) {
    return std::all_of(loop.begin(), loop.end(), [count](std::uint32_t index) { return index < count; });
}

bool FitsIntoBuffer(FacetedBRep const& shape) {
    std::size_t const count = shape.vertices.size();
    auto const fits = [count](std::vector<std::uint32_t> const& loop) { return HasIndicesBelow(loop, count); };
    if (count > kMaxVertexCount || !std::all_of(shape.faces.begin(), shape.faces.end(), fits)) return false;
    return std::all_of(shape.holes.begin(), shape.holes.end(), [&fits](auto const& entry) {
        return entry.first <= kMaxHoleFace && std::all_of(entry.second.begin(), entry.second.end(), fits);
    });
}

Schema::Vector3 Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

ShapeCounts CountParts(FacetedBRep const& shape) {
    ShapeCounts counts;
    std::size_t holeCount = 0;
    std::size_t loopWords = 0;
    for (auto const& loop : shape.faces) loopWords += ShapeCounts::ToWords(loop.size());
    for (auto const& [face, loops] : shape.holes) {
        holeCount += loops.size();
        for (auto const& loop : loops) loopWords += ShapeCounts::ToWords(loop.size());
    }
    if (std::max({shape.faces.size(), holeCount, loopWords}) >= kMaxBufferSize) {
        throw std::bad_array_new_length();
    }
    counts.vertices = static_cast<std::uint32_t>(shape.vertices.size());
    counts.faces = static_cast<std::uint32_t>(shape.faces.size());
    counts.holes = static_cast<std::uint32_t>(holeCount);
    counts.loopWords = static_cast<std::uint32_t>(loopWords);
    return counts;
}

void WriteLoop(char* out, std::vector<std::uint32_t> const& loop) {
    for (std::uint32_t const index : loop) {
        flatbuffers::WriteScalar(out, static_cast<std::uint16_t>(index));
        out += sizeof(std::uint16_t);
    }
}

void WriteLoops(ShapeWriter& writer, FacetedBRep const& shape) {
    writer.BeginFaces();
    for (auto const& loop : shape.faces) WriteLoop(writer.AddFace(loop.size()), loop);
    writer.BeginHoles();
    for (auto const& [face, loops] : shape.holes) {
        for (auto const& loop : loops) WriteLoop(writer.AddHole(static_cast<std::uint16_t>(face), loop.size()), loop);
    }
}

DefinitionKind ToDefinitionKind(BRepKind kind) {
    switch (kind) {
        case BRepKind::kWithUV: return kBRepWithUV;
        case BRepKind::kWithNormal: return kBRepWithNormal;
        default: return kFacetedBRep;
    }
}

/// The box of an arc: around the centre, along each axis, the circle reaches radius * |sine of the angle to it|.
/// This bounds the whole circle; a partial arc lies inside.
void AddArc(StoredBounds& bounds, Schema::ArcSegment const& arc) {
    auto const reach = [&arc](float axis) {
        return std::abs(arc.radius()) * std::sqrt(std::max(0.0f, 1 - axis * axis));
    };
    float const x = reach(arc.axis().x());
    float const y = reach(arc.axis().y());
    float const z = reach(arc.axis().z());
    auto const& center = arc.center();
    bounds.Add(center.x() - x, center.y() - y, center.z() - z);
    bounds.Add(center.x() + x, center.y() + y, center.z() + z);
}

}  // namespace

GeometryDefinitionIndex_t DefinitionWriter::AddDefinition(DefinitionKind kind, std::size_t kindIndex,
                                                          Schema::Vector3 const& min, Schema::Vector3 const& max) {
    definitions.emplace_back(static_cast<std::uint8_t>(kind), static_cast<std::uint32_t>(kindIndex), min, max);
    return static_cast<GeometryDefinitionIndex_t>(definitions.size() - 1);
}

template <class WriteAttributes>
GeometryDefinitionIndex_t DefinitionWriter::AddShape(BRepKind kind, FacetedBRep const& shape,
                                                     WriteAttributes const& writeAttributes) {
    if (!FitsIntoBuffer(shape)) return kRefused;
    ShapeCounts const counts = CountParts(shape);
    std::size_t const stride = StrideOf(kind);
    std::size_t const position = bytes_.GetSize();
    ShapeWriter writer(bytes_, layouts_, counts, stride);
    WriteLoops(writer, shape);
    char* out = writer.BeginVertices();
    StoredBounds bounds;
    for (std::size_t i = 0; i < shape.vertices.size(); ++i, out += stride) {
        Schema::Vector3 const vertex = Narrow(shape.vertices[i]);
        std::memcpy(out, &vertex, sizeof(vertex));
        writeAttributes(i, out + sizeof(vertex));
        bounds.Add(vertex.x(), vertex.y(), vertex.z());
    }
    auto& shapes = shapes_[static_cast<std::size_t>(kind)];
    shapes.push_back({nullptr, static_cast<std::uint32_t>(position), true, counts});
    return AddDefinition(ToDefinitionKind(kind), shapes.size() - 1, bounds.GetMin(), bounds.GetMax());
}

GeometryDefinitionIndex_t DefinitionWriter::AddBRepWithNormals(
    std::pair<FacetedBRep const*, std::vector<Vertex> const*> shape) {
    auto const& [brep, normals] = shape;
    if (normals->size() != brep->vertices.size()) return kRefused;
    return AddShape(BRepKind::kWithNormal, *brep, [&normals = *normals](std::size_t i, char* out) {
        Schema::Vector3 const normal = Narrow(normals[i]);
        std::memcpy(out, &normal, sizeof(normal));
    });
}

GeometryDefinitionIndex_t DefinitionWriter::AddBRepWithUVs(
    std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*> shape) {
    auto const& [brep, coordinates] = shape;
    if (coordinates->size() != brep->vertices.size()) return kRefused;
    return AddShape(BRepKind::kWithUV, *brep, [&coordinates = *coordinates](std::size_t i, char* out) {
        flatbuffers::WriteScalar(out, coordinates[i].first);
        flatbuffers::WriteScalar(out + sizeof(float), coordinates[i].second);
    });
}

GeometryDefinitionIndex_t DefinitionWriter::AddStored(BRepKind kind, void const* table, ShapeCounts const& counts,
                                                      bool isRun, Schema::Vector3 const& min,
                                                      Schema::Vector3 const& max) {
    StoredShape stored{nullptr, static_cast<std::uint32_t>(bytes_.GetSize()), true, counts};
    if (isBorrowing_) {
        stored.borrowed = table;
        stored.isRun = isRun;
    } else {
        CopyShape(bytes_, layouts_, MakeView(kind, table), counts);
    }
    auto& shapes = shapes_[static_cast<std::size_t>(kind)];
    shapes.push_back(stored);
    return AddDefinition(ToDefinitionKind(kind), shapes.size() - 1, min, max);
}

void DefinitionWriter::Reserve(BRepKind kind, std::size_t count) {
    ReserveMore(shapes_[static_cast<std::size_t>(kind)], count);
    ReserveMore(definitions, count);
}

BRepView MakeView(BRepKind kind, void const* table) {
    switch (kind) {
        case BRepKind::kWithUV: return BRepView(*static_cast<Schema::FacetedBRepWithUVTable const*>(table));
        case BRepKind::kWithNormal: return BRepView(*static_cast<Schema::FacetedBRepWithNormalTable const*>(table));
        default: return BRepView(*static_cast<Schema::FacetedBRepTable const*>(table));
    }
}

void DefinitionWriter::WriteShape(BufferSink& sink, ShapeLayouts const& layouts, BRepKind kind,
                                  std::size_t index) const {
    StoredShape const& shape = GetShapes(kind)[index];
    if (shape.isRun) {
        CopyRun(sink, layouts, GetTable(shape), shape.counts, StrideOf(kind));
    } else {
        CopyShape(sink, layouts, GetShape(kind, index), shape.counts);
    }
}

std::optional<BRepView> DefinitionWriter::FindShape(GeometryDefinitionIndex_t definition) const {
    auto const& info = definitions[static_cast<std::uint32_t>(definition)];
    switch (info.kind()) {
        case kFacetedBRep: return GetShape(BRepKind::kPlain, info.kindIndex());
        case kBRepWithUV: return GetShape(BRepKind::kWithUV, info.kindIndex());
        case kBRepWithNormal: return GetShape(BRepKind::kWithNormal, info.kindIndex());
        default: return std::nullopt;
    }
}

GeometryDefinitionIndex_t DefinitionWriter::AddGraphicsContainer(GraphicsContainer const& container) {
    StoredBounds bounds;
    StoredGraphics stored{{segments.size(), container.lines.size()}, {arcs.size(), container.arcs.size()}};
    for (auto const& line : container.lines) {
        segments.emplace_back(Narrow(line.start), Narrow(line.end));
        for (auto const& point : {segments.back().start(), segments.back().end()}) {
            bounds.Add(point.x(), point.y(), point.z());
        }
    }
    for (auto const& arc : container.arcs) {
        arcs.emplace_back(Narrow(arc.center), Narrow(arc.axis), Narrow(arc.startDirection),
                          static_cast<float>(arc.radius), static_cast<float>(arc.sweepAngle));
        AddArc(bounds, arcs.back());
    }
    graphics.push_back(stored);
    return AddDefinition(kGraphicsContainer, graphics.size() - 1, bounds.GetMin(), bounds.GetMax());
}

GeometryDefinitionIndex_t DefinitionWriter::AddBRep(FacetedBRep const& shape) {
    return AddShape(BRepKind::kPlain, shape, [](std::size_t, char*) {});
}

}  // namespace Quorlan
