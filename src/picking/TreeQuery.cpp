#include "picking/TreeQuery.h"

#include "geometry/BoxTreeNodes.h"
#include "picking/NearLeaves.h"
#include "picking/NodeLanes.h"
#include "picking/NodeLists.h"
#include "picking/RaySlabs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {
namespace {

using GeometryObjectLib::GetSubtreeSize;

constexpr int kXyz = 7;   // the lanes of a vector
constexpr int kAll = 15;  // all four lanes

Float4 Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z), 0};
}

std::array<float, 3> ToArray(Float4 v) {
    float lanes[4];
    Store(v, lanes);
    return {lanes[0], lanes[1], lanes[2]};
}

/// Half a grid cell in model units. The cells of an axis without extent, whose quantization is infinite, have none.
Float4 GetHalfCell(QuantizedAxisAlignedBoxTree const& tree) {
    Vertex const& cellsPerUnit = tree.getBvhQuantization();
    return Narrow({0.5 / cellsPerUnit.x, 0.5 / cellsPerUnit.y, 0.5 / cellsPerUnit.z});
}

struct Box {
    Float4 center;
    Float4 halfExtent;

    Box(QuantizedAxisAlignedBoxTreeNode_s const& node, Float4 halfCell) : center(0.0f), halfExtent(0.0f) {
        LoadNode(node, center, halfExtent);
        center = center * halfCell;
        halfExtent = halfExtent * halfCell;
    }
};

/// The leaves of a tree that are met and whose ancestors all are, in depth-first order.
class MetLeaves {
public:
    /// Finds the leaves whose boxes overlaps(center, halfExtent) accepts.
    ///
    /// They are found from level to level and not depth first: the boxes of a level do not wait for one another's
    /// answers, and no branch depends on an answer. What is met is written in any case and then counted or not.
    template <class Overlaps>
    MetLeaves(QuantizedAxisAlignedBoxTree const& tree, Overlaps const& overlaps)
        : nodes_(tree.getNodes().data()), halfCell_(GetHalfCell(tree)) {
        MetNodes walk(leaves_);
        VisitRange(walk, overlaps, 0, tree.getNodes().size());
        for (std::size_t next = 0; next < walk.GetInnerCount(); ++next) {
            std::size_t const node = walk.GetInner(next);
            std::size_t const end = node + GetSubtreeSize(nodes_[node]);
            std::size_t const first = node + 1;
            std::size_t const second = first < end ? first + GetSubtreeSize(nodes_[first]) : end;
            if (second < end && second + GetSubtreeSize(nodes_[second]) == end) {
                bool const isFirstMet = IsMet(overlaps, first);
                bool const isSecondMet = IsMet(overlaps, second);
                walk.Add(first, nodes_[first].escapeOrItem, isFirstMet);
                walk.Add(second, nodes_[second].escapeOrItem, isSecondMet);
            } else {
                VisitRange(walk, overlaps, first, end);  // a tree of other than two branches
            }
        }
        walk.SortLeaves();  // nodes are numbered depth first
        count_ = walk.GetLeafCount();
    }

    std::size_t GetCount() const { return count_; }
    unsigned GetItem(std::size_t i) const { return static_cast<unsigned>(nodes_[leaves_.GetData()[i]].escapeOrItem); }
    Vertex GetCenter(std::size_t i) const {
        float c[4];
        Store(Load(leaves_.GetData()[i]).center, c);
        return {c[0], c[1], c[2]};
    }

    std::vector<unsigned> GetItems() const {
        std::vector<unsigned> items(count_);
        for (std::size_t i = 0; i < count_; ++i) items[i] = GetItem(i);
        return items;
    }

private:
    template <class Overlaps>
    void VisitRange(MetNodes& walk, Overlaps const& overlaps, std::size_t node, std::size_t end) const {
        while (node < end) {
            std::int32_t const escapeOrItem = nodes_[node].escapeOrItem;
            walk.Add(node, escapeOrItem, IsMet(overlaps, node));
            node += GetSubtreeSize(escapeOrItem);
        }
    }

    template <class Overlaps>
    bool IsMet(Overlaps const& overlaps, std::size_t node) const {
        Box const box = Load(node);
        return overlaps(box.center, box.halfExtent);
    }

    Box Load(std::size_t node) const { return Box(nodes_[node], halfCell_); }

    QuantizedAxisAlignedBoxTreeNode_s const* nodes_;
    Float4 halfCell_;
    IndexList leaves_;
    std::size_t count_ = 0;
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

    bool operator()(Float4 center, Float4 halfExtent) const {
        Float4 const toOrigin = origin_ - center;
        Mask4 const isBeyond = (Abs(toOrigin) > halfExtent) & (toOrigin * direction_ >= Float4(0.0f));
        Float4 const across = Yzx(toOrigin) * direction_ - toOrigin * directionYzx_;
        Float4 const reach = halfExtent * absDirectionYzx_ + Yzx(halfExtent) * absDirection_;
        return (GetBits(isBeyond | (Abs(across) > reach)) & kXyz) == 0;
    }

private:
    Float4 origin_;
    Float4 direction_;
    Float4 directionYzx_;
    Float4 absDirection_;
    Float4 absDirectionYzx_;
};

