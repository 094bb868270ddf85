#include "analysis/SmallFacesAvx2.h"

#if QUORLAN_HAS_AVX2

#include "analysis/Avx2Tetrahedra.h"

namespace Quorlan {
namespace {

/// Four faces, halfway through.
struct Group {
    Vectors corners[4];
    Vectors u;         ///< along the longest edge
    Vectors opposite;  ///< unit normal turned round
    __m256d length;    ///< of the Newell normal
};

/// Corner `i` of four loops.
QUORLAN_AVX2_INLINE Vectors LoadCorners(std::uint8_t const* vertices, std::uint16_t const* const* loops,
                                        std::size_t i) {
    return LoadVertices(vertices + loops[0][i] * kPositionSize, vertices + loops[1][i] * kPositionSize,
                        vertices + loops[2][i] * kPositionSize, vertices + loops[3][i] * kPositionSize);
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

/// RETURNS false where SmallFaceLanes cannot measure the faces.
QUORLAN_AVX2_INLINE bool Begin(std::uint8_t const* vertices, std::uint16_t const* const* loops, std::size_t count,
                               Group& group) {
    Vectors* const corners = group.corners;
    Vectors edges[4];
    for (std::size_t i = 0; i < count; ++i) corners[i] = LoadCorners(vertices, loops, i);
    for (std::size_t i = 0; i < count; ++i) {
        edges[i] = Subtract(corners[i + 1 == count ? 0 : i + 1], corners[i]);
    }
    if (count == 4) {
        Vectors const e2 = Subtract(corners[2], corners[0]);
        Vectors const e3 = Subtract(corners[3], corners[0]);
        __m256d const turn = Dot(Cross(edges[0], e2), Cross(e2, e3));
        if (!AreAll(IsLess(_mm256_setzero_pd(), turn))) return false;
    }
    Vectors longest{};
    __m256d longestSquared;
    if (!FindLongestEdges(edges, count, longest, longestSquared)) return false;
    Vectors const opposite = ComputeOppositeNormal(corners, edges, count);
    group.length = _mm256_sqrt_pd(Dot(opposite, opposite));
    group.opposite = Divide(opposite, group.length);
    group.u = Divide(longest, _mm256_sqrt_pd(longestSquared));
    return true;
}

QUORLAN_AVX2_INLINE void StoreTetrahedra(Group const& group, double const (&apexOfAll)[3], std::size_t count,
                                         std::size_t at, SmallFaceMeasures& measures) {
    Vectors const apex{_mm256_set1_pd(apexOfAll[0]), _mm256_set1_pd(apexOfAll[1]), _mm256_set1_pd(apexOfAll[2])};
    for (std::size_t t = 0; t + 2 < count; ++t) {
        Vectors moments;
        __m256d const volumes =
            ComputeTetrahedra(apex, group.corners[0], group.corners[t + 1], group.corners[t + 2], moments);
        _mm256_storeu_pd(measures.volumes[t] + at, volumes);
        _mm256_storeu_pd(measures.moments[t][0] + at, moments.x);
        _mm256_storeu_pd(measures.moments[t][1] + at, moments.y);
        _mm256_storeu_pd(measures.moments[t][2] + at, moments.z);
    }
}

/// Zeros may have the other sign than in scalars, which no sum that starts at 0 shows.
QUORLAN_AVX2_INLINE __m256d ComputeAreas(Group const& group, std::size_t count, double shortestNormal) {
    Vectors const oppositeV = Cross(group.opposite, group.u);
    __m256d sum = _mm256_setzero_pd();
    __m256d previousU = Dot(group.u, group.corners[count - 1]);
    __m256d previousV = Dot(oppositeV, group.corners[count - 1]);
    for (std::size_t i = 0; i < count; ++i) {
        __m256d const alongU = Dot(group.u, group.corners[i]);
        __m256d const alongV = Dot(oppositeV, group.corners[i]);
        sum = sum + (previousU * alongV - previousV * alongU);
        previousU = alongU;
        previousV = alongV;
    }
    return _mm256_andnot_pd(IsLess(group.length, _mm256_set1_pd(shortestNormal)), _mm256_set1_pd(-0.5) * sum);
}

/// The roots and divisions of a group take long: what needs them comes last, behind all else of both groups.
QUORLAN_AVX2_INLINE bool Measure(std::uint8_t const* vertices, SmallFaces const& faces, double const (&apex)[3],
                                 double shortestNormal, std::size_t count, SmallFaceMeasures& measures) {
    Group groups[kSmallFaceCount / 4];
    for (std::size_t at = 0; at < faces.size; at += 4) {
        if (!Begin(vertices, faces.loops + at, count, groups[at / 4])) return false;
    }
    for (std::size_t at = 0; at < faces.size; at += 4) {
        StoreTetrahedra(groups[at / 4], apex, count, at, measures);
    }
    for (std::size_t at = 0; at < faces.size; at += 4) {
        _mm256_storeu_pd(measures.areas + at, ComputeAreas(groups[at / 4], count, shortestNormal));
    }
    return true;
}

}  // namespace

QUORLAN_AVX2 bool MeasureSmallFacesAvx2(std::uint8_t const* vertices, SmallFaces const& faces, double const (&apex)[3],
                                        double shortestNormal, SmallFaceMeasures& measures) {
    return faces.cornerCount == 3 ? Measure(vertices, faces, apex, shortestNormal, 3, measures)
                                  : Measure(vertices, faces, apex, shortestNormal, 4, measures);
}

}  // namespace Quorlan

#endif
