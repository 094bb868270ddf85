#include "analysis/BoxTreeWriter.h"

#include "geometry/Lanes.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Quorlan {
namespace {

using GeometryObjectLib::Float4;
using Node = GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

/// What is known of a range of items besides its ends: the sum of its centres, if its items were just put in order.
struct RangeSum {
    bool isKnown = false;
    Float4 sum;
};

#if QUORLAN_HAS_SSE2

/// Clears the last lane: an instance there would be a denormal number, with which products and quotients are slow.
Float4 KeepCenter(Float4 const& lanes) { return _mm_and_ps(lanes.v, _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0))); }

Float4 CenterOf(BoxTreeItem const& item) { return KeepCenter(_mm_load_ps(item.center)); }

/// Moves every item beyond the mean to the front, in order, by swaps; returns the first of the others, and the sum of
/// the moved centres in `moved`. Whether an item moves is as good as random, so that there is no branch on it: an item
/// that stays is swapped with itself and adds zero to the sum.
template <int kAxis>
BoxTreeItem* PartitionAlong(BoxTreeItem* begin, BoxTreeItem* end, Float4 const& mean, Float4& moved) {
    __m128 sum = _mm_setzero_ps();
    BoxTreeItem* split = begin;
    for (BoxTreeItem* item = begin; item != end; ++item) {
        __m128 const current = _mm_load_ps(item->center);
        __m128 const isBeyond = _mm_cmpgt_ps(current, mean.v);
        __m128 const moves = _mm_shuffle_ps(isBeyond, isBeyond, _MM_SHUFFLE(kAxis, kAxis, kAxis, kAxis));
        std::ptrdiff_t const mask = _mm_cvtsi128_si64(_mm_castps_si128(moves));  // 0 or -1
        BoxTreeItem* const target = item + ((split - item) & mask);
        _mm_store_ps(item->center, _mm_load_ps(target->center));
        _mm_store_ps(target->center, current);
        split -= mask;
        sum = _mm_add_ps(sum, _mm_and_ps(current, moves));
    }
    moved = sum;
    return split;
}

/// A node's box, folded so that one signed minimum makes a union: the lower corners are shifted to the signed range,
/// the upper corners mirrored as well.
class NodeBox {
public:
    explicit NodeBox(Node const& node)
        : folded_(_mm_xor_si128(_mm_loadu_si128(reinterpret_cast<__m128i const*>(&node)), Fold())) {}

    friend NodeBox Union(NodeBox a, NodeBox b) { return NodeBox(_mm_min_epi16(a.folded_, b.folded_)); }

    void Store(Node& node) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&node), _mm_xor_si128(folded_, Fold()));
    }

private:
    explicit NodeBox(__m128i folded) : folded_(folded) {}

    static __m128i Fold() { return _mm_setr_epi32(0x7FFF8000, 0x7FFF8000, 0x7FFF8000, 0); }

    __m128i folded_;
};

#else

Float4 KeepCenter(Float4 const& lanes) { return lanes; }

Float4 CenterOf(BoxTreeItem const& item) { return {item.center[0], item.center[1], item.center[2], 0}; }

/// Moves every item beyond the mean to the front, in order, by swaps; returns the first of the others, and the sum of
/// the moved centres in `moved`.
template <int kAxis>
BoxTreeItem* PartitionAlong(BoxTreeItem* begin, BoxTreeItem* end, Float4 const& mean, Float4& moved) {
    moved = Float4(0.0f);
    BoxTreeItem* split = begin;
    for (BoxTreeItem* item = begin; item != end; ++item) {
        if (!(item->center[kAxis] > mean.lane[kAxis])) continue;
        moved = moved + CenterOf(*item);
        std::swap(*item, *split++);
    }
    return split;
}

class NodeBox {
public:
    explicit NodeBox(Node const& node) : node_(node) {}

