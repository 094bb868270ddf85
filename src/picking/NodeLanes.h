#pragma once

#include "geometry/Lanes.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

/// Vectors in the lanes of `geometry/Lanes.h`, x, y, z in lanes 0 to 2, and the boxes of tree nodes as such.
/// Comparisons give one bit per lane, lane 0 lowest; a NaN compares false.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Float4;
using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

#if QUORLAN_HAS_SSE2

template <int Lane>
Float4 Broadcast(Float4 a) {
    return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(Lane, Lane, Lane, Lane));
}
inline Float4 Yzx(Float4 a) { return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(3, 0, 2, 1)); }
inline Float4 Zxy(Float4 a) { return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(3, 1, 0, 2)); }
inline int GreaterBits(Float4 a, Float4 b) { return _mm_movemask_ps(_mm_cmpgt_ps(a.v, b.v)); }
inline int GreaterEqualBits(Float4 a, Float4 b) { return _mm_movemask_ps(_mm_cmpge_ps(a.v, b.v)); }

/// The sums and the differences of a node's bounds per axis, in grid cells. Lane 3 is of no meaning.
inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    __m128i const bits = _mm_loadu_si128(reinterpret_cast<__m128i const*>(&node));
    __m128i const lower = _mm_and_si128(bits, _mm_set1_epi32(0xFFFF));
    __m128i const upper = _mm_srli_epi32(bits, 16);
    sum = _mm_cvtepi32_ps(_mm_add_epi32(lower, upper));
    difference = _mm_cvtepi32_ps(_mm_sub_epi32(upper, lower));
}

#else

template <int Lane>
Float4 Broadcast(Float4 const& a) {
    return Float4(a.lane[Lane]);
}
inline Float4 Yzx(Float4 const& a) { return {a.lane[1], a.lane[2], a.lane[0], a.lane[3]}; }
inline Float4 Zxy(Float4 const& a) { return {a.lane[2], a.lane[0], a.lane[1], a.lane[3]}; }
inline int GreaterBits(Float4 const& a, Float4 const& b) {
    int bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (a.lane[i] > b.lane[i] ? 1 : 0) << i;
    return bits;
}
inline int GreaterEqualBits(Float4 const& a, Float4 const& b) {
    int bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (a.lane[i] >= b.lane[i] ? 1 : 0) << i;
    return bits;
}

inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    auto const add = [](int a, int b) { return static_cast<float>(a + b); };
    sum = {add(node.minX, node.maxX), add(node.minY, node.maxY), add(node.minZ, node.maxZ), 0};
    difference = {add(node.maxX, -node.minX), add(node.maxY, -node.minY), add(node.maxZ, -node.minZ), 0};
}

#endif

}  // namespace Quorlan::Tools::Picking
