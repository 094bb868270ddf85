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
using GeometryObjectLib::Yzx;

using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;
using GeometryObjectLib::QuantizedAxisAlignedBoxTreeQuad_s;

#if QUORLAN_HAS_SSE2

/// The sums and the differences of a node's bounds per axis, in grid cells. Lane 3 is of no meaning.
inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    __m128i const bits = _mm_loadu_si128(reinterpret_cast<__m128i const*>(&node));
    __m128i const lower = _mm_and_si128(bits, _mm_set1_epi32(0xFFFF));
    __m128i const upper = _mm_srli_epi32(bits, 16);
    sum = _mm_cvtepi32_ps(_mm_add_epi32(lower, upper));
    difference = _mm_cvtepi32_ps(_mm_sub_epi32(upper, lower));
}

/// Which of a node's two bounds per axis: how far it stands from the lowest bit.
using GridBound = __m128i;
inline GridBound GetBoundOf(bool isUpper) { return _mm_cvtsi32_si128(isUpper ? 16 : 0); }

/// Both bounds of four nodes, axis by axis, and their words.
struct NodeQuad {
    __m128i x;
    __m128i y;
    __m128i z;
    __m128i words;

    NodeQuad(QuantizedAxisAlignedBoxTreeNode_s const& a, QuantizedAxisAlignedBoxTreeNode_s const& b,
             QuantizedAxisAlignedBoxTreeNode_s const& c, QuantizedAxisAlignedBoxTreeNode_s const& d) {
        auto const load = [](QuantizedAxisAlignedBoxTreeNode_s const& node) {
            return _mm_loadu_si128(reinterpret_cast<__m128i const*>(&node));
        };
        __m128i const abXy = _mm_unpacklo_epi32(load(a), load(b));
        __m128i const abZw = _mm_unpackhi_epi32(load(a), load(b));
        __m128i const cdXy = _mm_unpacklo_epi32(load(c), load(d));
        __m128i const cdZw = _mm_unpackhi_epi32(load(c), load(d));
        x = _mm_unpacklo_epi64(abXy, cdXy);
        y = _mm_unpackhi_epi64(abXy, cdXy);
        z = _mm_unpacklo_epi64(abZw, cdZw);
        words = _mm_unpackhi_epi64(abZw, cdZw);
    }

    /// One bit per inner node.
    int GetInner() const { return _mm_movemask_ps(_mm_castsi128_ps(words)); }
};

/// One bound of four nodes on one axis, in grid cells.
inline Float4 ToFloats(__m128i bounds, GridBound bound) {
    return _mm_cvtepi32_ps(_mm_and_si128(_mm_srl_epi32(bounds, bound), _mm_set1_epi32(0xFFFF)));
}

inline Float4 ToFloats(std::uint16_t const (&bounds)[4]) {
    __m128i const narrow = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(bounds));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(narrow, _mm_setzero_si128()));
}

/// Which children of a quad are quads, one bit each, and the places of all four.
inline unsigned FindQuads(QuantizedAxisAlignedBoxTreeQuad_s const& quad, std::uint32_t (&places)[4]) {
    __m128i const child = _mm_load_si128(reinterpret_cast<__m128i const*>(quad.child));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(places), _mm_xor_si128(child, _mm_srai_epi32(child, 31)));
    return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(child)));
}

#else

inline void LoadNode(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4& sum, Float4& difference) {
    auto const add = [](int a, int b) { return static_cast<float>(a + b); };
    sum = {add(node.minX, node.maxX), add(node.minY, node.maxY), add(node.minZ, node.maxZ), 0};
    difference = {add(node.maxX, -node.minX), add(node.maxY, -node.minY), add(node.maxZ, -node.minZ), 0};
}

using GridBound = int;
inline GridBound GetBoundOf(bool isUpper) { return isUpper ? 1 : 0; }

struct NodeQuad {
    using Bounds = std::array<Float4, 2>;  // lower, upper

    Bounds x;
    Bounds y;
    Bounds z;
    int inner;

    NodeQuad(QuantizedAxisAlignedBoxTreeNode_s const& a, QuantizedAxisAlignedBoxTreeNode_s const& b,
             QuantizedAxisAlignedBoxTreeNode_s const& c, QuantizedAxisAlignedBoxTreeNode_s const& d)
        : x{Float4(a.minX, b.minX, c.minX, d.minX), Float4(a.maxX, b.maxX, c.maxX, d.maxX)},
          y{Float4(a.minY, b.minY, c.minY, d.minY), Float4(a.maxY, b.maxY, c.maxY, d.maxY)},
          z{Float4(a.minZ, b.minZ, c.minZ, d.minZ), Float4(a.maxZ, b.maxZ, c.maxZ, d.maxZ)},
          inner((a.escapeOrItem < 0 ? 1 : 0) | (b.escapeOrItem < 0 ? 2 : 0) | (c.escapeOrItem < 0 ? 4 : 0) |
                (d.escapeOrItem < 0 ? 8 : 0)) {}

    int GetInner() const { return inner; }
};

inline Float4 ToFloats(NodeQuad::Bounds const& bounds, GridBound bound) {
    return bounds[static_cast<std::size_t>(bound)];
}

inline Float4 ToFloats(std::uint16_t const (&bounds)[4]) { return Float4(bounds[0], bounds[1], bounds[2], bounds[3]); }

inline unsigned FindQuads(QuantizedAxisAlignedBoxTreeQuad_s const& quad, std::uint32_t (&places)[4]) {
    unsigned quads = 0;
    for (unsigned k = 0; k < 4; ++k) {
        bool const isQuad = quad.child[k] < 0;
        places[k] = static_cast<std::uint32_t>(isQuad ? ~quad.child[k] : quad.child[k]);
        quads |= (isQuad ? 1u : 0u) << k;
    }
    return quads;
}

#endif

}  // namespace Quorlan::Tools::Picking
