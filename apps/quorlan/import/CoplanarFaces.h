#pragma once

#include "Shape.h"

namespace QuorlanProgram::Import {

constexpr double kCoplanarDistance =
    1e-5;                                ///< [m] off the plane of a face: far below what is built, above kernel noise
constexpr double kCollinearSine = 1e-6;  ///< [-] of the turn at a point that is no corner

/// Joins neighbouring faces of one plane into polygons with holes, and drops points that are no corner of any face.
///
/// What counts is the plane alone: faces that lie on each other the wrong way round, as a kernel's triangulation may
/// leave them, cancel, and so do skins over openings (PlaneGroups.h). A group of faces whose outline is no set of
/// simple loops stays as it is, and so does the whole shape if its volume would change. REQUIRES: faces without holes;
/// a shape with holes is returned unchanged. COST: n log n in the number of faces.
FacetedBRep JoinCoplanarFaces(FacetedBRep const& shape);

}  // namespace QuorlanProgram::Import
