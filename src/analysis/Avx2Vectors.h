#pragma once

#include "geometry/Avx2.h"

#if QUORLAN_HAS_AVX2

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

// Only for files whose functions are for AVX2. All is inlined and has internal linkage: none of it can stand in for
// code that runs on other processors.
#define QUORLAN_AVX2 __attribute__((target("avx2")))
#define QUORLAN_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace Quorlan {
namespace {

/// Four vectors in double precision, component by component.
struct Vectors {
    __m256d x, y, z;
};

QUORLAN_AVX2_INLINE Vectors Add(Vectors const& a, Vectors const& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
QUORLAN_AVX2_INLINE Vectors Subtract(Vectors const& a, Vectors const& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
QUORLAN_AVX2_INLINE Vectors Multiply(Vectors const& a, __m256d k) { return {a.x * k, a.y * k, a.z * k}; }
QUORLAN_AVX2_INLINE Vectors Divide(Vectors const& a, __m256d k) { return {a.x / k, a.y / k, a.z / k}; }
QUORLAN_AVX2_INLINE __m256d Dot(Vectors const& a, Vectors const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
QUORLAN_AVX2_INLINE Vectors Cross(Vectors const& a, Vectors const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
QUORLAN_AVX2_INLINE __m256d IsLess(__m256d a, __m256d b) { return _mm256_cmp_pd(a, b, _CMP_LT_OS); }
QUORLAN_AVX2_INLINE __m256d IsEqual(__m256d a, __m256d b) { return _mm256_cmp_pd(a, b, _CMP_EQ_OQ); }
QUORLAN_AVX2_INLINE bool AreAll(__m256d mask) { return _mm256_movemask_pd(mask) == 0xF; }
QUORLAN_AVX2_INLINE __m256d Select(__m256d mask, __m256d a, __m256d b) {
    return _mm256_or_pd(_mm256_and_pd(mask, a), _mm256_andnot_pd(mask, b));
}
QUORLAN_AVX2_INLINE Vectors Select(__m256d mask, Vectors const& a, Vectors const& b) {
    return {Select(mask, a.x, b.x), Select(mask, a.y, b.y), Select(mask, a.z, b.z)};
}
template <class Vector>
QUORLAN_AVX2_INLINE Vectors Broadcast(Vector const& v) {
    return {_mm256_set1_pd(v.x), _mm256_set1_pd(v.y), _mm256_set1_pd(v.z)};
}

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
