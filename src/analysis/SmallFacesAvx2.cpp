#include "analysis/SmallFacesAvx2.h"

#if QUORLAN_HAS_AVX2

#include "analysis/Avx2Vectors.h"

namespace Quorlan {
namespace {

/// Corner `i` of all faces.
QUORLAN_AVX2_INLINE Vectors LoadCorners(std::uint8_t const* vertices, std::size_t stride, SmallFaces const& faces,
                                        std::size_t i) {
    return LoadVertices(vertices + faces.loops[0][i] * stride, vertices + faces.loops[1][i] * stride,
                        vertices + faces.loops[2][i] * stride, vertices + faces.loops[3][i] * stride);
}

/// The longest edge of each loop, of equal ones the first, and the square of its length.
/// RETURNS false where squares cannot decide, as SmallFaceLanes::CanCompareSquares.
QUORLAN_AVX2_INLINE bool FindLongestEdges(Vectors const* edges, std::size_t count, Vectors& longest,
                                          __m256d& longestSquared) {
    __m256d squares[4];
    for (std::size_t i = 0; i < count; ++i) squares[i] = Dot(edges[i], edges[i]);
    __m256d sum = squares[0];
    longestSquared = squares[0];
    for (std::size_t i = 1; i < count; ++i) {
        sum = sum + squares[i];  // not a number if one of them is not
        longestSquared = _mm256_max_pd(longestSquared, squares[i]);
    }
    __m256d const almost = longestSquared * _mm256_set1_pd(1 - 2e-15);
    __m256d isUnsure = _mm256_setzero_pd();
    for (std::size_t i = count; i-- > 0;) {
        __m256d const isLongest = IsEqual(squares[i], longestSquared);
        isUnsure = _mm256_or_pd(isUnsure, _mm256_andnot_pd(isLongest, IsLess(almost, squares[i])));
        longest = i + 1 == count ? edges[i] : Select(isLongest, edges[i], longest);
    }
    return AreAll(_mm256_andnot_pd(isUnsure, IsLess(sum, _mm256_set1_pd(1e300))));
}

/// The Newell normal turned round: each step is the other's negative to the bit, and the edges are there already.
QUORLAN_AVX2_INLINE Vectors ComputeOppositeNormal(Vectors const* corners, Vectors const* edges, std::size_t count) {
    Vectors opposite{};
    for (std::size_t i = 0; i < count; ++i) {
        Vectors const& c = corners[i];
        Vectors const& n = corners[i + 1 == count ? 0 : i + 1];
        opposite.x = opposite.x + (n.z + c.z) * edges[i].y;
        opposite.y = opposite.y + (n.x + c.x) * edges[i].z;
        opposite.z = opposite.z + (n.y + c.y) * edges[i].x;
    }
    return opposite;
}

/// Zeros may have the other sign than in scalars, which no sum that starts at 0 shows.
QUORLAN_AVX2_INLINE __m256d ComputeAreas(Vectors const* corners, Vectors const* edges, Vectors const& longestEdges,
                                         __m256d longestSquared, std::size_t count, double shortestNormal) {
    Vectors const opposite = ComputeOppositeNormal(corners, edges, count);
    __m256d const length = _mm256_sqrt_pd(Dot(opposite, opposite));
    Vectors const u = Divide(longestEdges, _mm256_sqrt_pd(longestSquared));
    Vectors const oppositeV = Cross(Divide(opposite, length), u);
    __m256d sum = _mm256_setzero_pd();
    __m256d previousU = Dot(u, corners[count - 1]);
    __m256d previousV = Dot(oppositeV, corners[count - 1]);
    for (std::size_t i = 0; i < count; ++i) {
        __m256d const alongU = Dot(u, corners[i]);
        __m256d const alongV = Dot(oppositeV, corners[i]);
        sum = sum + (previousU * alongV - previousV * alongU);
        previousU = alongU;
        previousV = alongV;
    }
    return _mm256_andnot_pd(IsLess(length, _mm256_set1_pd(shortestNormal)), _mm256_set1_pd(-0.5) * sum);
}

QUORLAN_AVX2_INLINE bool Measure(std::uint8_t const* vertices, std::size_t stride, SmallFaces const& faces,
                                 double const (&apexOfAll)[3], double shortestNormal, std::size_t count,
                                 SmallFaceMeasures& measures) {
    Vectors corners[4];
    Vectors edges[4];
    for (std::size_t i = 0; i < count; ++i) corners[i] = LoadCorners(vertices, stride, faces, i);
    for (std::size_t i = 0; i < count; ++i) {
        edges[i] = Subtract(corners[i + 1 == count ? 0 : i + 1], corners[i]);
    }
    if (count == 4) {
        Vectors const e2 = Subtract(corners[2], corners[0]);
        Vectors const e3 = Subtract(corners[3], corners[0]);
        __m256d const turn = Dot(Cross(edges[0], e2), Cross(e2, e3));
        if (!AreAll(IsLess(_mm256_setzero_pd(), turn))) return false;
    }
    Vectors longest;
    __m256d longestSquared;
    if (!FindLongestEdges(edges, count, longest, longestSquared)) return false;

    _mm256_storeu_pd(measures.areas, ComputeAreas(corners, edges, longest, longestSquared, count, shortestNormal));
    Vectors const apex{_mm256_set1_pd(apexOfAll[0]), _mm256_set1_pd(apexOfAll[1]), _mm256_set1_pd(apexOfAll[2])};
    for (std::size_t t = 0; t + 2 < count; ++t) {
        Vectors moments;
        _mm256_storeu_pd(measures.volumes[t],
                         ComputeTetrahedra(apex, corners[0], corners[t + 1], corners[t + 2], moments));
        _mm256_storeu_pd(measures.moments[t][0], moments.x);
        _mm256_storeu_pd(measures.moments[t][1], moments.y);
        _mm256_storeu_pd(measures.moments[t][2], moments.z);
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
