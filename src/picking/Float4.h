#pragma once

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#if defined(__SSE2__) || defined(_M_X64)
#define QUORLAN_HAS_SSE2 1
#include <emmintrin.h>
#else
#include <array>
#include <cmath>
#endif

/// Four floats that are computed with together. Both forms do the same single-precision operations, lane by lane, so
/// that results do not depend on the machine. Comparisons give one bit per lane, lane 0 lowest; a NaN compares false.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

#if defined(QUORLAN_HAS_SSE2)

struct Float4 {
    __m128 lanes;

    Float4(__m128 v) : lanes(v) {}
    explicit Float4(float all) : lanes(_mm_set1_ps(all)) {}
    Float4(float x, float y, float z, float w) : lanes(_mm_setr_ps(x, y, z, w)) {}

    template <int Lane>
    Float4 Broadcast() const {
        return _mm_shuffle_ps(lanes, lanes, _MM_SHUFFLE(Lane, Lane, Lane, Lane));
    }
    Float4 GetYzx() const { return _mm_shuffle_ps(lanes, lanes, _MM_SHUFFLE(3, 0, 2, 1)); }
    Float4 GetZxy() const { return _mm_shuffle_ps(lanes, lanes, _MM_SHUFFLE(3, 1, 0, 2)); }
    Float4 GetAbs() const { return _mm_andnot_ps(_mm_set1_ps(-0.0f), lanes); }
    void Store(float (&out)[4]) const { _mm_storeu_ps(out, lanes); }
};

inline Float4 operator+(Float4 a, Float4 b) { return _mm_add_ps(a.lanes, b.lanes); }
inline Float4 operator-(Float4 a, Float4 b) { return _mm_sub_ps(a.lanes, b.lanes); }
inline Float4 operator*(Float4 a, Float4 b) { return _mm_mul_ps(a.lanes, b.lanes); }
inline int GreaterBits(Float4 a, Float4 b) { return _mm_movemask_ps(_mm_cmpgt_ps(a.lanes, b.lanes)); }
inline int GreaterEqualBits(Float4 a, Float4 b) { return _mm_movemask_ps(_mm_cmpge_ps(a.lanes, b.lanes)); }

/// The sums and the differences of a node's bounds per axis, in grid cells. Lane 3 is of no meaning.
inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    __m128i const bits = _mm_loadu_si128(reinterpret_cast<__m128i const*>(&node));
    __m128i const lower = _mm_and_si128(bits, _mm_set1_epi32(0xFFFF));
    __m128i const upper = _mm_srli_epi32(bits, 16);
    sum.lanes = _mm_cvtepi32_ps(_mm_add_epi32(lower, upper));
    difference.lanes = _mm_cvtepi32_ps(_mm_sub_epi32(upper, lower));
}

#else

struct Float4 {
    std::array<float, 4> lanes;

    explicit Float4(float all) : lanes{all, all, all, all} {}
    Float4(float x, float y, float z, float w) : lanes{x, y, z, w} {}

    template <int Lane>
    Float4 Broadcast() const {
        return Float4(lanes[Lane]);
    }
    Float4 GetYzx() const { return {lanes[1], lanes[2], lanes[0], lanes[3]}; }
    Float4 GetZxy() const { return {lanes[2], lanes[0], lanes[1], lanes[3]}; }
    Float4 GetAbs() const { return {std::abs(lanes[0]), std::abs(lanes[1]), std::abs(lanes[2]), std::abs(lanes[3])}; }
    void Store(float (&out)[4]) const {
        for (int i = 0; i < 4; ++i) out[i] = lanes[i];
    }
};

inline Float4 operator+(Float4 const& a, Float4 const& b) {
    return {a.lanes[0] + b.lanes[0], a.lanes[1] + b.lanes[1], a.lanes[2] + b.lanes[2], a.lanes[3] + b.lanes[3]};
}
inline Float4 operator-(Float4 const& a, Float4 const& b) {
    return {a.lanes[0] - b.lanes[0], a.lanes[1] - b.lanes[1], a.lanes[2] - b.lanes[2], a.lanes[3] - b.lanes[3]};
}
inline Float4 operator*(Float4 const& a, Float4 const& b) {
    return {a.lanes[0] * b.lanes[0], a.lanes[1] * b.lanes[1], a.lanes[2] * b.lanes[2], a.lanes[3] * b.lanes[3]};
}
inline int GreaterBits(Float4 const& a, Float4 const& b) {
    int bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (a.lanes[i] > b.lanes[i] ? 1 : 0) << i;
    return bits;
}
inline int GreaterEqualBits(Float4 const& a, Float4 const& b) {
    int bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (a.lanes[i] >= b.lanes[i] ? 1 : 0) << i;
    return bits;
}

inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    auto const add = [](int a, int b) { return static_cast<float>(a + b); };
    sum = {add(node.minX, node.maxX), add(node.minY, node.maxY), add(node.minZ, node.maxZ), 0};
    difference = {add(node.maxX, -node.minX), add(node.maxY, -node.minY), add(node.maxZ, -node.minZ), 0};
}

#endif

}  // namespace Quorlan::Tools::Picking
