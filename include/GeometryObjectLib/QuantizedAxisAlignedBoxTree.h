#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace GeometryObjectLib {

/// One node of the tree: a box in grid cells of the tree's quantization, 16 bytes in all.
struct QuantizedAxisAlignedBoxTreeNode_s {
    std::uint16_t minX = 0;
    std::uint16_t maxX = 0;
    std::uint16_t minY = 0;
    std::uint16_t maxY = 0;
    std::uint16_t minZ = 0;
    std::uint16_t maxZ = 0;

    /// A leaf's item (0 or greater), or minus the number of nodes of an inner node's subtree, itself included.
    std::int32_t escapeOrItem = 0;
};

static_assert(sizeof(QuantizedAxisAlignedBoxTreeNode_s) == 16);

/// A bounding-volume hierarchy in one array, depth first: the left child of an inner node is the next node, the right
/// child follows the left subtree, so that a traversal skips a whole subtree with one jump.
///
/// A node's box in model space has, per axis, the corners origin + quantized / bvhQuantization. An axis without extent
/// has an infinite quantization; all its corners lie at the origin's coordinate.
class QuantizedAxisAlignedBoxTree {
public:
    QuantizedAxisAlignedBoxTree() = default;

    /// Takes what `QaabBuilder` hands out: origin, grid cells per model unit, and the nodes.
    QuantizedAxisAlignedBoxTree(Vertex origin, Vertex bvhQuantization,
                                std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes)
        : origin_(origin), bvhQuantization_(bvhQuantization), nodes_(std::move(nodes)) {}

    Vertex const& getOrigin() const { return origin_; }
    Vertex const& getBvhQuantization() const { return bvhQuantization_; }
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& getNodes() const { return nodes_; }

private:
    Vertex origin_;
    Vertex bvhQuantization_;
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes_;
};

}  // namespace GeometryObjectLib
