#include "model/ModelWriters.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

/// The bounds of what has been stored, in single precision; all zero where nothing was.
class StoredBounds {
public:
    void Add(float x, float y, float z) {
        isEmpty_ = false;
        min_ = {std::min(min_.x, x), std::min(min_.y, y), std::min(min_.z, z)};
        max_ = {std::max(max_.x, x), std::max(max_.y, y), std::max(max_.z, z)};
    }

    Schema::Vector3 GetMin() const { return isEmpty_ ? Schema::Vector3{0, 0, 0} : Store(min_); }
    Schema::Vector3 GetMax() const { return isEmpty_ ? Schema::Vector3{0, 0, 0} : Store(max_); }

private:
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    static Schema::Vector3 Store(Vector3f const& v) { return {v.x, v.y, v.z}; }

    bool isEmpty_ = true;
    Vector3f min_{kInfinity, kInfinity, kInfinity};
    Vector3f max_{-kInfinity, -kInfinity, -kInfinity};
};

template <std::size_t Attributes>
StoredBounds GetBoundsOfLast(ShapeStore<Attributes> const& store) {
    StoredBounds bounds;
    auto const& vertices = store.GetBReps().back().vertices;
    float const* const floats = store.GetFloats(vertices);
    for (std::size_t i = 0; i < vertices.count; i += store.kStride) bounds.Add(floats[i], floats[i + 1], floats[i + 2]);
    return bounds;
}

Schema::Vector3 Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
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

GeometryDefinitionIndex_t DefinitionWriter::AddBRepWithNormals(
    std::pair<FacetedBRep const*, std::vector<Vertex> const*> shape) {
    auto const& [brep, normals] = shape;
    if (normals->size() != brep->vertices.size() || !FitsIntoBuffer(*brep)) return kRefused;
    brepsWithNormal.Add(*brep, [&normals = *normals](std::size_t i, float* out) {
        out[0] = static_cast<float>(normals[i].x);
        out[1] = static_cast<float>(normals[i].y);
        out[2] = static_cast<float>(normals[i].z);
    });
    StoredBounds const bounds = GetBoundsOfLast(brepsWithNormal);
    return AddDefinition(kBRepWithNormal, brepsWithNormal.GetBReps().size() - 1, bounds.GetMin(), bounds.GetMax());
}

GeometryDefinitionIndex_t DefinitionWriter::AddBRepWithUVs(
    std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*> shape) {
    auto const& [brep, coordinates] = shape;
    if (coordinates->size() != brep->vertices.size() || !FitsIntoBuffer(*brep)) return kRefused;
    brepsWithUV.Add(*brep, [&coordinates = *coordinates](std::size_t i, float* out) {
        out[0] = coordinates[i].first;
        out[1] = coordinates[i].second;
    });
    StoredBounds const bounds = GetBoundsOfLast(brepsWithUV);
    return AddDefinition(kBRepWithUV, brepsWithUV.GetBReps().size() - 1, bounds.GetMin(), bounds.GetMax());
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
    if (!FitsIntoBuffer(shape)) return kRefused;
    breps.Add(shape, [](std::size_t, float*) {});
    StoredBounds const bounds = GetBoundsOfLast(breps);
    return AddDefinition(kFacetedBRep, breps.GetBReps().size() - 1, bounds.GetMin(), bounds.GetMax());
}

}  // namespace Quorlan
