#include "analysis/PlacedInstancesAvx2.h"

#include "geometry/Avx2Vectors.h"

#if QUORLAN_HAS_AVX2

namespace Quorlan {
namespace {

using Record = std::uint8_t const*;

constexpr std::size_t kAxes = 24;  ///< [bytes] into a placement, behind its origin

/// Vectors of eight instances. Lanes 0 to 3 are the lower half.
struct Floats {
    __m256 x, y, z;
};

QUORLAN_AVX2_INLINE Floats Divide(Floats const& a, __m256 k) { return {a.x / k, a.y / k, a.z / k}; }
QUORLAN_AVX2_INLINE __m256 Dot(Floats const& a, Floats const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
QUORLAN_AVX2_INLINE Floats Cross(Floats const& a, Floats const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// std::min(a, b) and std::max(a, b), in this order of arguments.
QUORLAN_AVX2_INLINE __m256 Min(__m256 a, __m256 b) { return _mm256_min_ps(b, a); }
QUORLAN_AVX2_INLINE __m256 Max(__m256 a, __m256 b) { return _mm256_max_ps(b, a); }

QUORLAN_AVX2_INLINE __m256d WidenLower(__m256 a) { return _mm256_cvtps_pd(_mm256_castps256_ps128(a)); }
QUORLAN_AVX2_INLINE __m256d WidenUpper(__m256 a) { return _mm256_cvtps_pd(_mm256_extractf128_ps(a, 1)); }
QUORLAN_AVX2_INLINE Vectors WidenLower(Floats const& a) { return {WidenLower(a.x), WidenLower(a.y), WidenLower(a.z)}; }
QUORLAN_AVX2_INLINE Vectors WidenUpper(Floats const& a) { return {WidenUpper(a.x), WidenUpper(a.y), WidenUpper(a.z)}; }

/// 16 bytes of each of two records.
QUORLAN_AVX2_INLINE __m256 LoadFloats(Record lower, Record upper) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(reinterpret_cast<float const*>(lower))),
                                _mm_loadu_ps(reinterpret_cast<float const*>(upper)), 1);
}

/// The first and the second two floats of a pair of unpacked vectors.
QUORLAN_AVX2_INLINE __m256 JoinLower(__m256 a, __m256 b) {
    return _mm256_castpd_ps(_mm256_unpacklo_pd(_mm256_castps_pd(a), _mm256_castps_pd(b)));
}
QUORLAN_AVX2_INLINE __m256 JoinUpper(__m256 a, __m256 b) {
    return _mm256_castpd_ps(_mm256_unpackhi_pd(_mm256_castps_pd(a), _mm256_castps_pd(b)));
}

/// Two float triples that follow one another `offset` bytes into each of eight records.
QUORLAN_AVX2_INLINE void LoadTriples(Record const* r, std::size_t offset, Floats& first, Floats& second) {
    __m256 const a = LoadFloats(r[0] + offset, r[4] + offset);  // first.xyz, second.x
    __m256 const b = LoadFloats(r[1] + offset, r[5] + offset);
    __m256 const c = LoadFloats(r[2] + offset, r[6] + offset);
    __m256 const d = LoadFloats(r[3] + offset, r[7] + offset);
    first.x = JoinLower(_mm256_unpacklo_ps(a, b), _mm256_unpacklo_ps(c, d));
    first.y = JoinUpper(_mm256_unpacklo_ps(a, b), _mm256_unpacklo_ps(c, d));
    first.z = JoinLower(_mm256_unpackhi_ps(a, b), _mm256_unpackhi_ps(c, d));
    second.x = JoinUpper(_mm256_unpackhi_ps(a, b), _mm256_unpackhi_ps(c, d));
    __m256 const e = LoadFloats(r[0] + offset + 8, r[4] + offset + 8);  // first.z, second.xyz
    __m256 const f = LoadFloats(r[1] + offset + 8, r[5] + offset + 8);
    __m256 const g = LoadFloats(r[2] + offset + 8, r[6] + offset + 8);
    __m256 const h = LoadFloats(r[3] + offset + 8, r[7] + offset + 8);
    second.y = JoinLower(_mm256_unpackhi_ps(e, f), _mm256_unpackhi_ps(g, h));
    second.z = JoinUpper(_mm256_unpackhi_ps(e, f), _mm256_unpackhi_ps(g, h));
}

/// Divides three axes by their lengths; axes of exactly unit length are the result already.
QUORLAN_AVX2_INLINE void Normalize(Floats& x, Floats& y, Floats& z) {
    __m256 const xSquared = Dot(x, x);
    __m256 const ySquared = Dot(y, y);
    __m256 const zSquared = Dot(z, z);
    __m256 const one = _mm256_set1_ps(1);
    __m256 const areOne =
        _mm256_and_ps(_mm256_and_ps(_mm256_cmp_ps(xSquared, one, _CMP_EQ_OQ), _mm256_cmp_ps(ySquared, one, _CMP_EQ_OQ)),
                      _mm256_cmp_ps(zSquared, one, _CMP_EQ_OQ));
    if (_mm256_movemask_ps(areOne) == 0xFF) return;
    x = Divide(x, _mm256_sqrt_ps(xSquared));
    y = Divide(y, _mm256_sqrt_ps(ySquared));
    z = Divide(z, _mm256_sqrt_ps(zSquared));
}

QUORLAN_AVX2_INLINE void Normalize(Vectors& x, Vectors& y, Vectors& z) {
    __m256d const xSquared = Dot(x, x);
    __m256d const ySquared = Dot(y, y);
    __m256d const zSquared = Dot(z, z);
    __m256d const one = _mm256_set1_pd(1);
    __m256d const areOne =
        _mm256_and_pd(_mm256_and_pd(_mm256_cmp_pd(xSquared, one, _CMP_EQ_OQ), _mm256_cmp_pd(ySquared, one, _CMP_EQ_OQ)),
                      _mm256_cmp_pd(zSquared, one, _CMP_EQ_OQ));
    if (_mm256_movemask_pd(areOne) == 0xF) return;
    x = Divide(x, _mm256_sqrt_pd(xSquared));
    y = Divide(y, _mm256_sqrt_pd(ySquared));
    z = Divide(z, _mm256_sqrt_pd(zSquared));
}

/// Eight frames with axes in single precision.
struct Frames {
    Vectors lowerOrigin, upperOrigin;
    Floats x, y, z;
};

QUORLAN_AVX2_INLINE Frames LoadFrames(Record const* placements) {
    Frames frames;
    frames.lowerOrigin = LoadOrigins(placements, 0);
    frames.upperOrigin = LoadOrigins(placements + 4, 0);
    LoadTriples(placements, kAxes, frames.x, frames.y);
    frames.z = Cross(frames.x, frames.y);
    Normalize(frames.x, frames.y, frames.z);
    return frames;
}

QUORLAN_AVX2_INLINE Floats Turn(Floats const& x, Floats const& y, Floats const& z, Floats const& v) {
    return {x.x * v.x + y.x * v.y + z.x * v.z, x.y * v.x + y.y * v.y + z.y * v.z, x.z * v.x + y.z * v.y + z.z * v.z};
}

/// Applies `b` first, then `a`.
QUORLAN_AVX2_INLINE Frames Compose(Frames const& a, Frames const& b) {
    return {Place(a.lowerOrigin, WidenLower(a.x), WidenLower(a.y), WidenLower(a.z), b.lowerOrigin),
            Place(a.upperOrigin, WidenUpper(a.x), WidenUpper(a.y), WidenUpper(a.z), b.upperOrigin),
            Turn(a.x, a.y, a.z, b.x), Turn(a.x, a.y, a.z, b.y), Turn(a.x, a.y, a.z, b.z)};
}

QUORLAN_AVX2_INLINE Floats BroadcastFloats(float const* v) {
    return {_mm256_set1_ps(v[0]), _mm256_set1_ps(v[1]), _mm256_set1_ps(v[2])};
}

/// Writes lane i of `a` and of `b` to out[i * stride] and the place behind it.
QUORLAN_AVX2_INLINE void StorePairs(__m256d a, __m256d b, double* out, std::size_t stride) {
    __m256d const even = _mm256_unpacklo_pd(a, b);
    __m256d const odd = _mm256_unpackhi_pd(a, b);
    _mm_storeu_pd(out, _mm256_castpd256_pd128(even));
    _mm_storeu_pd(out + stride, _mm256_castpd256_pd128(odd));
    _mm_storeu_pd(out + 2 * stride, _mm256_extractf128_pd(even, 1));
    _mm_storeu_pd(out + 3 * stride, _mm256_extractf128_pd(odd, 1));
}

QUORLAN_AVX2_INLINE void StoreBoxes(Vectors const& lowerEnd, Vectors const& upperEnd, Vectors const& origin,
                                    double* out) {
    __m256d const half = _mm256_set1_pd(0.5);  // the bits of a division by 2
    Vectors const lower{lowerEnd.x + origin.x, lowerEnd.y + origin.y, lowerEnd.z + origin.z};
    Vectors const upper{upperEnd.x + origin.x, upperEnd.y + origin.y, upperEnd.z + origin.z};
    StorePairs((upper.x + lower.x) * half, (upper.y + lower.y) * half, out, 6);
    StorePairs((upper.z + lower.z) * half, (upper.x - lower.x) * half, out + 2, 6);
    StorePairs((upper.y - lower.y) * half, (upper.z - lower.z) * half, out + 4, 6);
}

QUORLAN_AVX2_INLINE void TransformBoxes(Frames const& frames, Floats const& lo, Floats const& hi, double* out) {
    Floats const& x = frames.x;
    Floats const& y = frames.y;
    Floats const& z = frames.z;
    Floats const lower{Min(x.x * lo.x, x.x * hi.x) + Min(y.x * lo.y, y.x * hi.y) + Min(z.x * lo.z, z.x * hi.z),
                       Min(x.y * lo.x, x.y * hi.x) + Min(y.y * lo.y, y.y * hi.y) + Min(z.y * lo.z, z.y * hi.z),
                       Min(x.z * lo.x, x.z * hi.x) + Min(y.z * lo.y, y.z * hi.y) + Min(z.z * lo.z, z.z * hi.z)};
    Floats const upper{Max(x.x * lo.x, x.x * hi.x) + Max(y.x * lo.y, y.x * hi.y) + Max(z.x * lo.z, z.x * hi.z),
                       Max(x.y * lo.x, x.y * hi.x) + Max(y.y * lo.y, y.y * hi.y) + Max(z.y * lo.z, z.y * hi.z),
                       Max(x.z * lo.x, x.z * hi.x) + Max(y.z * lo.y, y.z * hi.y) + Max(z.z * lo.z, z.z * hi.z)};
    StoreBoxes(WidenLower(lower), WidenLower(upper), frames.lowerOrigin, out);
    StoreBoxes(WidenUpper(lower), WidenUpper(upper), frames.upperOrigin, out + 4 * 6);
}

QUORLAN_AVX2_INLINE std::uint32_t const* GetInstance(InstanceBytes const& bytes, std::size_t index) {
    return reinterpret_cast<std::uint32_t const*>(bytes.instances + index * InstanceLayout::kInstanceSize);
}
QUORLAN_AVX2_INLINE Record GetPlacement(InstanceBytes const& bytes, std::uint32_t const* instance) {
    return bytes.placements + instance[0] * InstanceLayout::kPlacementSize;
}
QUORLAN_AVX2_INLINE Record GetEntityPlacement(InstanceBytes const& bytes, std::uint32_t const* instance) {
    return bytes.entities + instance[1] * InstanceLayout::kEntitySize + InstanceLayout::kEntityPlacement;
}
QUORLAN_AVX2_INLINE Record GetBounds(InstanceBytes const& bytes, std::uint32_t const* instance) {
    return bytes.definitions + instance[2] * InstanceLayout::kDefinitionSize + InstanceLayout::kDefinitionBounds;
}

/// How many instances ahead their own records are fetched, so that what they name is known when it is to be fetched.
constexpr std::size_t kInstanceDistance = 3 * kAvx2PrefetchDistance;

constexpr std::size_t kLastOfPlacement = InstanceLayout::kPlacementSize - 1;

QUORLAN_AVX2_INLINE void Prefetch(void const* address) {
    _mm_prefetch(reinterpret_cast<char const*>(address), _MM_HINT_T0);
}

/// What `count` doubles are stored to some time later. Without this, stores wait for the lines that they overwrite.
QUORLAN_AVX2_INLINE void PrefetchResults(double const* results, std::size_t count) {
    for (std::size_t i = 0; i < count; i += 8) Prefetch(results + i);
}

/// Four double frames.
struct WideFrames {
    Vectors origin, x, y, z;
};

QUORLAN_AVX2_INLINE WideFrames LoadWideFrames(Record const* placements) {
    WideFrames frames;
    frames.origin = LoadOrigins(placements, 0);
    LoadWideTriples(placements, kAxes, frames.x, frames.y);
    frames.z = Cross(frames.x, frames.y);
    frames.y = Cross(frames.z, frames.x);
    Normalize(frames.x, frames.y, frames.z);
    return frames;
}

/// Applies `b` first, then `a`.
QUORLAN_AVX2_INLINE WideFrames Compose(WideFrames const& a, WideFrames const& b) {
    return {Place(a.origin, a.x, a.y, a.z, b.origin), Turn(a.x, a.y, a.z, b.x), Turn(a.x, a.y, a.z, b.y),
            Turn(a.x, a.y, a.z, b.z)};
}

QUORLAN_AVX2_INLINE void StoreRow(__m256d x, __m256d y, __m256d z, __m256d origin, double* out) {
    StorePairs(x, y, out, 16);
    StorePairs(z, origin, out + 2, 16);
}

QUORLAN_AVX2_INLINE void StoreMatrices(WideFrames const& frames, double* out) {
    StoreRow(frames.x.x, frames.y.x, frames.z.x, frames.origin.x, out);
    StoreRow(frames.x.y, frames.y.y, frames.z.y, frames.origin.y, out + 4);
    StoreRow(frames.x.z, frames.y.z, frames.z.z, frames.origin.z, out + 8);
    __m256d const lastRow = _mm256_setr_pd(0, 0, 0, 1);
    for (std::size_t i = 0; i < 4; ++i) _mm256_storeu_pd(out + 16 * i + 12, lastRow);
}

/// The products transform * frame, with the terms of the frames' last row (0, 0, 0, 1) in their places.
QUORLAN_AVX2_INLINE void StoreProducts(double const* transform, WideFrames const& frames, double* out) {
    for (std::size_t row = 0; row < 4; ++row) {
        double const* const t = transform + 4 * row;
        Vectors const factors{_mm256_set1_pd(t[0]), _mm256_set1_pd(t[1]), _mm256_set1_pd(t[2])};
        __m256d const withZero = _mm256_set1_pd(t[3] * 0.0);
        __m256d const withOne = _mm256_set1_pd(t[3]);
        StoreRow(Dot(factors, frames.x) + withZero, Dot(factors, frames.y) + withZero,
                 Dot(factors, frames.z) + withZero, Dot(factors, frames.origin) + withOne, out + 4 * row);
    }
}

}  // namespace

