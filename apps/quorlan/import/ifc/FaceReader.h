#pragma once

#include <GeometryObjectLib/FacetedBRep.h>

#include <optional>

class IfcRepresentationItem;

namespace QuorlanProgram::Import {

struct ReadShape {
    GeometryObjectLib::FacetedBRep shape;  ///< empty if all faces are degenerate
    std::size_t droppedFaces = 0;          ///< of fewer than three distinct points, or with a coordinate that is none
    std::size_t addedFaces = 0;            ///< plane ones that a solid of the file lacks
};

/// Reads an item that is given by plane polygons as it is, holes and all: faceted breps (with their voids), face and
/// shell based surface models, and polygonal and triangulated face sets. Faces of a solid look outward;
/// plane ones that it lacks are added.
///
/// RETURNS nothing for an item of another kind or one with a face that is no polygon (bounded by curves, or curved).
std::optional<ReadShape> ReadFaces(IfcRepresentationItem const& item, double metresPerUnit);

}  // namespace QuorlanProgram::Import
