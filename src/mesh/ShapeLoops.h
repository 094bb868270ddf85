#pragma once

#include <GeometryObjectLib/FacetedBRep.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::FacetedBRep;

/// A hash of the counts and loops of a shape with `vertexCount` vertices, the same for all its copies. The inner loops
/// of all faces are folded in once per face.
std::uint32_t ComputeSignature(FacetedBRep const& shape, std::size_t vertexCount);

/// The loops of a shape in one run: before each loop its length and the number of inner loops that follow it.
std::vector<std::uint32_t> FlattenLoops(FacetedBRep const& shape);

/// Whether the faces of `shape` have, in order, the outer and inner loops of `flat`, index by index.
bool HasSameLoops(FacetedBRep const& shape, std::vector<std::uint32_t> const& flat);

}  // namespace Quorlan::Tools
