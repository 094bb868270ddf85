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

/// The vectors that four frames' axes x, y and z make of `v`.
QUORLAN_AVX2_INLINE Vectors Turn(Vectors const& x, Vectors const& y, Vectors const& z, Vectors const& v) {
    return {x.x * v.x + y.x * v.y + z.x * v.z, x.y * v.x + y.y * v.y + z.y * v.z, x.z * v.x + y.z * v.y + z.z * v.z};
}

/// The points that four frames make of `p`.
QUORLAN_AVX2_INLINE Vectors Place(Vectors const& origin, Vectors const& x, Vectors const& y, Vectors const& z,
                                  Vectors const& p) {
    return {origin.x + x.x * p.x + y.x * p.y + z.x * p.z, origin.y + x.y * p.x + y.y * p.y + z.y * p.z,
            origin.z + x.z * p.x + y.z * p.y + z.z * p.z};
}

/// 16 bytes of each of two records.
QUORLAN_AVX2_INLINE __m256d LoadDoubles(std::uint8_t const* lower, std::uint8_t const* upper) {
    return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(reinterpret_cast<double const*>(lower))),
                                _mm_loadu_pd(reinterpret_cast<double const*>(upper)), 1);
}
QUORLAN_AVX2_INLINE __m256d LoadWide(std::uint8_t const* record) {
    return _mm256_cvtps_pd(_mm_loadu_ps(reinterpret_cast<float const*>(record)));
}

/// Two float triples that follow one another `offset` bytes into each of four records, widened.
QUORLAN_AVX2_INLINE void LoadWideTriples(std::uint8_t const* const* r, std::size_t offset, Vectors& first,
                                         Vectors& second) {
    __m256d const a = LoadWide(r[0] + offset);  // first.xyz, second.x
    __m256d const b = LoadWide(r[1] + offset);
    __m256d const c = LoadWide(r[2] + offset);
    __m256d const d = LoadWide(r[3] + offset);
    __m256d const acLower = _mm256_permute2f128_pd(a, c, 0x20);
    __m256d const bdLower = _mm256_permute2f128_pd(b, d, 0x20);
    __m256d const acUpper = _mm256_permute2f128_pd(a, c, 0x31);
    __m256d const bdUpper = _mm256_permute2f128_pd(b, d, 0x31);
    first.x = _mm256_unpacklo_pd(acLower, bdLower);
    first.y = _mm256_unpackhi_pd(acLower, bdLower);
    first.z = _mm256_unpacklo_pd(acUpper, bdUpper);
    second.x = _mm256_unpackhi_pd(acUpper, bdUpper);
    __m256d const eg = _mm256_permute2f128_pd(LoadWide(r[0] + offset + 8), LoadWide(r[2] + offset + 8), 0x31);
    __m256d const fh = _mm256_permute2f128_pd(LoadWide(r[1] + offset + 8), LoadWide(r[3] + offset + 8), 0x31);
    second.y = _mm256_unpacklo_pd(eg, fh);
    second.z = _mm256_unpackhi_pd(eg, fh);
}

/// Three doubles `offset` bytes into each of four records.
QUORLAN_AVX2_INLINE Vectors LoadOrigins(std::uint8_t const* const* r, std::size_t offset) {
    __m256d const a = LoadDoubles(r[0] + offset, r[2] + offset);
    __m256d const b = LoadDoubles(r[1] + offset, r[3] + offset);
    __m256d const c = LoadDoubles(r[0] + offset + 8, r[2] + offset + 8);
    __m256d const d = LoadDoubles(r[1] + offset + 8, r[3] + offset + 8);
    return {_mm256_unpacklo_pd(a, b), _mm256_unpackhi_pd(a, b), _mm256_unpackhi_pd(c, d)};
}

}  // namespace
}  // namespace Quorlan

#endif
