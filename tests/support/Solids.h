#pragma once

#include <GeometryObjectLib/FacetedBRep.h>

/// Small shapes with loops that run counter-clockwise seen from outside.
namespace Quorlan::Testing {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Vertex;

/// A closed box. Its faces, in order: -x, +x, -y, +y, -z, +z.
inline FacetedBRep MakeBox(Vertex const& lo, Vertex const& hi) {
    FacetedBRep box;
    for (unsigned corner = 0; corner < 8; ++corner) {
        box.vertices.push_back(
            {(corner & 1) != 0 ? hi.x : lo.x, (corner & 2) != 0 ? hi.y : lo.y, (corner & 4) != 0 ? hi.z : lo.z});
    }
    box.faces = {{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}};
    return box;
}

inline FacetedBRep MakeUnitCube() { return MakeBox({0, 0, 0}, {1, 1, 1}); }

/// One face, the square 0..4 x 0..4 in the plane of height z, seen from above, with the hole 1..3 x 1..3.
inline FacetedBRep MakePlateWithHole(double z) {
    FacetedBRep plate;
    plate.vertices = {{0, 0, z}, {4, 0, z}, {4, 4, z}, {0, 4, z}, {1, 1, z}, {1, 3, z}, {3, 3, z}, {3, 1, z}};
    plate.faces = {{0, 1, 2, 3}};
    plate.holes[0] = {{4, 5, 6, 7}};
    return plate;
}

}  // namespace Quorlan::Testing
