#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorlan {

constexpr std::size_t kSmallFaceCount = 8;

/// Faces in a row that have three corners each, or four, and no holes.
struct SmallFaces {
    std::uint16_t const* loops[kSmallFaceCount] = {};  ///< those that are missing of the last four repeat the last
    std::uint32_t firstFace = 0;
    std::size_t size = 0;
    std::size_t cornerCount = 0;
};

/// What the faces measure: each face's area and, for its one or two triangles, the volume of the tetrahedron to the
/// apex and that volume's product with the tetrahedron's centroid.
struct SmallFaceMeasures {
    double areas[kSmallFaceCount];
    double volumes[2][kSmallFaceCount];
    double moments[2][3][kSmallFaceCount];
};

}  // namespace Quorlan
