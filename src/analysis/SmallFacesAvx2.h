#pragma once

#include "analysis/SmallFaces.h"

#if defined(__GNUC__) && defined(__x86_64__)
#define QUORLAN_HAS_AVX2 1
#else
#define QUORLAN_HAS_AVX2 0
#endif

namespace Quorlan {

/// Whether the processor has AVX2 and this build has code for it.
inline bool HasAvx2() {
#if QUORLAN_HAS_AVX2
    static bool const hasAvx2 = __builtin_cpu_supports("avx2") != 0;
    return hasAvx2;
#else
    return false;
#endif
}

#if QUORLAN_HAS_AVX2

/// As `SmallFaceLanes` with the four faces in one register: the same operations in the same order, without fused
/// multiplications, and so the same bits. `apex` is x, y, z.
/// REQUIRES: HasAvx2(); before the first vertex four bytes may be read.
/// RETURNS false where `SmallFaceLanes` cannot measure the faces.
bool MeasureSmallFacesAvx2(std::uint8_t const* vertices, std::size_t vertexStride, SmallFaces const& faces,
                           double const (&apex)[3], double shortestNormal, SmallFaceMeasures& measures);

#endif

}  // namespace Quorlan
