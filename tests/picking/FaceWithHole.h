#pragma once

#include <GeometryObjectLib/FacetedBRep.h>

namespace Quorlan::Testing {

/// One face, the square 0..4 x 0..4 in the plane of height z, seen from above, with the hole 1..3 x 1..3.
inline GeometryObjectLib::FacetedBRep MakeFaceWithHole(double z) {
    GeometryObjectLib::FacetedBRep plate;
    plate.vertices = {{0, 0, z}, {4, 0, z}, {4, 4, z}, {0, 4, z}, {1, 1, z}, {1, 3, z}, {3, 3, z}, {3, 1, z}};
    plate.faces = {{0, 1, 2, 3}};
    plate.holes[0] = {{4, 5, 6, 7}};
    return plate;
}

}  // namespace Quorlan::Testing
