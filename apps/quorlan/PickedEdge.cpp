#include "PickedEdge.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::TransformPoint;
using GeometryObjectLib::Vertex;
using Path = std::vector<Vertex>;

constexpr double kArcStep = 0.05;  ///< [rad] between the points of an arc's path

double DistanceToSegment(Vertex const& p, Vertex const& a, Vertex const& b) {
    auto const along = b - a;
    auto const squared = Dot(along, along);
    auto const s = squared > 0 ? std::clamp(Dot(p - a, along) / squared, 0.0, 1.0) : 0.0;
    return Length(p - (a + s * along));
}

Path PathOf(GeometryObjectLib::ArcSegment const& arc) {
    auto const side = Cross(arc.axis, arc.startDirection);
    auto const steps = std::max(1, static_cast<int>(std::ceil(std::abs(arc.sweepAngle) / kArcStep)));
    Path path;
    for (int i = 0; i <= steps; ++i) {
        auto const angle = arc.sweepAngle * i / steps;
        path.push_back(arc.center + arc.radius * (std::cos(angle) * arc.startDirection + std::sin(angle) * side));
    }
    return path;
}

/// The edge of a face that passes closest to the world point `point`.
Path FindEdge(FacetedBRep const& brep, std::uint32_t face, Matrix4 const& placement, Vertex const& point) {
    Path best;
    auto nearest = std::numeric_limits<double>::max();
    auto const search = [&](std::vector<std::uint32_t> const& loop) {
        for (std::size_t i = 0; i < loop.size(); ++i) {
            auto const a = TransformPoint(placement, brep.vertices[loop[i]]);
            auto const b = TransformPoint(placement, brep.vertices[loop[(i + 1) % loop.size()]]);
            auto const distance = DistanceToSegment(point, a, b);
            if (distance >= nearest) continue;
            nearest = distance;
            best = {a, b};
        }
    };
    if (face >= brep.GetFaceCount()) return best;
    search(brep.GetOuterLoop(face));
    for (std::size_t i = 0; i < brep.GetInnerLoopCount(face); ++i) search(brep.GetInnerLoop(face, i));
    return best;
}

Matrix4 WorldPlacementOf(Quorlan::IModelReader const& reader, Quorlan::InstanceRecord const& instance) {
    Quorlan::EntityIdentifier entity;
    reader.GetEntities().GetIdentifier(entity, instance.entityIndex);
    Quorlan::AffineTransform placement;
    reader.GetGeometry().GetPlacement(placement, instance.placementIndex);
    return entity.placement.matrix * placement.matrix;
}

}  // namespace

PickedEdge PickedEdge::Find(Quorlan::IModelReader const& reader, EdgeHit const& hit) {
    auto const& geometry = reader.GetGeometry();
    Quorlan::InstanceRecord instance;
    geometry.GetInstance(instance, hit.instance);
    auto const placement = WorldPlacementOf(reader, instance);
    PickedEdge edge;
    GraphicsContainer graphics;
    if (!geometry.GetGraphicsContainer(graphics, instance.definitionIndex)) {
        FacetedBRep brep;
        geometry.GetFacetedBRep(brep, instance.definitionIndex);
        edge.path_ = FindEdge(brep, hit.primitive, placement, hit.point);
        return edge;
    }
    auto const lineCount = graphics.lines.size();
    edge.kind_ = hit.primitive < lineCount ? Kind::Line : Kind::Arc;
    if (edge.kind_ == Kind::Line) {
        edge.path_ = {graphics.lines[hit.primitive].start, graphics.lines[hit.primitive].end};
    } else if (hit.primitive - lineCount < graphics.arcs.size()) {
        edge.path_ = PathOf(graphics.arcs[hit.primitive - lineCount]);
    }
    for (auto& point : edge.path_) point = TransformPoint(placement, point);
    return edge;
}

char const* PickedEdge::GetKindName() const {
    return kind_ == Kind::Edge ? "edge" : kind_ == Kind::Line ? "line" : "arc";
}

}  // namespace QuorlanProgram
