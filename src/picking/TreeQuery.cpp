#include "picking/TreeQuery.h"

#include "geometry/BoxTreeNodes.h"
#include "picking/BoxTests.h"
#include "picking/NearLeaves.h"
#include "picking/NodeLists.h"
#include "picking/PlaneSlabs.h"
#include "picking/RaySlabs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {
namespace {

using GeometryObjectLib::GetSubtreeSize;

constexpr std::size_t kUsualItems = 32;

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

/// The leaves of a tree that are met and whose ancestors all are, in depth-first order.
class MetLeaves {
public:
    /// Finds the leaves whose boxes overlaps(box) accepts.
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

    std::uint32_t const* begin() const { return leaves_.GetData(); }
    std::uint32_t const* end() const { return leaves_.GetData() + count_; }

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
        return overlaps(Box(nodes_[node], halfCell_));
    }

    QuantizedAxisAlignedBoxTreeNode_s const* nodes_;
    Float4 halfCell_;
    IndexList leaves_;
    std::size_t count_ = 0;
};

/// Whether the test meets a leaf and all its ancestors.
template <class Test>
bool IsMetFromRootOn(std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& nodes, std::size_t leaf, Test const& test,
                     Float4 halfCell) {
    for (std::size_t node = 0;;) {
        if (!test(Box(nodes[node], halfCell))) return false;
        if (node == leaf) return true;
        ++node;
        for (std::size_t size = GetSubtreeSize(nodes[node]); node + size <= leaf; size = GetSubtreeSize(nodes[node])) {
            node += size;
        }
    }
}

/// Calls visit(leaf) for the leaves that the exact test meets with all their ancestors, in their order.
///
/// Where boxes contain those of their subtrees, as in every tree with wide nodes, all ancestors are met of a leaf that
/// is met even when smaller by what the test can err, so that few are asked.
template <class Test, class Slabs, class Visit>
void VisitMetLeaves(QuantizedAxisAlignedBoxTree const& tree, Test const& isMet, Slabs const& slabs, Float4 halfCell,
                    Visit const& visit) {
    if (tree.getWideNodes().empty() || !slabs.IsUsable()) {
        for (std::uint32_t const leaf : MetLeaves(tree, isMet)) visit(leaf);
        return;
    }
    auto const& nodes = tree.getNodes();
    Float4 const slack = slabs.GetSlack();
    for (std::uint32_t const leaf : NearLeaves(tree, slabs)) {
        Box const box(nodes[leaf], halfCell);
        if (isMet.IsMetBy(box, slack) || (isMet(box) && IsMetFromRootOn(nodes, leaf, isMet, halfCell))) visit(leaf);
    }
}

/// The square of the distance of a point to a half line; infinite where it is not a number.
double SquaredDistance(ModelRay const& ray, Vertex const& point) {
    Vertex const toPoint = point - ray.origin;
    double const t = std::max(0.0, Dot(toPoint, ray.direction) / Dot(ray.direction, ray.direction));
    Vertex const across = toPoint - ray.direction * t;
    double const squared = Dot(across, across);
    return std::isnan(squared) ? std::numeric_limits<double>::infinity() : squared;
}

std::vector<unsigned> FindNearItems(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray,
                                    ItemRecords const& records, bool usesAvx2) {
    Float4 const halfCell = GetHalfCell(tree);
    Float4 const origin = Narrow(ray.origin - tree.getOrigin());
    Float4 const direction = Narrow(ray.direction);
    RaySlabs const slabs(ToArray(origin), ToArray(direction), ToArray(halfCell), usesAvx2);
    std::vector<unsigned> items;
    items.reserve(kUsualItems);
    VisitMetLeaves(tree, RayTest(origin, direction), slabs, halfCell, [&](std::uint32_t leaf) {
        auto const item = static_cast<unsigned>(tree.getNodes()[leaf].escapeOrItem);
        items.push_back(item);
        if (records.first != nullptr) QUORLAN_PREFETCH(records.first + item * records.size);
    });
    return items;
}