QUORLAN_AVX2 void ComputeBoxesAvx2(InstanceBytes const& bytes, double const (&callerOrigin)[3],
                                   float const (&callerAxes)[9], std::size_t first, std::size_t count, double* out,
                                   double const* destination) {
    Vectors const origin{_mm256_set1_pd(callerOrigin[0]), _mm256_set1_pd(callerOrigin[1]),
                         _mm256_set1_pd(callerOrigin[2])};
    Frames const caller{origin, origin, BroadcastFloats(callerAxes), BroadcastFloats(callerAxes + 3),
                        BroadcastFloats(callerAxes + 6)};
    for (std::size_t i = 0; i < count; i += 8) {
        Record placements[8];
        Record entities[8];
        Record bounds[8];
        for (std::size_t lane = 0; lane < 8; ++lane) {
            if (lane % 4 == 0) Prefetch(GetInstance(bytes, first + i + lane + kInstanceDistance));
            std::uint32_t const* const instance = GetInstance(bytes, first + i + lane);
            placements[lane] = GetPlacement(bytes, instance);
            entities[lane] = GetEntityPlacement(bytes, instance);
            bounds[lane] = GetBounds(bytes, instance);
            std::uint32_t const* const later = GetInstance(bytes, first + i + lane + kAvx2PrefetchDistance);
            Prefetch(GetPlacement(bytes, later));
            Prefetch(GetEntityPlacement(bytes, later));
            Prefetch(GetEntityPlacement(bytes, later) + kLastOfPlacement);
            Prefetch(GetBounds(bytes, later));
        }
        Frames const world = Compose(caller, Compose(LoadFrames(entities), LoadFrames(placements)));
        Floats lo;
        Floats hi;
        LoadTriples(bounds, 0, lo, hi);
        PrefetchResults(destination + 6 * (i + kAvx2PrefetchDistance), 6 * 8);
        TransformBoxes(world, lo, hi, out + 6 * i);
    }
}

