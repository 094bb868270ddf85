#pragma once

#include "model/ModelView.h"

#include <GeometryObjectLib/FacetedBRep.h>

#include <utility>
#include <vector>

/// The parts of a stored BRep in the types of the interface.
namespace Quorlan {

/// RETURNS false, with `out` half filled, if the shape has no vertices or an index is beyond them. Absent loops are
/// empty.
bool ReadShape(GeometryObjectLib::FacetedBRep& out, BRepView const& shape);

/// REQUIRES: the shape is of the form with normals.
void ReadNormals(std::vector<Vertex>& out, BRepView const& shape);

/// REQUIRES: the shape is of the form with texture coordinates.
void ReadTextureCoordinates(std::vector<std::pair<float, float>>& out, BRepView const& shape);

}  // namespace Quorlan
