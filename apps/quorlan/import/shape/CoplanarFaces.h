#pragma once

#include "shape/Shape.h"

namespace QuorlanProgram::Import {

/// [m] off the plane of a face: far below what is built, above the kernel's noise
constexpr double kCoplanarDistance = 1e-5;
constexpr double kCollinearSine = 1e-6;  ///< [-] of the turn at a point that is no corner
constexpr double kKernelNoise = 1e-9;    ///< [m] the grid of the result; the same cut differs by less from run to run

/// Joins neighbouring faces of one plane into polygons with holes, and drops points that are no corner of any face.
///
/// What counts is the plane alone: faces that lie on each other the wrong way round, as a kernel's triangulation may
/// leave them, cancel, and so do skins over openings (PlaneGroups.h). A group of faces whose outline is no set of
/// simple loops stays as it is, and so do the faces of the whole shape if its volume would change.
///
/// Points are moved to a grid of `kKernelNoise`; vertices and faces come in an order that only depends on where they
/// are. REQUIRES: faces without holes; a shape with holes is returned unchanged. COST: n log n in the number of faces.
FacetedBRep JoinCoplanarFaces(FacetedBRep const& shape);

}  // namespace QuorlanProgram::Import
