#include "increments/DefinitionMove.h"

#include <algorithm>
#include <limits>

namespace Quorlan::Tools::Increments {
namespace {

using GeometryObjectLib::ArcSegment;
using GeometryObjectLib::LineSegment;
using GeometryObjectLib::Matrix4;

constexpr double kAxisResolution = 1e-7;    ///< [-] single precision tells unit axes apart no better
constexpr double kOriginResolution = 1e-7;  ///< [sizes of the shape] single precision tells vertices apart no better

struct Bounds {
    Vertex min{std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
               std::numeric_limits<double>::max()};
    Vertex max{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest(),
               std::numeric_limits<double>::lowest()};

    void Include(Vertex const& p) {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }
};

Vertex Apply(DoubleFrame const& frame, Vertex const& p) {
    return frame.origin + frame.x * p.x + frame.y * p.y + frame.z * p.z;
}

bool IsUnitAxes(Matrix4 const& m) {
    return Length(m.GetColumn(0) - Vertex{1, 0, 0}) <= kAxisResolution &&
           Length(m.GetColumn(1) - Vertex{0, 1, 0}) <= kAxisResolution &&
           Length(m.GetColumn(2) - Vertex{0, 0, 1}) <= kAxisResolution;
}

/// The usual case by far: a shape that was new keeps the identity that the transform started with.
bool IsExactIdentity(Matrix4 const& m) { return m.m == Matrix4().m; }

std::optional<DefinitionMove> ToMove(Matrix4 const& m, Bounds const& bounds) {
    DefinitionMove move;
    move.sourceCenter = 0.5 * (bounds.min + bounds.max);
    move.writtenCenter = TransformPoint(m, move.sourceCenter);
    move.rotates = !IsUnitAxes(m);
    double const displacement = Length(move.writtenCenter - move.sourceCenter);
    if (!move.rotates && displacement <= kOriginResolution * Length(bounds.max - bounds.min)) return std::nullopt;

    // The inverse of a rotation is its transpose: rows 0 and 1 are the columns that the inverse begins with.
    move.inverseRotation = {Vertex{m(0, 0), m(0, 1), m(0, 2)}, Vertex{m(1, 0), m(1, 1), m(1, 2)}};
    return move;
}

std::array<float, 3> Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

}  // namespace

std::optional<DefinitionMove> FindMove(AffineTransform const& writtenFromSource, FacetedBRep const& shape) {
    if (IsExactIdentity(writtenFromSource.matrix)) return std::nullopt;
    Bounds bounds;
    for (Vertex const& vertex : shape.vertices) bounds.Include(vertex);
    return ToMove(writtenFromSource.matrix, bounds);
}

std::optional<DefinitionMove> FindMove(AffineTransform const& writtenFromSource, GraphicsContainer const& graphics) {
    if (IsExactIdentity(writtenFromSource.matrix)) return std::nullopt;
    Bounds bounds;
    for (LineSegment const& line : graphics.lines) {
        bounds.Include(line.start);
        bounds.Include(line.end);
    }
    for (ArcSegment const& arc : graphics.arcs) {
        Vertex const reach{arc.radius, arc.radius, arc.radius};
        bounds.Include(arc.center - reach);
        bounds.Include(arc.center + reach);
    }
    return ToMove(writtenFromSource.matrix, bounds);
}

PlacementRecord PlaceMoved(PlacementRecord const& placement, DoubleFrame const& frame, DefinitionMove const& move) {
    PlacementRecord moved = placement;
    moved.origin = {};
    if (move.rotates) {
        auto const rotate = [&frame](Vertex const& v) { return frame.x * v.x + frame.y * v.y + frame.z * v.z; };
        moved.xAxis = Narrow(rotate(move.inverseRotation[0]));
        moved.yAxis = Narrow(rotate(move.inverseRotation[1]));
    }
    Vertex const origin = Apply(frame, move.sourceCenter) - Apply(ToDoubleFrame(moved), move.writtenCenter);
    moved.origin = {origin.x, origin.y, origin.z};
    return moved;
}

PlacementRecord ToPlacementRecord(DoubleFrame const& frame) {
    return {{frame.origin.x, frame.origin.y, frame.origin.z}, Narrow(frame.x), Narrow(frame.y)};
}

}  // namespace Quorlan::Tools::Increments
