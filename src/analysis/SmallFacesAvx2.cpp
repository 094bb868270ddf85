#include "analysis/SmallFacesAvx2.h"

#if QUORLAN_HAS_AVX2

#include <immintrin.h>

// Every function of this file is for AVX2 and has internal linkage but for the one that the header declares, and
// nothing is instantiated here: none of it can stand in for code that runs on other processors.
#define QUORLAN_AVX2 __attribute__((target("avx2")))
#define QUORLAN_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace Quorlan {
namespace {

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
QUORLAN_AVX2_INLINE __m256d Select(__m256d mask, __m256d a, __m256d b) { return _mm256_blendv_pd(b, a, mask); }
QUORLAN_AVX2_INLINE bool AreAll(__m256d mask) { return _mm256_movemask_pd(mask) == 0xF; }

/// x, y, z and 0 of a vertex.
QUORLAN_AVX2_INLINE __m128 LoadVertex(std::uint8_t const* vertex) {
    return _mm_castsi128_ps(_mm_srli_si128(_mm_loadu_si128(reinterpret_cast<__m128i const*>(vertex - 4)), 4));
}

/// Corner `i` of all faces.
QUORLAN_AVX2_INLINE Vectors LoadCorners(std::uint8_t const* vertices, std::size_t stride, SmallFaces const& faces,
                                        std::size_t i) {
    __m128 a = LoadVertex(vertices + faces.loops[0][i] * stride);
    __m128 b = LoadVertex(vertices + faces.loops[1][i] * stride);
    __m128 c = LoadVertex(vertices + faces.loops[2][i] * stride);
    __m128 d = LoadVertex(vertices + faces.loops[3][i] * stride);
    _MM_TRANSPOSE4_PS(a, b, c, d);
    return {_mm256_cvtps_pd(a), _mm256_cvtps_pd(b), _mm256_cvtps_pd(c)};
}

/// As SmallFaceLanes::CanCompareSquares.
QUORLAN_AVX2_INLINE bool CanCompareSquares(__m256d const* squares, std::size_t count) {
    __m256d longest = squares[0];
    for (std::size_t i = 1; i < count; ++i) longest = _mm256_max_pd(squares[i], longest);
    __m256d const almost = longest * _mm256_set1_pd(1 - 2e-15);
    __m256d isUnsure = _mm256_setzero_pd();
    __m256d isFinite = IsLess(squares[0], _mm256_set1_pd(1e300));
    for (std::size_t i = 0; i < count; ++i) {
        isUnsure = _mm256_or_pd(isUnsure, _mm256_and_pd(IsLess(almost, squares[i]), IsLess(squares[i], longest)));
        isFinite = _mm256_and_pd(isFinite, IsLess(squares[i], _mm256_set1_pd(1e300)));
    }
    return AreAll(isFinite) && _mm256_movemask_pd(isUnsure) == 0;
}

QUORLAN_AVX2_INLINE Vectors ComputeNewellNormal(Vectors const* corners, std::size_t count) {
    Vectors normal{_mm256_setzero_pd(), _mm256_setzero_pd(), _mm256_setzero_pd()};
    for (std::size_t i = 0; i < count; ++i) {
        Vectors const& c = corners[i];
        Vectors const& n = corners[i + 1 == count ? 0 : i + 1];
        normal.x = normal.x + (n.z + c.z) * (c.y - n.y);
        normal.y = normal.y + (c.z - n.z) * (n.x + c.x);
        normal.z = normal.z + (c.x - n.x) * (n.y + c.y);
    }
    return normal;
}

QUORLAN_AVX2_INLINE __m256d ComputeAreas(Vectors const* corners, Vectors const* edges, __m256d const* squares,
                                         std::size_t count, double shortestNormal) {
    Vectors longest = edges[0];
    __m256d longestSquared = squares[0];
    for (std::size_t i = 1; i < count; ++i) {
        __m256d const isLonger = IsLess(longestSquared, squares[i]);
        longest = {Select(isLonger, edges[i].x, longest.x), Select(isLonger, edges[i].y, longest.y),
                   Select(isLonger, edges[i].z, longest.z)};
        longestSquared = Select(isLonger, squares[i], longestSquared);
    }
    Vectors const normal = ComputeNewellNormal(corners, count);
    __m256d const length = _mm256_sqrt_pd(Dot(normal, normal));
    Vectors const u = Divide(longest, _mm256_sqrt_pd(longestSquared));
    Vectors const v = Cross(Divide(normal, length), u);
    __m256d sum = _mm256_setzero_pd();
    __m256d previousU = Dot(u, corners[count - 1]);
    __m256d previousV = Dot(v, corners[count - 1]);
    for (std::size_t i = 0; i < count; ++i) {
        __m256d const alongU = Dot(u, corners[i]);
        __m256d const alongV = Dot(v, corners[i]);
        sum = sum + (previousU * alongV - previousV * alongU);
        previousU = alongU;
        previousV = alongV;
    }
    return Select(IsLess(length, _mm256_set1_pd(shortestNormal)), _mm256_setzero_pd(), _mm256_set1_pd(0.5) * sum);
}

QUORLAN_AVX2_INLINE bool Measure(std::uint8_t const* vertices, std::size_t stride, SmallFaces const& faces,
                                 double const (&apexOfAll)[3], double shortestNormal, std::size_t count,
                                 SmallFaceMeasures& measures) {
    Vectors corners[4];
    Vectors edges[4];
    __m256d squares[4];
    for (std::size_t i = 0; i < count; ++i) corners[i] = LoadCorners(vertices, stride, faces, i);
    for (std::size_t i = 0; i < count; ++i) {
        edges[i] = Subtract(corners[i + 1 == count ? 0 : i + 1], corners[i]);
        squares[i] = Dot(edges[i], edges[i]);
    }
    if (count == 4) {
        Vectors const e2 = Subtract(corners[2], corners[0]);
        Vectors const e3 = Subtract(corners[3], corners[0]);
        __m256d const turn = Dot(Cross(edges[0], e2), Cross(e2, e3));
        if (!AreAll(IsLess(_mm256_setzero_pd(), turn))) return false;
    }
    if (!CanCompareSquares(squares, count)) return false;

    _mm256_storeu_pd(measures.areas, ComputeAreas(corners, edges, squares, count, shortestNormal));
    Vectors const apex{_mm256_set1_pd(apexOfAll[0]), _mm256_set1_pd(apexOfAll[1]), _mm256_set1_pd(apexOfAll[2])};
    Vectors const& p0 = corners[0];
    for (std::size_t t = 0; t + 2 < count; ++t) {
        Vectors const& p1 = corners[t + 1];
        Vectors const& p2 = corners[t + 2];
        __m256d const volume =
            Dot(Subtract(p0, apex), Cross(Subtract(p1, apex), Subtract(p2, apex))) / _mm256_set1_pd(6);
        Vectors const centroid = Multiply(Add(Add(Add(apex, p0), p1), p2), _mm256_set1_pd(0.25));
        Vectors const moment = Multiply(centroid, volume);
        _mm256_storeu_pd(measures.volumes[t], volume);
        _mm256_storeu_pd(measures.moments[t][0], moment.x);
        _mm256_storeu_pd(measures.moments[t][1], moment.y);
        _mm256_storeu_pd(measures.moments[t][2], moment.z);
    }
    return true;
}

}  // namespace

QUORLAN_AVX2 bool MeasureSmallFacesAvx2(std::uint8_t const* vertices, std::size_t vertexStride, SmallFaces const& faces,
                                        double const (&apex)[3], double shortestNormal, SmallFaceMeasures& measures) {
    return faces.cornerCount == 3 ? Measure(vertices, vertexStride, faces, apex, shortestNormal, 3, measures)
                                  : Measure(vertices, vertexStride, faces, apex, shortestNormal, 4, measures);
}

}  // namespace Quorlan

#endif
