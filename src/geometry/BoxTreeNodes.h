#pragma once

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <cstddef>
#include <cstdint>

namespace GeometryObjectLib {

/// The number of nodes in a subtree by its first node's word; 1 for a leaf. As arithmetic: ~e is -e - 1.
inline std::size_t GetSubtreeSize(std::int64_t escapeOrItem) {
    return static_cast<std::size_t>(1 + (~escapeOrItem & escapeOrItem >> 63));
}

inline std::size_t GetSubtreeSize(QuantizedAxisAlignedBoxTreeNode_s const& node) {
    return GetSubtreeSize(std::int64_t{node.escapeOrItem});
}

}  // namespace GeometryObjectLib
