#pragma once

#include "analysis/SmallFaces.h"
#include "geometry/Avx2.h"

namespace Quorlan {

#if QUORLAN_HAS_AVX2

/// [bytes] of a vertex that is nothing but a position
constexpr std::size_t kPositionSize = 12;

/// As `SmallFaceLanes` with four faces in one register: the same operations in the same order, without fused
/// multiplications, and so the same bits. Vertices are three floats each, as is `apex` in doubles.
/// REQUIRES: HasAvx2(); before the first vertex four bytes may be read.
/// RETURNS false where `SmallFaceLanes` cannot measure the faces.
bool MeasureSmallFacesAvx2(std::uint8_t const* vertices, SmallFaces const& faces, double const (&apex)[3],
                           double shortestNormal, SmallFaceMeasures& measures);

#endif

}  // namespace Quorlan
