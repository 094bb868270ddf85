#pragma once

#include "picking/NodeLanes.h"

#include <GeometryObjectLib/Plane3f.h>

#include <vector>

/// The tests of one box, as the rules of the pickers have them, in their order of operations.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Plane3f;

/// A node's box relative to the tree's origin, in the lanes x, y, z.
struct Box {
    Float4 center;
    Float4 halfExtent;

    Box(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4 halfCell) : center(0.0f), halfExtent(0.0f) {
        LoadNode(node, center, halfExtent);
        center = center * halfCell;
        halfExtent = halfExtent * halfCell;
    }
};

/// The separating-axis test of a half line and a box: the three axes, and their cross products with the direction
/// (Gottschalk, Lin, Manocha, "OBBTree", 1996). The cross products stand in the lanes z, x, y.
class RayTest {
public:
    RayTest(Float4 origin, Float4 direction)
        : origin_(origin),
          direction_(direction),
          directionYzx_(Yzx(direction)),
          absDirection_(Abs(direction)),
          absDirectionYzx_(Abs(directionYzx_)) {}

    bool operator()(Box const& box) const { return IsMet(box.center, box.halfExtent); }

    /// Whether a box is met even when it is smaller.
    bool IsMetBy(Box const& box, Float4 slack) const {
        Float4 const inside = box.halfExtent - slack;
        return (GetBits(inside >= Float4(0.0f)) & kXyz) == kXyz && IsMet(box.center, inside);
    }

private:
    static constexpr int kXyz = 7;  // the lanes of a vector

    bool IsMet(Float4 center, Float4 halfExtent) const {
        Float4 const toOrigin = origin_ - center;
        Mask4 const isBeyond = (Abs(toOrigin) > halfExtent) & (toOrigin * direction_ >= Float4(0.0f));
        Float4 const across = Yzx(toOrigin) * direction_ - toOrigin * directionYzx_;
        Float4 const reach = halfExtent * absDirectionYzx_ + Yzx(halfExtent) * absDirection_;
        return (GetBits(isBeyond | (Abs(across) > reach)) & kXyz) == 0;
    }

    Float4 origin_;
    Float4 direction_;
    Float4 directionYzx_;
    Float4 absDirection_;
    Float4 absDirectionYzx_;
};

/// Whether some point of a box is on the inner side of each of four planes, one plane per lane.
class PlanesTest {
public:
    /// REQUIRES: four planes.
    explicit PlanesTest(std::vector<Plane3f> const& p)
        : normalX_(p[0].normal.x, p[1].normal.x, p[2].normal.x, p[3].normal.x),
          normalY_(p[0].normal.y, p[1].normal.y, p[2].normal.y, p[3].normal.y),
          normalZ_(p[0].normal.z, p[1].normal.z, p[2].normal.z, p[3].normal.z),
          distance_(p[0].distance, p[1].distance, p[2].distance, p[3].distance) {}

    bool operator()(Box const& box) const { return GetBits(GetLeastHeights(box) <= Float4(0.0f)) == kAll; }

    /// Whether a box is met even when the planes stand further in.
    bool IsMetBy(Box const& box, Float4 slack) const {
        return GetBits(GetLeastHeights(box) + slack <= Float4(0.0f)) == kAll;
    }

private:
    static constexpr int kAll = 15;  // all four lanes

    /// How high above each plane the box's lowest point stands.
    Float4 GetLeastHeights(Box const& box) const {
        Float4 const height = normalX_ * Broadcast<0>(box.center) + normalY_ * Broadcast<1>(box.center) +
                              normalZ_ * Broadcast<2>(box.center);
        Float4 const reach = Abs(normalX_) * Broadcast<0>(box.halfExtent) +
                             Abs(normalY_) * Broadcast<1>(box.halfExtent) +
                             Abs(normalZ_) * Broadcast<2>(box.halfExtent);
        return height - reach - distance_;
    }

    Float4 normalX_;
    Float4 normalY_;
    Float4 normalZ_;
    Float4 distance_;
};

}  // namespace Quorlan::Tools::Picking
