#include "picking/TreeQuery.h"

#include "picking/NodeLanes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {
namespace {

constexpr int kXyz = 7;   // the lanes of a vector
constexpr int kAll = 15;  // all four lanes

Float4 Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z), 0};
}

/// Half a grid cell in model units. The cells of an axis without extent, whose quantization is infinite, have none.
Float4 GetHalfCell(QuantizedAxisAlignedBoxTree const& tree) {
    Vertex const& cellsPerUnit = tree.getBvhQuantization();
    return Narrow({0.5 / cellsPerUnit.x, 0.5 / cellsPerUnit.y, 0.5 / cellsPerUnit.z});
}

/// Walks the tree depth first, skips the subtrees whose boxes `overlaps(center, halfExtent)` rejects, and calls
/// visit(item, center) at the leaves that are left.
template <class Overlaps, class Visit>
void Walk(QuantizedAxisAlignedBoxTree const& tree, Overlaps const& overlaps, Visit&& visit) {
    Float4 const halfCell = GetHalfCell(tree);
    auto const* node = tree.getNodes().data();
    auto const* const end = node + tree.getNodes().size();
    while (node < end) {
        Float4 center(0.0f);
        Float4 halfExtent(0.0f);
        LoadNode(*node, center, halfExtent);
        center = center * halfCell;
        halfExtent = halfExtent * halfCell;

        std::int32_t const escapeOrItem = node->escapeOrItem;
        bool const isMet = overlaps(center, halfExtent);
        if (escapeOrItem >= 0) {
            if (isMet) visit(static_cast<unsigned>(escapeOrItem), center);
            ++node;
        } else {
            node += isMet ? 1 : -std::ptrdiff_t{escapeOrItem};
        }
    }
}

/// The separating-axis test of a half line and a box: the three axes, and their cross products with the direction
/// (Gottschalk, Lin, Manocha, "OBBTree", 1996).
class RayTest {
public:
    RayTest(Float4 origin, Float4 direction)
        : origin_(origin),
          direction_(direction),
          directionYzx_(Yzx(direction)),
          directionZxy_(Zxy(direction)),
          absDirectionYzx_(Abs(directionYzx_)),
          absDirectionZxy_(Abs(directionZxy_)) {}

    bool operator()(Float4 center, Float4 halfExtent) const {
        Float4 const zero(0.0f);
        Float4 const toOrigin = origin_ - center;
        int const isBeyond =
            GreaterBits(Abs(toOrigin), halfExtent) & GreaterEqualBits(toOrigin * direction_, zero) & kXyz;
        if (isBeyond != 0) return false;
        Float4 const across = directionYzx_ * Zxy(toOrigin) - directionZxy_ * Yzx(toOrigin);
        Float4 const reach = Yzx(halfExtent) * absDirectionZxy_ + Zxy(halfExtent) * absDirectionYzx_;
        return (GreaterBits(Abs(across), reach) & kXyz) == 0;
    }

private:
    Float4 origin_;
    Float4 direction_;
    Float4 directionYzx_;
    Float4 directionZxy_;
    Float4 absDirectionYzx_;
    Float4 absDirectionZxy_;
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

    bool operator()(Float4 center, Float4 halfExtent) const {
        Float4 const height =
            normalX_ * Broadcast<0>(center) + normalY_ * Broadcast<1>(center) + normalZ_ * Broadcast<2>(center);
        Float4 const reach = Abs(normalX_) * Broadcast<0>(halfExtent) + Abs(normalY_) * Broadcast<1>(halfExtent) +
                             Abs(normalZ_) * Broadcast<2>(halfExtent);
        return GreaterEqualBits(Float4(0.0f), height - reach - distance_) == kAll;
    }

private:
    Float4 normalX_;
    Float4 normalY_;
    Float4 normalZ_;
    Float4 distance_;
};

/// The square of the distance of a point to a half line; infinite where it is not a number.
double SquaredDistance(ModelRay const& ray, Vertex const& point) {
    Vertex const toPoint = point - ray.origin;
    double const t = std::max(0.0, Dot(toPoint, ray.direction) / Dot(ray.direction, ray.direction));
    Vertex const across = toPoint - ray.direction * t;
    double const squared = Dot(across, across);
    return std::isnan(squared) ? std::numeric_limits<double>::infinity() : squared;
}

}  // namespace

std::vector<unsigned> FindItemsAlongRay(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray) {
    std::vector<unsigned> items;
    Walk(tree, RayTest(Narrow(ray.origin - tree.getOrigin()), Narrow(ray.direction)),
         [&items](unsigned item, Float4) { items.push_back(item); });
    return items;
}

std::vector<unsigned> FindItemsInPlanes(QuantizedAxisAlignedBoxTree const& tree, std::vector<Plane3f> const& planes) {
    std::vector<unsigned> items;
    Walk(tree, PlanesTest(planes), [&items](unsigned item, Float4) { items.push_back(item); });
    return items;
}

std::vector<unsigned> FindNearestItemsInPlanes(QuantizedAxisAlignedBoxTree const& tree,
                                               std::vector<Plane3f> const& planes, ModelRay const& ray,
                                               std::size_t limit) {
    struct Candidate {
        double squaredDistance;
        std::size_t order;
        unsigned item;
    };
    ModelRay const relative{ray.origin - tree.getOrigin(), ray.direction};
    std::vector<Candidate> candidates;
    Walk(tree, PlanesTest(planes), [&](unsigned item, Float4 center) {
        float c[4];
        Store(center, c);
        candidates.push_back({SquaredDistance(relative, {c[0], c[1], c[2]}), candidates.size(), item});
    });
    auto const last = candidates.begin() + static_cast<std::ptrdiff_t>(std::min(limit, candidates.size()));
    std::partial_sort(candidates.begin(), last, candidates.end(), [](Candidate const& a, Candidate const& b) {
        if (a.squaredDistance != b.squaredDistance) return a.squaredDistance < b.squaredDistance;
        return a.order < b.order;
    });
    std::vector<unsigned> items;
    items.reserve(limit);
    for (auto candidate = candidates.begin(); candidate != last; ++candidate) items.push_back(candidate->item);
    return items;
}

}  // namespace Quorlan::Tools::Picking
