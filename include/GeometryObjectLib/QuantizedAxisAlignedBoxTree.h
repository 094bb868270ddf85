#pragma once

#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>

#include <cstdint>
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

/// The boxes of the four grandchildren of a node side by side, in one cache line.
struct alignas(64) QuantizedAxisAlignedBoxTreeQuad_s {
    /// min x, max x, min y, max y, min z, max z, each of all four.
    std::uint16_t bounds[6][4] = {};

    /// A grandchild's own quad as ~index, or the index of its node; that node is an inner node.
    std::int32_t child[4] = {};
};

static_assert(sizeof(QuantizedAxisAlignedBoxTreeQuad_s) == 64);

/// A bounding-volume hierarchy in one array, depth first: the left child of an inner node is the next node, the right
/// child follows the left subtree, so that a traversal skips a whole subtree with one jump.
///
/// A node's box in model space has, per axis, the corners origin + quantized / bvhQuantization. An axis without extent
/// has an infinite quantization; all its corners lie at the origin's coordinate.
///
/// The upper part of a large binary tree in which every node's box contains those of its subtree, as in all that
/// `QaabBuilder` makes, is kept a second time in a form for queries, at most one byte per leaf. Queries of other trees
/// take longer.
class QuantizedAxisAlignedBoxTree {
public:
    QuantizedAxisAlignedBoxTree() = default;

    /// Takes what `QaabBuilder` hands out: origin, grid cells per model unit, and the nodes.
    QUORLAN_TOOLS_API QuantizedAxisAlignedBoxTree(Vertex origin, Vertex bvhQuantization,
                                                  std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes);

    Vertex const& getOrigin() const { return origin_; }
    Vertex const& getBvhQuantization() const { return bvhQuantization_; }
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& getNodes() const { return nodes_; }

    /// Breadth first from the root's on; empty for a small tree, where the root has not four inner grandchildren, and
    /// where a node's box does not contain those of its subtree.
    std::vector<QuantizedAxisAlignedBoxTreeQuad_s> const& getUpperQuads() const { return upperQuads_; }

private:
    Vertex origin_;
    Vertex bvhQuantization_;
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes_;
    std::vector<QuantizedAxisAlignedBoxTreeQuad_s> upperQuads_;
};

}  // namespace GeometryObjectLib
