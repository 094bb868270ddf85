#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "shape/Chords.h"

namespace QuorlanProgram::Import {

/// A point of a curve; the third coordinate is 0 where the curve is plane.
using CurvePoint = std::array<double, 3>;

/// The points of an IfcCartesianPointList2D or 3D from its arguments. An entry that is no point is left out together
/// with all others: the result is empty.
std::vector<CurvePoint> ReadPointList(std::string_view arguments);

/// A part of a curve: a polyline, or an arc over three points.
struct CurveSegment {
    std::vector<CurvePoint> points;
    bool isArc = false;
};

/// The segments of an IfcIndexedPolyCurve over `points`. `segments` is the curve's second argument; "$" joins all
/// points in their order. RETURNS none where an index or a segment is not understood.
std::vector<CurveSegment> ReadSegments(std::vector<CurvePoint> const& points, std::string_view segments);

/// The corners of a curve, its arcs made discrete. Neighbouring equal points are one.
std::vector<CurvePoint> ExpandSegments(std::vector<CurveSegment> const& segments, Chords const& chords);

/// Both in one: the corners of an IfcIndexedPolyCurve.
std::vector<CurvePoint> ExpandIndexedCurve(std::vector<CurvePoint> const& points, std::string_view segments,
                                           Chords const& chords);

/// Appends the points behind `start` of the arc from `start` over `middle` to `end`, the last of them `end` itself;
/// only `end` where the three lie on a line.
void AppendArc(std::vector<CurvePoint>& out, CurvePoint const& start, CurvePoint const& middle, CurvePoint const& end,
               Chords const& chords);

}  // namespace QuorlanProgram::Import
