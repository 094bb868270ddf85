#pragma once

#include "analysis/SmallFaces.h"
#include "geometry/Avx2.h"

namespace Quorlan {

#if QUORLAN_HAS_AVX2

/// As `SmallFaceLanes` with the four faces in one register: the same operations in the same order, without fused
/// multiplications, and so the same bits. `apex` is x, y, z.
/// REQUIRES: HasAvx2(); before the first vertex four bytes may be read.
/// RETURNS false where `SmallFaceLanes` cannot measure the faces.
bool MeasureSmallFacesAvx2(std::uint8_t const* vertices, std::size_t vertexStride, SmallFaces const& faces,
                           double const (&apex)[3], double shortestNormal, SmallFaceMeasures& measures);

#endif

}  // namespace Quorlan
