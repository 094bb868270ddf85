#pragma once

#include <optional>

#include "shape/Shape.h"

/// Boolean operations on closed shapes without holes in their faces, done in two ways that know nothing of each other.
namespace QuorlanProgram::Import {

enum class BooleanOperation { kDifference, kIntersection };

/// The result as the geometry kernel of the IFC library finds it; empty where nothing remains. Fast, and wrong at
/// times: what it returns needs checking. The same shapes give the same result, vertex by vertex, in every run. RETURNS
/// nothing if the kernel gives up.
std::optional<FacetedBRep> CombineInKernel(FacetedBRep const& a, FacetedBRep const& b, BooleanOperation operation);

/// The result in exact arithmetic, rounded at the end. Slow by comparison.
/// RETURNS nothing if a shape is not closed, cuts itself, or the program is built without exact operations.
std::optional<FacetedBRep> CombineExactly(FacetedBRep const& a, FacetedBRep const& b, BooleanOperation operation);

/// Whether the program is built with exact operations.
bool HasExactBooleans();

}  // namespace QuorlanProgram::Import
