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

/// Up to eight descendants of a node that together hold all its leaves, in one cache line. Either all of them are wide
/// nodes themselves, or all of them are leaves.
struct alignas(64) QuantizedAxisAlignedBoxTreeWideNode_s {
    /// min x, max x, min y, max y, min z, max z, each of all eight, in steps of 2^shift grid cells from `base`: a box
    /// reaches from the first cell of its lower step to the last one of its upper step.
    std::uint8_t bounds[6][8] = {};

    /// The lower corner of the node's own box, in grid cells.
    std::uint16_t base[3] = {};

    /// From the lowest bit on: the shift of each axis (4 bits each), the number of children less one (3 bits), and
    /// whether they are leaves.
    std::uint16_t form = 0;

    /// The first child in the list of wide nodes, which the others follow; of leaves, the node they are below of.
    std::uint32_t first = 0;

    /// How many nodes each leaf stands behind that node (4 bits each).
    std::uint32_t leafOffsets = 0;
};

static_assert(sizeof(QuantizedAxisAlignedBoxTreeWideNode_s) == 64);

/// A bounding-volume hierarchy in one array, depth first: the left child of an inner node is the next node, the right
/// child follows the left subtree, so that a traversal skips a whole subtree with one jump.
///
/// A node's box in model space has, per axis, the corners origin + quantized / bvhQuantization. An axis without extent
/// has an infinite quantization; all its corners lie at the origin's coordinate.
///
/// A binary tree in which every node's box contains those of its subtree, as all are that `QaabBuilder` makes, is kept
/// a second time in a form for queries, some 13 bytes per leaf of such a tree. Queries of other trees take longer.
class QuantizedAxisAlignedBoxTree {
public:
    QuantizedAxisAlignedBoxTree() = default;

    /// Takes what `QaabBuilder` hands out: origin, grid cells per model unit, and the nodes.
    QUORLAN_TOOLS_API QuantizedAxisAlignedBoxTree(Vertex origin, Vertex bvhQuantization,
                                                  std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes);

    Vertex const& getOrigin() const { return origin_; }
    Vertex const& getBvhQuantization() const { return bvhQuantization_; }
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& getNodes() const { return nodes_; }

    /// The form for queries, from the root on; empty for a small tree, and where a node's box does not contain those of
    /// its subtree.
    std::vector<QuantizedAxisAlignedBoxTreeWideNode_s> const& getWideNodes() const { return wideNodes_; }

private:
    Vertex origin_;
    Vertex bvhQuantization_;
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes_;
    std::vector<QuantizedAxisAlignedBoxTreeWideNode_s> wideNodes_;
};

}  // namespace GeometryObjectLib
