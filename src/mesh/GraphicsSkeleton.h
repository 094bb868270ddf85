#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/GraphicsContainer.h>

namespace Quorlan::Tools {

/// The points that fix line graphics in space, in the form that `GeometryMatcher` compares: two graphics are copies of
/// each other when their skeletons are. `skeleton` is overwritten; its storage is used again.
///
/// Its vertices are the ends of the lines, then for each arc the centre, the points one unit and `sweepAngle` units
/// along the axis, the start and the end point. Where all of them lie on one line, which leaves a turn about that line
/// open, a last point one unit beside the first settles it. Its one loop holds the counts of lines and arcs.
/// REQUIRES: there is a line or an arc.
void MakeSkeleton(GeometryObjectLib::GraphicsContainer const& graphics, GeometryObjectLib::FacetedBRep& skeleton);

}  // namespace Quorlan::Tools
