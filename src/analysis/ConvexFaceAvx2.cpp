#include "analysis/ConvexFaceAvx2.h"

#if QUORLAN_HAS_AVX2

#include "analysis/Avx2Tetrahedra.h"
#include "analysis/PlanarTriangulator.h"

#include <algorithm>

namespace Quorlan {
namespace {

using GeometryObjectLib::Vertex;

/// Behind the corners of a loop, its first corner is repeated so often.
constexpr std::size_t kPadding = 5;

/// [-] A loop whose area is less than this times the square of its extent times that of its number of corners may be
/// missed by its triangles by rounding (by 1e-15 of that product at most), which would show as a failed triangulation
/// from one millionth of the area on.
constexpr double kSmallestArea = 1e-8;

/// A row of numbers, one per corner, with room for two before the first.
struct Rows {
    double *x, *y, *z;
    double *planeX, *planeY;
    double* terms[4];  ///< of sums, one after the other

    Rows(double* scratch, std::size_t size) {
        std::size_t const length = 2 * size + 16;
        double** const rows[] = {&x, &y, &z, &planeX, &planeY, &terms[0], &terms[1], &terms[2], &terms[3]};
        double* row = scratch + 2;
        for (double** const r : rows) {
            *r = row;
            row += length;
        }
    }
};

QUORLAN_AVX2_INLINE Vectors Load(Rows const& rows, std::size_t i) {
    return {_mm256_loadu_pd(rows.x + i), _mm256_loadu_pd(rows.y + i), _mm256_loadu_pd(rows.z + i)};
}

/// Closes a row: the last two corners before it, the first one behind it.
QUORLAN_AVX2_INLINE void Close(double* row, std::size_t size) {
    row[-2] = row[size - 2];
    row[-1] = row[size - 1];
    for (std::size_t i = 0; i < kPadding; ++i) row[size + i] = row[0];
}

QUORLAN_AVX2 void ReadCorners(LoopView const& loop, Rows const& rows) {
    auto const getVertex = [&](std::size_t i) {
        return loop.vertices + loop.indices[i < loop.size ? i : 0] * loop.vertexStride;
    };
    for (std::size_t i = 0; i < loop.size; i += 4) {
        Vectors const c = LoadVertices(getVertex(i), getVertex(i + 1), getVertex(i + 2), getVertex(i + 3));
        _mm256_storeu_pd(rows.x + i, c.x);
        _mm256_storeu_pd(rows.y + i, c.y);
        _mm256_storeu_pd(rows.z + i, c.z);
    }
    for (double* const row : {rows.x, rows.y, rows.z}) Close(row, loop.size);
}

/// The Newell normal and the longest edge, of equal ones the first.
/// RETURNS false where squares of lengths do not decide as the lengths do (see SmallFaceLanes::CanCompareSquares).
QUORLAN_AVX2 bool ComputeNormal(Rows const& rows, std::size_t size, Vertex& normal, Vertex& longest) {
    __m256d sum = _mm256_setzero_pd();
    __m256d most = _mm256_setzero_pd();
    for (std::size_t i = 0; i < size; i += 4) {
        Vectors const c = Load(rows, i);
        Vectors const n = Load(rows, i + 1);
        Vectors const edge = Subtract(n, c);
        __m256d const squared = Dot(edge, edge);
        sum = sum + squared;
        most = _mm256_max_pd(most, squared);
        _mm256_storeu_pd(rows.terms[0] + i, (n.z + c.z) * edge.y);
        _mm256_storeu_pd(rows.terms[1] + i, (n.x + c.x) * edge.z);
        _mm256_storeu_pd(rows.terms[2] + i, (n.y + c.y) * edge.x);
        _mm256_storeu_pd(rows.terms[3] + i, squared);
    }
    if (!AreAll(IsLess(sum, _mm256_set1_pd(1e300)))) return false;
    most = _mm256_max_pd(most, _mm256_permute2f128_pd(most, most, 1));
    most = _mm256_max_pd(most, _mm256_permute_pd(most, 5));

    __m256d const almost = most * _mm256_set1_pd(1 - 2e-15);
    __m256d isUnsure = _mm256_setzero_pd();
    std::size_t first = size;
    for (std::size_t i = 0; i < size; i += 4) {
        __m256d const squared = _mm256_loadu_pd(rows.terms[3] + i);
        __m256d const isLongest = IsEqual(squared, most);
        isUnsure = _mm256_or_pd(isUnsure, _mm256_andnot_pd(isLongest, IsLess(almost, squared)));
        int const bits = _mm256_movemask_pd(isLongest);
        if (bits != 0 && first == size) first = i + static_cast<std::size_t>(__builtin_ctz(bits));
    }
    if (_mm256_movemask_pd(isUnsure) != 0) return false;

    for (std::size_t i = 0; i < size; ++i) {  // each step is the negative of what Newell's method adds
        normal.x -= rows.terms[0][i];
        normal.y -= rows.terms[1][i];
        normal.z -= rows.terms[2][i];
    }
    longest = {rows.x[first + 1] - rows.x[first], rows.y[first + 1] - rows.y[first], rows.z[first + 1] - rows.z[first]};
    return true;
}

QUORLAN_AVX2 double ComputeArea(Rows const& rows, std::size_t size, Vertex const& u, Vertex const& v) {
    Vectors const axisU = Broadcast(u);
    Vectors const axisV = Broadcast(v);
    double* const alongU = rows.terms[0];
    double* const alongV = rows.terms[1];
    double* const steps = rows.terms[2];
    for (std::size_t i = 0; i < size; i += 4) {
        Vectors const c = Load(rows, i);
        _mm256_storeu_pd(alongU + i, Dot(axisU, c));
        _mm256_storeu_pd(alongV + i, Dot(axisV, c));
    }
    alongU[-1] = alongU[size - 1];
    alongV[-1] = alongV[size - 1];
    for (std::size_t i = 0; i < size; i += 4) {
        _mm256_storeu_pd(steps + i, _mm256_loadu_pd(alongU + i - 1) * _mm256_loadu_pd(alongV + i) -
                                        _mm256_loadu_pd(alongV + i - 1) * _mm256_loadu_pd(alongU + i));
    }
    double sum = 0;
    for (std::size_t i = 0; i < size; ++i) sum += steps[i];
    return 0.5 * sum;
}

/// As PlanarTriangulator::Project.
QUORLAN_AVX2 void Project(Rows const& rows, std::size_t size, Vertex const& p, Vertex const& q) {
    Vectors const axisP = Broadcast(p);
    Vectors const axisQ = Broadcast(q);
    Vectors const origin = Broadcast(Vertex{rows.x[0], rows.y[0], rows.z[0]});
    for (std::size_t i = 0; i < size; i += 4) {
        Vectors const local = Subtract(Load(rows, i), origin);
        _mm256_storeu_pd(rows.planeX + i, Dot(axisP, local));
        _mm256_storeu_pd(rows.planeY + i, Dot(axisQ, local));
    }
    Close(rows.planeX, size);
    Close(rows.planeY, size);
}

/// Points of the plane.
struct Points {
    __m256d x, y;
};

QUORLAN_AVX2_INLINE Points LoadPoints(Rows const& rows, std::ptrdiff_t i) {
    return {_mm256_loadu_pd(rows.planeX + i), _mm256_loadu_pd(rows.planeY + i)};
}

/// Earcut's formula for the turn from p over q to r.
QUORLAN_AVX2_INLINE __m256d TurnsLeft(Points const& p, Points const& q, Points const& r) {
    return IsLess((q.y - p.y) * (r.x - q.x) - (q.x - p.x) * (r.y - q.y), _mm256_setzero_pd());
}

/// Whether the first `count` lanes are set.
QUORLAN_AVX2_INLINE bool AreFirst(__m256d mask, std::size_t count) {
    int const needed = count < 4 ? (1 << count) - 1 : 0xF;
    return (_mm256_movemask_pd(mask) & needed) == needed;
}

/// Whether all corners turn left, and the loop encloses enough for its triangles to cover it surely.
QUORLAN_AVX2 bool IsConvex(Rows const& rows, std::size_t size) {
    __m256d twiceArea = _mm256_setzero_pd();
    __m256d extent = _mm256_setzero_pd();
    __m256d const sign = _mm256_set1_pd(-0.0);
    for (std::size_t i = 0; i < size; i += 4) {
        auto const at = static_cast<std::ptrdiff_t>(i);
        Points const point = LoadPoints(rows, at);
        Points const next = LoadPoints(rows, at + 1);
        if (!AreFirst(TurnsLeft(LoadPoints(rows, at - 1), point, next), size - i)) return false;
        twiceArea = twiceArea + (point.x - next.x) * (next.y + point.y);
        extent = _mm256_max_pd(extent, _mm256_andnot_pd(sign, point.x));
        extent = _mm256_max_pd(extent, _mm256_andnot_pd(sign, point.y));
    }
    double areas[4];
    double extents[4];
    _mm256_storeu_pd(areas, twiceArea);
    _mm256_storeu_pd(extents, extent);
    double const farthest = std::max(std::max(extents[0], extents[1]), std::max(extents[2], extents[3]));
    double const reach = static_cast<double>(size) * farthest;
    return areas[0] + areas[1] + areas[2] + areas[3] > 2 * kSmallestArea * reach * reach;
}

/// The second of every two numbers of a row.
QUORLAN_AVX2_INLINE __m256d LoadOdd(double const* row) {
    __m256d const odd = _mm256_unpackhi_pd(_mm256_loadu_pd(row), _mm256_loadu_pd(row + 4));
    return _mm256_permute4x64_pd(odd, _MM_SHUFFLE(3, 1, 2, 0));
}

/// Makes each row, from the last but one corner on, that of the strip. What stays behind of triangle t is corner 2 t of
/// the strip and comes again as corner size + t.
QUORLAN_AVX2 void MakeStrip(Rows const& rows, std::size_t size) {
    for (double* const row : {rows.x, rows.y, rows.z, rows.planeX, rows.planeY}) {
        double* const strip = row - 2;
        for (std::size_t t = 0; t + 1 < size; ++t) strip[size + t] = strip[2 * t];
    }
}

/// Whether after each cut the two corners beside it still turn left.
QUORLAN_AVX2 bool StaysConvex(Rows const& rows, std::size_t size) {
    for (std::size_t t = 0; t + 3 < size; t += 4) {
        auto const stays = static_cast<std::ptrdiff_t>(size + t) - 2;
        Points const before = LoadPoints(rows, stays);
        Points const after = LoadPoints(rows, stays + 1);
        Points const behind{LoadOdd(rows.planeX + 2 * t), LoadOdd(rows.planeY + 2 * t)};
        __m256d const turns =
            _mm256_and_pd(TurnsLeft(LoadPoints(rows, stays - 1), before, after), TurnsLeft(before, after, behind));
        if (!AreFirst(turns, size - 3 - t)) return false;
    }
    return true;
}

QUORLAN_AVX2 void MeasureTriangles(Rows const& rows, std::size_t size, Vertex const& apexOfAll) {
    Vectors const apex = Broadcast(apexOfAll);
    for (std::size_t t = 0; t + 2 < size; t += 4) {
        Vectors const p0 = Load(rows, size + t - 2);
        Vectors const p1{LoadOdd(rows.x - 2 + 2 * t), LoadOdd(rows.y - 2 + 2 * t), LoadOdd(rows.z - 2 + 2 * t)};
        Vectors const p2 = Load(rows, size + t - 1);
        Vectors moments;
        _mm256_storeu_pd(rows.terms[0] + t, ComputeTetrahedra(apex, p0, p1, p2, moments));
        _mm256_storeu_pd(rows.terms[1] + t, moments.x);
        _mm256_storeu_pd(rows.terms[2] + t, moments.y);
        _mm256_storeu_pd(rows.terms[3] + t, moments.z);
    }
}

}  // namespace

bool MeasureConvexFaceAvx2(LoopView const& loop, Vertex const& apex, double shortestNormal, double* scratch,
                           ConvexFaceMeasures& measures) {
    Rows const rows(scratch, loop.size);
    ReadCorners(loop, rows);
    Vertex normal;
    Vertex longest;
    if (!ComputeNormal(rows, loop.size, normal, longest)) return false;
    double const length = Length(normal);
    if (!(length >= shortestNormal)) return false;

    Vertex const n = normal / length;
    Vertex const p = ComputePerpendicular(n);
    Project(rows, loop.size, p, Cross(n, p));
    if (!IsConvex(rows, loop.size)) return false;
    Vertex const u = longest / Length(longest);
    measures.area = ComputeArea(rows, loop.size, u, Cross(n, u));
    MakeStrip(rows, loop.size);
    if (!StaysConvex(rows, loop.size)) return false;
    MeasureTriangles(rows, loop.size, apex);
    measures.volumes = rows.terms[0];
    std::copy(rows.terms + 1, rows.terms + 4, measures.moments);
    return true;
}

}  // namespace Quorlan

#endif
