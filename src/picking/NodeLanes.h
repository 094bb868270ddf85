#pragma once

#include "geometry/LaneMoves.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

/// The boxes of tree nodes as vectors in lanes.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Broadcast;
using GeometryObjectLib::Float4;
using GeometryObjectLib::GetBits;
using GeometryObjectLib::Mask4;
using GeometryObjectLib::Yzx;

using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

#if QUORLAN_HAS_SSE2

/// The sums and the differences of a node's bounds per axis, in grid cells. Lane 3 is of no meaning.
inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    __m128i const bits = _mm_loadu_si128(reinterpret_cast<__m128i const*>(&node));
    __m128i const lower = _mm_and_si128(bits, _mm_set1_epi32(0xFFFF));
    __m128i const upper = _mm_srli_epi32(bits, 16);
    sum = _mm_cvtepi32_ps(_mm_add_epi32(lower, upper));
    difference = _mm_cvtepi32_ps(_mm_sub_epi32(upper, lower));
}

#else

inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    auto const add = [](int a, int b) { return static_cast<float>(a + b); };
    sum = {add(node.minX, node.maxX), add(node.minY, node.maxY), add(node.minZ, node.maxZ), 0};
    difference = {add(node.maxX, -node.minX), add(node.maxY, -node.minY), add(node.maxZ, -node.minZ), 0};
}

#endif

}  // namespace Quorlan::Tools::Picking
