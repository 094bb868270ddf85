#include "analysis/BoxTreeWriter.h"

#include "geometry/Lanes.h"

#include <cstddef>

namespace Quorlan {
namespace {

using GeometryObjectLib::Float4;
using Node = GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

#if QUORLAN_HAS_SSE2

Float4 CenterOf(BoxTreeItem const& item) {
    __m128 const isCenter = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    return _mm_and_ps(_mm_load_ps(item.center), isCenter);
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

Float4 CenterOf(BoxTreeItem const& item) { return {item.center[0], item.center[1], item.center[2], 0}; }

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
std::size_t SelectAxis(float const (&variance)[4]) {
    if (variance[0] > variance[1]) return variance[0] > variance[2] ? 0 : 2;
    return variance[1] > variance[2] ? 1 : 2;
}

/// Moves every item beyond the threshold to the front, in order, by swaps; returns the first of the others. Whether an
/// item moves is as good as random, so that there is no branch on it: an item that stays is swapped with itself.
BoxTreeItem* Partition(BoxTreeItem* begin, BoxTreeItem* end, std::size_t axis, float threshold) {
    BoxTreeItem* split = begin;
    for (BoxTreeItem* item = begin; item != end; ++item) {
        BoxTreeItem const current = *item;
        bool const moves = item->center[axis] > threshold;
        BoxTreeItem* const target = moves ? split : item;
        *item = *target;
        *target = current;
        split += moves;
    }
    return split;
}

/// Splits a range of at least three items. The sums run in the order of the items, in single precision: the tree
/// depends on their last bits.
BoxTreeItem* Split(BoxTreeItem* begin, BoxTreeItem* end) {
    std::ptrdiff_t const count = end - begin;
    Float4 sum(0.0f);
    for (BoxTreeItem const* item = begin; item != end; ++item) sum = sum + CenterOf(*item);
    Float4 const mean = sum / Float4(static_cast<float>(count));

    Float4 variance(0.0f);
    for (BoxTreeItem const* item = begin; item != end; ++item) {
        Float4 const difference = CenterOf(*item) - mean;
        variance = variance + difference * difference;
    }
    float variances[4];
    float means[4];
    Store(variance, variances);
    Store(mean, means);

    std::size_t const axis = SelectAxis(variances);
    BoxTreeItem* const split = Partition(begin, end, axis, means[axis]);
    std::ptrdiff_t const margin = count / 3;
    bool const isBalanced = split - begin > margin && split - begin < count - margin - 1;
    return isBalanced ? split : begin + count / 2;
}

class TreeWriter {
public:
    explicit TreeWriter(Node const* leaves) : leaves_(leaves) {}

    /// Writes the subtree over the range from `node` on and returns its box.
    NodeBox Write(BoxTreeItem* begin, BoxTreeItem* end, Node* node) const {
        std::ptrdiff_t const count = end - begin;
        if (count == 1) return WriteLeaf(*begin, node);
        if (count == 2) return WriteInner(count, WriteLeaf(begin[0], node + 1), WriteLeaf(begin[1], node + 2), node);

        BoxTreeItem* const split = Split(begin, end);
        NodeBox const left = Write(begin, split, node + 1);
        NodeBox const right = Write(split, end, node + 2 * (split - begin));
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
    TreeWriter(leaves.data()).Write(items.data(), items.data() + items.size(), nodes);
}

}  // namespace Quorlan
