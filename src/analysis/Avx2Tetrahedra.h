#pragma once

#include "geometry/Avx2Vectors.h"

#if QUORLAN_HAS_AVX2

namespace Quorlan {
namespace {

/// Positions of four vertices, three floats each. REQUIRES: the four bytes before each may be read.
QUORLAN_AVX2_INLINE Vectors LoadVertices(std::uint8_t const* v0, std::uint8_t const* v1, std::uint8_t const* v2,
                                         std::uint8_t const* v3) {
    __m128 const a = _mm_loadu_ps(reinterpret_cast<float const*>(v0 - 4));  // what is before is dropped
    __m128 const b = _mm_loadu_ps(reinterpret_cast<float const*>(v1 - 4));
    __m128 const c = _mm_loadu_ps(reinterpret_cast<float const*>(v2 - 4));
    __m128 const d = _mm_loadu_ps(reinterpret_cast<float const*>(v3 - 4));
    __m128 const xOfAb = _mm_unpacklo_ps(a, b);
    __m128 const xOfCd = _mm_unpacklo_ps(c, d);
    __m128 const yzOfAb = _mm_unpackhi_ps(a, b);
    __m128 const yzOfCd = _mm_unpackhi_ps(c, d);
    return {_mm256_cvtps_pd(_mm_movehl_ps(xOfCd, xOfAb)), _mm256_cvtps_pd(_mm_movelh_ps(yzOfAb, yzOfCd)),
            _mm256_cvtps_pd(_mm_movehl_ps(yzOfCd, yzOfAb))};
}

/// The volumes of the tetrahedra between the apex and four triangles, and the products of their centroids with them.
QUORLAN_AVX2_INLINE __m256d ComputeTetrahedra(Vectors const& apex, Vectors const& p0, Vectors const& p1,
                                              Vectors const& p2, Vectors& moments) {
    __m256d const volumes = Dot(Subtract(p0, apex), Cross(Subtract(p1, apex), Subtract(p2, apex))) / _mm256_set1_pd(6);
    // A quarter of either factor is exact: products of three lengths that are floats are no less than 2^-450.
    moments = Multiply(Add(Add(Add(apex, p0), p1), p2), _mm256_set1_pd(0.25) * volumes);
    return volumes;
}

}  // namespace
}  // namespace Quorlan

#endif
