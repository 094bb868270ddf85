#pragma once

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>
#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>

#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;
using GeometryObjectLib::Vertex;

/// A bounding-volume hierarchy over the world boxes of all instances of a model: its quantized axis-aligned boxes.
///
/// N instances give 2N - 1 nodes of 16 bytes, depth first, as `QuantizedAxisAlignedBoxTree` describes them. Every range
/// of instances is split at the mean of their centres, on the axis along which the centres vary most; a split that
/// leaves about a third or less on one side is replaced by the middle of the range, which bounds the tree's depth by
/// log(N) / log(1.5), about 53 levels for the largest model.
///
///     Quorlan::Tools::QaabBuilder builder;
///     if (!builder.Build(buffer.data())) return;
///     QuantizedAxisAlignedBoxTree const tree(builder.getOrigin(), builder.getBvhQuantization(), builder.getNodes());
///
/// COST: N log N time; beside the nodes, 48 bytes per instance for the boxes and 32 while the tree is prepared.
class QUORLAN_TOOLS_API QaabBuilder {
public:
    /// REQUIRES: the bytes are a trusted model buffer if they carry its identifier; they are not kept after the call.
    /// RETURNS false, with the earlier tree kept, if it is no model buffer or has no instances.
    bool Build(void const* buffer);

    /// Boxes in grid cells: floor and ceil of (corner - origin) * bvhQuantization. Empty before the first `Build`.
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& getNodes() const { return nodes_; }

    /// The least corner of all boxes.
    Vertex const& getOrigin() const { return origin_; }

    /// Grid cells per model unit, for each axis; infinite for an axis along which the model has no extent.
    Vertex const& getBvhQuantization() const { return bvhQuantization_; }

private:
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes_;
    Vertex origin_;
    Vertex bvhQuantization_;
};

}  // namespace Quorlan::Tools
