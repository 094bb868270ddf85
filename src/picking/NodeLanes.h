#pragma once

#include "geometry/Lanes.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

/// Vectors in the lanes of `geometry/Lanes.h`, x, y, z in lanes 0 to 2, and the boxes of tree nodes as such.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Float4;
using GeometryObjectLib::Mask4;
using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

#if QUORLAN_HAS_SSE2

template <int Lane>
Float4 Broadcast(Float4 a) {
    return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(Lane, Lane, Lane, Lane));
}

/// The shuffle of integers, unlike that of floats, leaves its operand where it is: one instruction less.
inline Float4 Yzx(Float4 a) {
    return _mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(a.v), _MM_SHUFFLE(3, 0, 2, 1)));
}

/// One bit per lane, lane 0 lowest.
inline int GetBits(Mask4 a) { return _mm_movemask_ps(a.v); }

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

inline int GetBits(Mask4 const& a) {
    int bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (a.lane[i] ? 1 : 0) << i;
    return bits;
}

inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    auto const add = [](int a, int b) { return static_cast<float>(a + b); };
    sum = {add(node.minX, node.maxX), add(node.minY, node.maxY), add(node.minZ, node.maxZ), 0};
    difference = {add(node.maxX, -node.minX), add(node.maxY, -node.minY), add(node.maxZ, -node.minZ), 0};
}

#endif

}  // namespace Quorlan::Tools::Picking
