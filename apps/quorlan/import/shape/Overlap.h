#pragma once

#include "shape/Shape.h"

namespace QuorlanProgram::Import {

constexpr double kThinnestOverlap = 1e-5;  ///< [m] boxes that share less only touch

/// True if the boxes of two shapes have more in common than a touch.
bool BoxesOverlap(FacetedBRep const& a, FacetedBRep const& b);

/// How often the closed `shape` runs round `point`: 1 inside, 0 outside (Van Oosterom and Strackee, "The Solid Angle of
/// a Plane Triangle", 1983). Not defined on the surface.
double GetWindingNumber(FacetedBRep const& shape, Vertex const& point);

/// True if one of a grid of points in the common box of two closed shapes lies inside both: they overlap for certain.
/// A thin overlap may be missed.
bool OverlapAtSamples(FacetedBRep const& a, FacetedBRep const& b);

}  // namespace QuorlanProgram::Import
