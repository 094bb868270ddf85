#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorlan {

constexpr std::size_t kSmallFaceCount = 4;

/// Faces in a row that have three corners each, or four, and no holes.
struct SmallFaces {
    std::uint16_t const* loops[kSmallFaceCount] = {};  ///< those that are not there repeat the last
    std::uint32_t faces[kSmallFaceCount] = {};
    std::size_t size = 0;
    std::size_t cornerCount = 0;
};

/// What four faces measure: each face's area and, for its one or two triangles, the volume of the tetrahedron to the
/// apex and that volume's product with the tetrahedron's centroid.
struct SmallFaceMeasures {
    double areas[4];
    double volumes[2][4];
    double moments[2][3][4];
};

}  // namespace Quorlan