QUORLAN_AVX2 void ComputePlacementsAvx2(InstanceBytes const& bytes, double const* transform, std::size_t first,
                                        std::size_t count, double* out, double const* destination) {
    for (std::size_t i = 0; i < count; i += 4) {
        Record placements[4];
        Record entities[4];
        for (std::size_t lane = 0; lane < 4; ++lane) {
            if (lane % 4 == 0) Prefetch(GetInstance(bytes, first + i + lane + kInstanceDistance));
            std::uint32_t const* const instance = GetInstance(bytes, first + i + lane);
            placements[lane] = GetPlacement(bytes, instance);
            entities[lane] = GetEntityPlacement(bytes, instance);
            std::uint32_t const* const later = GetInstance(bytes, first + i + lane + kAvx2PrefetchDistance);
            Prefetch(GetPlacement(bytes, later));
            Prefetch(GetPlacement(bytes, later) + kLastOfPlacement);
            Prefetch(GetEntityPlacement(bytes, later));
            Prefetch(GetEntityPlacement(bytes, later) + kLastOfPlacement);
        }
        WideFrames const world = Compose(LoadWideFrames(entities), LoadWideFrames(placements));
        PrefetchResults(destination + 16 * (i + kAvx2PrefetchDistance), 16 * 4);
        if (transform == nullptr) {
            StoreMatrices(world, out + 16 * i);
        } else {
            StoreProducts(transform, world, out + 16 * i);
        }
    }
}

}  // namespace Quorlan

#endif