    friend NodeBox Union(NodeBox const& a, NodeBox const& b) {
        Node both;
        both.minX = std::min(a.node_.minX, b.node_.minX);
        both.maxX = std::max(a.node_.maxX, b.node_.maxX);
        both.minY = std::min(a.node_.minY, b.node_.minY);
        both.maxY = std::max(a.node_.maxY, b.node_.maxY);
        both.minZ = std::min(a.node_.minZ, b.node_.minZ);
        both.maxZ = std::max(a.node_.maxZ, b.node_.maxZ);
        return NodeBox(both);
    }

    void Store(Node& node) const { node = node_; }

private:
    Node node_;
};

#endif

/// The axis of the greatest variance; ties go to the later axis, and so does a variance that is not a number.
int SelectAxis(float const (&variance)[4]) {
    if (variance[0] > variance[1]) return variance[0] > variance[2] ? 0 : 2;
    return variance[1] > variance[2] ? 1 : 2;
}

BoxTreeItem* Partition(BoxTreeItem* begin, BoxTreeItem* end, int axis, Float4 const& mean, Float4& moved) {
    if (axis == 0) return PartitionAlong<0>(begin, end, mean, moved);
    if (axis == 1) return PartitionAlong<1>(begin, end, mean, moved);
    return PartitionAlong<2>(begin, end, mean, moved);
}

/// Splits a range of at least three items and gives the sum of the left part where it is known. All sums run in the
/// order of the items, in single precision: the tree depends on their last bits.
BoxTreeItem* Split(BoxTreeItem* begin, BoxTreeItem* end, RangeSum const& known, RangeSum& left) {
    std::ptrdiff_t const count = end - begin;
    Float4 sum(0.0f);
    if (known.isKnown) {
        sum = known.sum;
    } else {
        for (BoxTreeItem const* item = begin; item != end; ++item) sum = sum + CenterOf(*item);
    }
    Float4 const mean = KeepCenter(sum) / Float4(static_cast<float>(count));

    Float4 variance(0.0f);
    for (BoxTreeItem const* item = begin; item != end; ++item) {
        Float4 const difference = CenterOf(*item) - mean;
        variance = variance + difference * difference;
    }
    float variances[4];
    Store(variance, variances);
    BoxTreeItem* const split = Partition(begin, end, SelectAxis(variances), mean, left.sum);
    std::ptrdiff_t const margin = count / 3;
    left.isKnown = split - begin > margin && split - begin < count - margin - 1;
    return left.isKnown ? split : begin + count / 2;
}

class TreeWriter {
public:
    explicit TreeWriter(Node const* leaves) : leaves_(leaves) {}

    /// Writes the subtree over the range from `node` on and returns its box.
    NodeBox Write(BoxTreeItem* begin, BoxTreeItem* end, Node* node, RangeSum const& known) const {
        std::ptrdiff_t const count = end - begin;
        if (count == 1) return WriteLeaf(*begin, node);
        if (count == 2) return WriteInner(count, WriteLeaf(begin[0], node + 1), WriteLeaf(begin[1], node + 2), node);

        RangeSum leftSum;
        BoxTreeItem* const split = Split(begin, end, known, leftSum);
        NodeBox const left = Write(begin, split, node + 1, leftSum);
        NodeBox const right = Write(split, end, node + 2 * (split - begin), {});
        return WriteInner(count, left, right, node);
    }

private:
    NodeBox WriteLeaf(BoxTreeItem const& item, Node* node) const {
        *node = leaves_[item.instance];
        return NodeBox(*node);
    }

    static NodeBox WriteInner(std::ptrdiff_t count, NodeBox const& left, NodeBox const& right, Node* node) {
        NodeBox const box = Union(left, right);
        box.Store(*node);
        node->escapeOrItem = static_cast<std::int32_t>(1 - 2 * count);
        return box;
    }

    Node const* leaves_;
};

}  // namespace

void WriteBoxTree(std::vector<BoxTreeItem>& items, std::vector<Node> const& leaves, Node* nodes) {
    TreeWriter(leaves.data()).Write(items.data(), items.data() + items.size(), nodes, {});
}

}  // namespace Quorlan
