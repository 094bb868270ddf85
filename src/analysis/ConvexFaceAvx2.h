#pragma once

#include "geometry/Avx2.h"

#include <GeometryObjectLib/Vertex.h>

#include <cstddef>
#include <cstdint>

namespace Quorlan {

#if QUORLAN_HAS_AVX2

/// A loop of a face without holes. REQUIRES: its vertices exist; before the first vertex four bytes may be read.
struct LoopView {
    std::uint8_t const* vertices;
    std::size_t vertexStride;  ///< [bytes]
    std::uint16_t const* indices;
    std::size_t size;
};

/// What one face measures: its area and, for each of its triangles in the order of their cutting, the volume of the
/// tetrahedron to the apex and that volume's product with the tetrahedron's centroid.
struct ConvexFaceMeasures {
    double area;
    double const* volumes;     ///< in the scratch memory, as are the moments; two less than corners
    double const* moments[3];  ///< x, y and z
};

/// Doubles of scratch memory that a loop needs.
constexpr std::size_t GetConvexFaceScratchSize(std::size_t loopSize) { return 9 * (2 * loopSize + 16); }

/// Measures a convex face of five or more corners as a face that earcut triangulates: the same operations in the same
/// order for each number, four of them side by side, and so the same bits but for the signs of zeros, which no sum that
/// starts at 0 shows.
///
/// In a loop whose corners all turn left, also after each cut, every corner is an ear, so that earcut cuts every other
/// corner, going round and round. Written down one after the other, with each corner that stays behind put to the end,
/// the corners of triangle t are 2 t to 2 t + 2 of a strip.
///
/// REQUIRES: HasAvx2(); loop.size >= 5.
/// RETURNS false if the face may not be convex, or where rounding might decide otherwise; the face is then to be
/// measured without haste.
bool MeasureConvexFaceAvx2(LoopView const& loop, GeometryObjectLib::Vertex const& apex, double shortestNormal,
                           double* scratch, ConvexFaceMeasures& measures);

#endif

}  // namespace Quorlan
