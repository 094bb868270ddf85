#include <Tools/QaabBuilder.h>

#include "analysis/BoxTreeWriter.h"
#include "geometry/Frame.h"

#include <Tools/BoundingBoxBuilder.h>

#include <algorithm>
#include <limits>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::Vector3f;

constexpr float kGridEnd = 65535;  ///< the last grid line of an axis

/// The integer part. What no integer can hold, an infinity say, becomes the least integer, of which a node keeps 0.
std::int32_t Truncate(float value) {
    constexpr float kLimit = 2147483648.0f;
    return value > -kLimit && value < kLimit ? static_cast<std::int32_t>(value)
                                             : std::numeric_limits<std::int32_t>::min();
}

/// The lower end of an interval in grid lines. It is clamped below only; an axis without extent, where the product may
/// be not a number, starts at 0.
std::uint16_t QuantizeLower(float center, float half, float scale) {
    float const value = std::max(0.0f, (center - half) * scale);
    return static_cast<std::uint16_t>(Truncate(value));  // truncation is the floor of what is not negative
}

/// The upper end, clamped above only.
std::uint16_t QuantizeUpper(float center, float half, float scale) {
    float const value = std::min(kGridEnd, (center + half) * scale);
    std::int32_t const integer = Truncate(value);
    return static_cast<std::uint16_t>(integer + (static_cast<float>(integer) < value));
}

/// The corners of the box around all boxes.
void FindExtent(std::vector<AxisAlignedBox3> const& boxes, Vertex& origin, Vertex& top) {
    origin = boxes[0].GetMin();
    top = boxes[0].GetMax();
    for (AxisAlignedBox3 const& box : boxes) {
        Vertex const lo = box.GetMin();
        Vertex const hi = box.GetMax();
        origin = {std::min(origin.x, lo.x), std::min(origin.y, lo.y), std::min(origin.z, lo.z)};
        top = {std::max(top.x, hi.x), std::max(top.y, hi.y), std::max(top.z, hi.z)};
    }
}

void MakeItems(std::vector<AxisAlignedBox3> const& boxes, Vertex const& origin, Vector3f const& scale,
               std::vector<BoxTreeItem>& items, std::vector<QuantizedAxisAlignedBoxTreeNode_s>& leaves) {
    items.reserve(boxes.size());
    leaves.reserve(boxes.size());
    for (std::uint32_t i = 0; i < boxes.size(); ++i) {
        Vector3f const c = GeometryObjectLib::ToVector3f(boxes[i].center - origin);
        Vector3f const h = GeometryObjectLib::ToVector3f(boxes[i].halfExtent);
        items.push_back({{c.x, c.y, c.z}, i});
        leaves.push_back({QuantizeLower(c.x, h.x, scale.x), QuantizeUpper(c.x, h.x, scale.x),
                          QuantizeLower(c.y, h.y, scale.y), QuantizeUpper(c.y, h.y, scale.y),
                          QuantizeLower(c.z, h.z, scale.z), QuantizeUpper(c.z, h.z, scale.z),
                          static_cast<std::int32_t>(i)});
    }
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
        MakeItems(boxes, origin, scale, items, leaves);
    }
    nodes_.resize(2 * items.size() - 1);
    origin_ = origin;
    bvhQuantization_ = GeometryObjectLib::ToVertex(scale);
    WriteBoxTree(items, leaves, nodes_.data());
    return true;
}

}  // namespace Quorlan::Tools
