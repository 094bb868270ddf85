#pragma once

#include <ifcpp/geometry/Carve/IncludeCarveHeaders.h>

#include <memory>

#include "shape/Shape.h"

/// The geometry kernel's own form of a shape.
namespace QuorlanProgram::Import {

using MeshSet = carve::mesh::MeshSet<3>;
using MeshSetPointer = std::shared_ptr<MeshSet>;

/// The faces of `set` as they are: no vertices are joined, none are dropped.
FacetedBRep ToPlainShape(MeshSet const& set);

/// REQUIRES: faces without holes. THROWS what the kernel throws.
MeshSetPointer ToMeshSet(FacetedBRep const& shape);

}  // namespace QuorlanProgram::Import
