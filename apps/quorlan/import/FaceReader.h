#pragma once

#include <GeometryObjectLib/FacetedBRep.h>

#include <optional>

class IfcRepresentationItem;

namespace QuorlanProgram::Import {

/// Reads an item that is given by plane polygons as it is, holes and all: faceted breps (with their voids), face and
/// shell based surface models, and polygonal and triangulated face sets. Faces of a solid look outward.
///
/// RETURNS nothing for an item of another kind or one with a face that is no polygon (bounded by curves, or curved);
/// `shape` may be empty if all faces are degenerate.
std::optional<GeometryObjectLib::FacetedBRep> ReadFaces(IfcRepresentationItem const& item, double metresPerUnit);

}  // namespace QuorlanProgram::Import
