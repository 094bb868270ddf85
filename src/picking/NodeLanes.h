#pragma once

#include "geometry/LaneMoves.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// The boxes of tree nodes as vectors in lanes.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Broadcast;
using GeometryObjectLib::Float4;
using GeometryObjectLib::GetBits;
using GeometryObjectLib::Mask4;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Yzx;

using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;
using GeometryObjectLib::QuantizedAxisAlignedBoxTreeWideNode_s;

/// A bit for each child that a wide node has.
inline unsigned GetChildMask(QuantizedAxisAlignedBoxTreeWideNode_s const& wide) {
    return (2u << (wide.form >> 12 & 7)) - 1;
}

#if QUORLAN_HAS_SSE2

/// The sums and the differences of a node's bounds per axis, in grid cells. Lane 3 is of no meaning.
inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    __m128i const bits = _mm_loadu_si128(reinterpret_cast<__m128i const*>(&node));
    __m128i const lower = _mm_and_si128(bits, _mm_set1_epi32(0xFFFF));
    __m128i const upper = _mm_srli_epi32(bits, 16);
    sum = _mm_cvtepi32_ps(_mm_add_epi32(lower, upper));
    difference = _mm_cvtepi32_ps(_mm_sub_epi32(upper, lower));
}

/// One bound of a wide node's children.
inline void LoadSteps(std::uint8_t const (&bounds)[8], Float4& first, Float4& second) {
    __m128i const zero = _mm_setzero_si128();
    __m128i const narrow = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(bounds));
    __m128i const steps = _mm_unpacklo_epi8(narrow, zero);
    first = _mm_cvtepi32_ps(_mm_unpacklo_epi16(steps, zero));
    second = _mm_cvtepi32_ps(_mm_unpackhi_epi16(steps, zero));
}

/// Writes first + place for eight places, of which those that count come first.
inline void StorePlaces(std::uint32_t* out, std::uint32_t first, std::uint8_t const (&places)[8]) {
    __m128i const zero = _mm_setzero_si128();
    __m128i const base = _mm_set1_epi32(static_cast<int>(first));
    __m128i const wide = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(places)), zero);
    auto* const to = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(to, _mm_add_epi32(base, _mm_unpacklo_epi16(wide, zero)));
    _mm_storeu_si128(to + 1, _mm_add_epi32(base, _mm_unpackhi_epi16(wide, zero)));
}

#else

inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    auto const add = [](int a, int b) { return static_cast<float>(a + b); };
    sum = {add(node.minX, node.maxX), add(node.minY, node.maxY), add(node.minZ, node.maxZ), 0};
    difference = {add(node.maxX, -node.minX), add(node.maxY, -node.minY), add(node.maxZ, -node.minZ), 0};
}

inline void LoadSteps(std::uint8_t const (&bounds)[8], Float4& first, Float4& second) {
    first = {float(bounds[0]), float(bounds[1]), float(bounds[2]), float(bounds[3])};
    second = {float(bounds[4]), float(bounds[5]), float(bounds[6]), float(bounds[7])};
}

inline void StorePlaces(std::uint32_t* out, std::uint32_t first, std::uint8_t const (&places)[8]) {
    for (std::size_t i = 0; i < 8; ++i) out[i] = first + places[i];
}

#endif

}  // namespace Quorlan::Tools::Picking
