#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace QuorlanProgram::Import {

/// A point of a curve; the third coordinate is 0 where the curve is plane.
using CurvePoint = std::array<double, 3>;

/// The points of an IfcCartesianPointList2D or 3D from its arguments. An entry that is no point is left out together
/// with all others: the result is empty.
std::vector<CurvePoint> ReadPointList(std::string_view arguments);

/// The corners of an IfcIndexedPolyCurve over `points`, its arcs made discrete with `verticesPerCircle` chords per full
/// turn. `segments` is the curve's second argument; "$" joins all points in their order. Neighbouring equal points are
/// one. RETURNS no points where an index or a segment is not understood.
std::vector<CurvePoint> ExpandIndexedCurve(std::vector<CurvePoint> const& points, std::string_view segments,
                                           int verticesPerCircle);

/// Appends the points behind `start` of the arc from `start` over `middle` to `end`, the last of them `end` itself;
/// only `end` where the three lie on a line.
void AppendArc(std::vector<CurvePoint>& out, CurvePoint const& start, CurvePoint const& middle, CurvePoint const& end,
               int verticesPerCircle);

}  // namespace QuorlanProgram::Import
