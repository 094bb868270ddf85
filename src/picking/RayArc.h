#pragma once

#include "picking/ClosestPoint.h"

#include <GeometryObjectLib/GraphicsContainer.h>
#include <GeometryObjectLib/Ray3f.h>

/// Distances to circular arcs, in double precision inside and rounded to single precision at the end.
///
/// An arc's axis and start direction need not be of unit length, nor perpendicular beyond single precision. Radius 0
/// is a point. A sweep of 2 pi or more is the whole circle, a sweep of 0 one point, and of a negative sweep only the
/// two ends count.
///
/// Source of the quartic: David Eberly, "Distance to Circles in 3D", 2015.
namespace Quorlan::Tools::Picking {

/// The point of the arc that is closest to `point`. Where the nearest point of the circle lies outside the sweep that
/// is the nearer end, the far one (at the sweep angle) where both are equally near. For a point on the axis the start
/// direction stands for all directions.
ClosestPoint ClosestPointPointArc(GeometryObjectLib::Vertex const& point, GeometryObjectLib::ArcSegment const& arc);

/// The point of the arc that is closest to the ray's line, of those that this search looks at:
/// - line along the axis: its point nearest to the centre; the axis itself: the centre;
/// - line parallel to the plane: of the points at radius from the axis only the one farther along the ray, or the point
///   nearest to the centre where there is none;
/// - else all points of the line where its distance to the whole circle is stationary.
///
/// The line is unbounded: what lies behind the origin counts. For a whole circle in general position the result is the
/// true minimum; partial arcs may give more, never less. Without any stationary point (a value that is not finite) the
/// distance is 3.4028235e38 and the point the origin.
ClosestPoint ClosestPointRayArc(GeometryObjectLib::Ray3f const& ray, GeometryObjectLib::ArcSegment const& arc);

/// Whether the ray's line keeps farther than `distance` from the sphere around the arc's circle, with room for
/// rounding: if so, ClosestPointRayArc gives more than `distance`. Costs a hundredth of it.
bool IsArcBeyond(GeometryObjectLib::Ray3f const& ray, GeometryObjectLib::ArcSegment const& arc, float distance);

}  // namespace Quorlan::Tools::Picking
