#include <Tools/QaabBuilder.h>

#include "analysis/BoxQuantizer.h"
#include "analysis/BoxTreeWriter.h"

#include <Tools/BoundingBoxBuilder.h>

#include <algorithm>

namespace Quorlan::Tools {
namespace {

/// The corners of the box around all boxes.
void FindExtent(std::vector<AxisAlignedBox3> const& boxes, Vertex& origin, Vertex& top) {
    Vertex least = boxes[0].GetMin();
    Vertex greatest = boxes[0].GetMax();
    for (AxisAlignedBox3 const& box : boxes) {
        Vertex const lo = box.GetMin();
        Vertex const hi = box.GetMax();
        least = {std::min(least.x, lo.x), std::min(least.y, lo.y), std::min(least.z, lo.z)};
        greatest = {std::max(greatest.x, hi.x), std::max(greatest.y, hi.y), std::max(greatest.z, hi.z)};
    }
    origin = least;
    top = greatest;
}

}  // namespace

bool QaabBuilder::Build(void const* buffer) {
    std::vector<BoxTreeItem> items;
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> leaves;
    Vertex origin;
    Vector3f scale;
    {
        BoundingBoxBuilder builder;  // its boxes are gone before the nodes are allocated
        if (!builder.Build(buffer)) return false;
        auto const& boxes = builder.getBoundingBoxes();
        Vertex top;
        FindExtent(boxes, origin, top);
        Vector3f const extent = GeometryObjectLib::ToVector3f(top - origin);
        scale = {kGridEnd / extent.x, kGridEnd / extent.y, kGridEnd / extent.z};

        BoxQuantizer const quantizer(origin, scale);
        items.resize(boxes.size());
        leaves.resize(boxes.size());
        for (std::uint32_t i = 0; i < boxes.size(); ++i) quantizer.Quantize(boxes[i], i, items[i], leaves[i]);
    }
    nodes_.resize(2 * items.size() - 1);
    origin_ = origin;
    bvhQuantization_ = GeometryObjectLib::ToVertex(scale);
    WriteBoxTree(items, leaves, nodes_.data());
    return true;
}

}  // namespace Quorlan::Tools