std::vector<std::uint32_t> FindLeavesInPlanes(QuantizedAxisAlignedBoxTree const& tree,
                                              std::vector<Plane3f> const& planes) {
    Float4 const halfCell = GetHalfCell(tree);
    std::vector<std::uint32_t> leaves;
    leaves.reserve(kUsualItems);
    VisitMetLeaves(tree, PlanesTest(planes), PlaneSlabs(planes, ToArray(halfCell)), halfCell,
                   [&](std::uint32_t leaf) { leaves.push_back(leaf); });
    return leaves;
}

#if QUORLAN_HAS_AVX2
/// The same code for a processor with AVX2.
QUORLAN_AVX2_WHOLE std::vector<unsigned> FindNearItemsAvx2(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray,
                                                           ItemRecords const& records) {
    return FindNearItems(tree, ray, records, true);
}

QUORLAN_AVX2_WHOLE std::vector<std::uint32_t> FindLeavesInPlanesAvx2(QuantizedAxisAlignedBoxTree const& tree,
                                                                     std::vector<Plane3f> const& planes) {
    return FindLeavesInPlanes(tree, planes);
}
#endif

/// Of the leaves the at most `limit` whose boxes' centres lie nearest to the ray, nearest first; of equal distances,
/// the first in the list.
std::vector<std::uint32_t> FindNearest(QuantizedAxisAlignedBoxTree const& tree,
                                       std::vector<std::uint32_t> const& leaves, ModelRay const& ray,
                                       std::size_t limit) {
    struct Candidate {
        double squaredDistance;
        std::uint32_t leaf;  // ascending
    };
    Float4 const halfCell = GetHalfCell(tree);
    ModelRay const relative{ray.origin - tree.getOrigin(), ray.direction};
    std::vector<Candidate> candidates;
    candidates.reserve(leaves.size());
    for (std::uint32_t const leaf : leaves) {
        auto const c = ToArray(Box(tree.getNodes()[leaf], halfCell).center);
        candidates.push_back({SquaredDistance(relative, {c[0], c[1], c[2]}), leaf});
    }
    auto const last = candidates.begin() + static_cast<std::ptrdiff_t>(std::min(limit, candidates.size()));
    auto const isBefore = [](Candidate const& a, Candidate const& b) {
        return a.squaredDistance != b.squaredDistance ? a.squaredDistance < b.squaredDistance : a.leaf < b.leaf;
    };
    std::nth_element(candidates.begin(), last, candidates.end(), isBefore);
    std::sort(candidates.begin(), last, isBefore);
    std::vector<std::uint32_t> nearest;
    for (auto candidate = candidates.begin(); candidate != last; ++candidate) nearest.push_back(candidate->leaf);
    return nearest;
}

}  // namespace

std::vector<unsigned> FindItemsAlongRay(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray,
                                        ItemRecords const& records, [[maybe_unused]] bool usesAvx2) {
#if QUORLAN_HAS_AVX2
    if (usesAvx2) return FindNearItemsAvx2(tree, ray, records);
#endif
    return FindNearItems(tree, ray, records, false);
}

std::vector<unsigned> FindItemsInPlanes(QuantizedAxisAlignedBoxTree const& tree, std::vector<Plane3f> const& planes,
                                        Narrowing const& narrowing, [[maybe_unused]] bool usesAvx2) {
#if QUORLAN_HAS_AVX2
    auto leaves = usesAvx2 ? FindLeavesInPlanesAvx2(tree, planes) : FindLeavesInPlanes(tree, planes);
#else
    auto leaves = FindLeavesInPlanes(tree, planes);
#endif
    if (leaves.size() > narrowing.most) leaves = FindNearest(tree, leaves, narrowing.ray, narrowing.limit);
    for (std::uint32_t& leaf : leaves) leaf = static_cast<std::uint32_t>(tree.getNodes()[leaf].escapeOrItem);
    return leaves;
}

}  // namespace Quorlan::Tools::Picking
