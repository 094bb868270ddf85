#pragma once

#include "geometry/Lanes.h"

#include <cstdint>
#include <cstring>

/// Moves between lanes, and single vectors in lanes: x, y, z in lanes 0 to 2.
namespace GeometryObjectLib {

#if QUORLAN_HAS_SSE2

template <int Lane>
Float4 Broadcast(Float4 a) {
    return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(Lane, Lane, Lane, Lane));
}

/// The shuffle of integers, unlike that of floats, leaves its operand where it is: one instruction less.
inline Float4 Yzx(Float4 a) {
    return _mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(a.v), _MM_SHUFFLE(3, 0, 2, 1)));
}

/// Every lane moves one up, the last becomes the first.
inline Float4 Rotate(Float4 a) {
    return _mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(a.v), _MM_SHUFFLE(2, 1, 0, 3)));
}

/// `a` with the first lane of `b`.
inline Float4 WithFirstOf(Float4 a, Float4 b) { return _mm_move_ss(a.v, b.v); }

/// One bit per lane, lane 0 lowest.
inline int GetBits(Mask4 a) { return _mm_movemask_ps(a.v); }

/// Four vectors, component by component; of each the last lane is dropped.
inline VectorLanes<Float4> Transpose(Float4 a, Float4 b, Float4 c, Float4 d) {
    _MM_TRANSPOSE4_PS(a.v, b.v, c.v, d.v);
    return {a, b, c};
}

/// Three floats and 0. REQUIRES: the four bytes before them may be read.
inline Float4 LoadTriple(std::uint8_t const* triple) {
    return _mm_castsi128_ps(_mm_srli_si128(_mm_loadu_si128(reinterpret_cast<__m128i const*>(triple - 4)), 4));
}

/// Four vectors of three floats each, one behind the other.
inline VectorLanes<Float4> LoadTriples(float const* triples) {
    __m128 const xyzx = _mm_loadu_ps(triples);
    __m128 const yzxy = _mm_loadu_ps(triples + 4);
    __m128 const zxyz = _mm_loadu_ps(triples + 8);
    __m128 const yzyz = _mm_shuffle_ps(xyzx, yzxy, _MM_SHUFFLE(1, 0, 2, 1));  // of the first two
    __m128 const xyxy = _mm_shuffle_ps(yzxy, zxyz, _MM_SHUFFLE(2, 1, 3, 2));  // of the last two
    return {_mm_shuffle_ps(xyzx, xyxy, _MM_SHUFFLE(2, 0, 3, 0)), _mm_shuffle_ps(yzyz, xyxy, _MM_SHUFFLE(3, 1, 2, 0)),
            _mm_shuffle_ps(yzyz, zxyz, _MM_SHUFFLE(3, 0, 3, 1))};
}

#else

template <int Lane>
Float4 Broadcast(Float4 const& a) {
    return Float4(a.lane[Lane]);
}
inline Float4 Yzx(Float4 const& a) { return {a.lane[1], a.lane[2], a.lane[0], a.lane[3]}; }
inline Float4 Rotate(Float4 const& a) { return {a.lane[3], a.lane[0], a.lane[1], a.lane[2]}; }
inline Float4 WithFirstOf(Float4 const& a, Float4 const& b) { return {b.lane[0], a.lane[1], a.lane[2], a.lane[3]}; }

inline int GetBits(Mask4 const& a) {
    int bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (a.lane[i] ? 1 : 0) << i;
    return bits;
}

inline VectorLanes<Float4> Transpose(Float4 const& a, Float4 const& b, Float4 const& c, Float4 const& d) {
    return {{a.lane[0], b.lane[0], c.lane[0], d.lane[0]},
            {a.lane[1], b.lane[1], c.lane[1], d.lane[1]},
            {a.lane[2], b.lane[2], c.lane[2], d.lane[2]}};
}

inline Float4 LoadTriple(std::uint8_t const* triple) {
    float v[3];
    std::memcpy(v, triple, sizeof(v));
    return {v[0], v[1], v[2], 0};
}

inline VectorLanes<Float4> LoadTriples(float const* v) {
    return {{v[0], v[3], v[6], v[9]}, {v[1], v[4], v[7], v[10]}, {v[2], v[5], v[8], v[11]}};
}

#endif

}  // namespace GeometryObjectLib
