#include "mesh/GraphicsSkeleton.h"

#include "mesh/GeometryMatcher.h"

#include <cmath>
#include <cstdint>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::ArcSegment;
using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;
using GeometryObjectLib::LineSegment;

/// [model units] Points nearer to one line than this count as collinear. A turn about that line moves them by less than
/// the tolerance they are compared with.
constexpr double kCollinearDistance = 1e-6;

/// A unit vector perpendicular to `v`; not a number where `v` has no length.
Vertex MakePerpendicular(Vertex const& v) {
    bool const isAlongX = std::abs(v.x) >= std::abs(v.y) && std::abs(v.x) >= std::abs(v.z);
    Vertex const perpendicular = Cross(v, isAlongX ? Vertex{0, 1, 0} : Vertex{1, 0, 0});
    return perpendicular / Length(perpendicular);
}

void AppendArc(ArcSegment const& arc, std::vector<Vertex>& points) {
    Vertex const start = arc.startDirection * arc.radius;
    Vertex const side = Cross(arc.axis, start);
    points.push_back(arc.center);
    points.push_back(arc.center + arc.axis);
    points.push_back(arc.center + arc.axis * arc.sweepAngle);
    points.push_back(arc.center + start);
    points.push_back(arc.center + start * std::cos(arc.sweepAngle) + side * std::sin(arc.sweepAngle));
}

/// The vector from the first point to the farthest one; zero where all points coincide.
Vertex FindExtent(std::vector<Vertex> const& points) {
    Vertex extent;
    for (Vertex const& point : points) {
        Vertex const v = point - points[0];
        if (Dot(v, v) > Dot(extent, extent)) extent = v;
    }
    return extent;
}

bool AreCollinear(std::vector<Vertex> const& points) {
    auto const pair = FindReferencePair(points);
    auto const frame = pair ? MakeReferenceFrame(points, *pair) : std::nullopt;
    return !frame || Length(frame->z) <= kCollinearDistance * Length(frame->x);
}

}  // namespace

void MakeSkeleton(GeometryObjectLib::GraphicsContainer const& graphics, FacetedBRep& skeleton) {
    auto& points = skeleton.vertices;
    points.clear();
    for (LineSegment const& line : graphics.lines) {
        points.push_back(line.start);
        points.push_back(line.end);
    }
    for (ArcSegment const& arc : graphics.arcs) AppendArc(arc, points);

    if (AreCollinear(points)) {
        Vertex const extent = FindExtent(points);
        if (Dot(extent, extent) > 0) points.push_back(points[0] + MakePerpendicular(extent));
    }
    skeleton.faces.resize(1);
    skeleton.faces[0] = {static_cast<std::uint32_t>(graphics.lines.size()),
                         static_cast<std::uint32_t>(graphics.arcs.size())};
}

}  // namespace Quorlan::Tools
