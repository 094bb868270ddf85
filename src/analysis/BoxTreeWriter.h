#pragma once

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <cstdint>
#include <vector>

namespace Quorlan {

/// One box of a tree under construction: its centre, by which it is sorted, and its instance.
struct alignas(16) BoxTreeItem {
    float center[3];
    std::uint32_t instance;
};

static_assert(sizeof(BoxTreeItem) == 16);

/// Writes the nodes of the tree over `items`, which are put in the order of the leaves; `leaves` holds the finished
/// leaf node of each instance. REQUIRES: at least one item; `nodes` has room for two nodes per item, less one.
///
/// The recursion goes as deep as the tree, which the rule of balance keeps below log(items) / log(1.5) + 2 levels.
void WriteBoxTree(std::vector<BoxTreeItem>& items,
                  std::vector<GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s> const& leaves,
                  GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s* nodes);

}  // namespace Quorlan