/// Whether the test meets a leaf and all its ancestors.
bool IsMetFromRootOn(std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& nodes, std::size_t leaf, RayTest const& test,
                     Float4 halfCell) {
    for (std::size_t node = 0;;) {
        Box const box(nodes[node], halfCell);
        if (!test(box.center, box.halfExtent)) return false;
        if (node == leaf) return true;
        ++node;
        for (std::size_t size = GetSubtreeSize(nodes[node]); node + size <= leaf; size = GetSubtreeSize(nodes[node])) {
            node += size;
        }
    }
}

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
        return GetBits(height - reach - distance_ <= Float4(0.0f)) == kAll;
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

/// A leaf counts if the exact test meets it and all its ancestors. Where boxes contain those of their subtrees, as in
/// every tree with wide nodes, all ancestors are met of a leaf that is met even when smaller by what the test can err,
/// so that few are asked.
std::vector<unsigned> FindNearItems(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray,
                                    ItemRecords const& records, bool usesAvx2) {
    auto const& nodes = tree.getNodes();
    Float4 const halfCell = GetHalfCell(tree);
    Float4 const origin = Narrow(ray.origin - tree.getOrigin());
    Float4 const direction = Narrow(ray.direction);
    RayTest const isMet(origin, direction);
    if (tree.getWideNodes().empty()) return MetLeaves(tree, isMet).GetItems();
    RaySlabs const slabs(ToArray(origin), ToArray(direction), ToArray(halfCell), usesAvx2);
    if (!slabs.IsUsable()) return MetLeaves(tree, isMet).GetItems();
    NearLeaves const leaves(tree, slabs);

    auto const& slack = slabs.GetSlack();
    Float4 const slackLanes(slack[0], slack[1], slack[2], 0);
    std::vector<unsigned> items;
    items.reserve(static_cast<std::size_t>(leaves.end() - leaves.begin()));
    for (std::uint32_t const leaf : leaves) {
        Box const box(nodes[leaf], halfCell);
        Float4 const inside = box.halfExtent - slackLanes;
        bool const isSurelyMet = (GetBits(inside >= Float4(0.0f)) & kXyz) == kXyz && isMet(box.center, inside);
        if (isSurelyMet || (isMet(box.center, box.halfExtent) && IsMetFromRootOn(nodes, leaf, isMet, halfCell))) {
            auto const item = static_cast<unsigned>(nodes[leaf].escapeOrItem);
            items.push_back(item);
            if (records.first != nullptr) QUORLAN_PREFETCH(records.first + item * records.size);
        }
    }
    return items;
}

#if QUORLAN_HAS_AVX2
/// The same code with all that it calls, for a processor with AVX2: instructions with three operands need fewer moves.
__attribute__((target("avx2"), flatten)) std::vector<unsigned> FindNearItemsAvx2(
    QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray, ItemRecords const& records) {
    return FindNearItems(tree, ray, records, true);
}
#endif

}  // namespace

std::vector<unsigned> FindItemsAlongRay(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray,
                                        ItemRecords const& records, [[maybe_unused]] bool usesAvx2) {
#if QUORLAN_HAS_AVX2
    if (usesAvx2) return FindNearItemsAvx2(tree, ray, records);
#endif
    return FindNearItems(tree, ray, records, false);
}

std::vector<unsigned> FindItemsInPlanes(QuantizedAxisAlignedBoxTree const& tree, std::vector<Plane3f> const& planes) {
    return MetLeaves(tree, PlanesTest(planes)).GetItems();
}

std::vector<unsigned> FindNearestItemsInPlanes(QuantizedAxisAlignedBoxTree const& tree,
                                               std::vector<Plane3f> const& planes, ModelRay const& ray,
                                               std::size_t limit) {
    struct Candidate {
        double squaredDistance;
        std::size_t order;
    };
    MetLeaves const leaves(tree, PlanesTest(planes));
    ModelRay const relative{ray.origin - tree.getOrigin(), ray.direction};
    std::vector<Candidate> candidates(leaves.GetCount());
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        candidates[i] = {SquaredDistance(relative, leaves.GetCenter(i)), i};
    }
    auto const last = candidates.begin() + static_cast<std::ptrdiff_t>(std::min(limit, candidates.size()));
    std::partial_sort(candidates.begin(), last, candidates.end(), [](Candidate const& a, Candidate const& b) {
        if (a.squaredDistance != b.squaredDistance) return a.squaredDistance < b.squaredDistance;
        return a.order < b.order;
    });
    std::vector<unsigned> items;
    items.reserve(limit);
    for (auto candidate = candidates.begin(); candidate != last; ++candidate) {
        items.push_back(leaves.GetItem(candidate->order));
    }
    return items;
}

}  // namespace Quorlan::Tools::Picking
