#include "picking/TreeQuery.h"

#include "picking/NodeLanes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

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

/// Node indices without a first value; they are written before they are read. Few need no memory from the heap.
class IndexList {
public:
    IndexList() = default;
    IndexList(IndexList const&) = delete;
    IndexList& operator=(IndexList const&) = delete;

    std::uint32_t* GetData() { return grown_ == nullptr ? first_ : grown_.get(); }
    std::uint32_t const* GetData() const { return grown_ == nullptr ? first_ : grown_.get(); }
    std::size_t GetCapacity() const { return capacity_; }

    void Grow() {
        std::unique_ptr<std::uint32_t[]> larger(new std::uint32_t[2 * capacity_]);
        std::copy_n(GetData(), capacity_, larger.get());
        grown_ = std::move(larger);
        capacity_ *= 2;
    }

private:
    static constexpr std::size_t kFirstCapacity = 512;

    std::size_t capacity_ = kFirstCapacity;
    std::unique_ptr<std::uint32_t[]> grown_;
    std::uint32_t first_[kFirstCapacity];
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
        Walk walk(leaves_);
        VisitRange(walk, overlaps, 0, tree.getNodes().size());
        for (std::size_t next = 0; next < walk.innerCount; ++next) {
            std::size_t const node = walk.inner[next];
            std::size_t const end = node + GetSize(nodes_[node].escapeOrItem);
            std::size_t const first = node + 1;
            std::size_t const second = first < end ? first + GetSize(nodes_[first].escapeOrItem) : end;
            if (second < end && second + GetSize(nodes_[second].escapeOrItem) == end) {
                bool const isFirstMet = IsMet(overlaps, first);
                bool const isSecondMet = IsMet(overlaps, second);
                walk.Note(first, nodes_[first].escapeOrItem, isFirstMet);
                walk.Note(second, nodes_[second].escapeOrItem, isSecondMet);
                walk.MakeRoom();
            } else {
                VisitRange(walk, overlaps, first, end);  // a tree of other than two branches
            }
        }
        std::sort(walk.leaves, walk.leaves + walk.leafCount);  // nodes are numbered depth first
        count_ = walk.leafCount;
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
    struct Box {
        Float4 center;
        Float4 halfExtent;
    };

    /// The nodes that are met so far, with room for two more.
    struct Walk {
        explicit Walk(IndexList& list) : leafList(list), inner(innerList.GetData()), leaves(list.GetData()) {}

        void Note(std::size_t node, std::int32_t escapeOrItem, bool isMet) {
            inner[innerCount] = leaves[leafCount] = static_cast<std::uint32_t>(node);
            innerCount += static_cast<std::size_t>(isMet & (escapeOrItem < 0));
            leafCount += static_cast<std::size_t>(isMet & (escapeOrItem >= 0));
        }

        void MakeRoom() {
            if (std::max(innerCount, leafCount) + 2 <= leafList.GetCapacity()) return;
            innerList.Grow();
            leafList.Grow();
            inner = innerList.GetData();
            leaves = leafList.GetData();
        }

        IndexList innerList;
        IndexList& leafList;
        std::uint32_t* inner;  // their children are visited in this order
        std::uint32_t* leaves;
        std::size_t innerCount = 0;
        std::size_t leafCount = 0;
    };

    template <class Overlaps>
    void VisitRange(Walk& walk, Overlaps const& overlaps, std::size_t node, std::size_t end) const {
        while (node < end) {
            std::int32_t const escapeOrItem = nodes_[node].escapeOrItem;
            walk.Note(node, escapeOrItem, IsMet(overlaps, node));
            walk.MakeRoom();
            node += GetSize(escapeOrItem);
        }
    }

    template <class Overlaps>
    bool IsMet(Overlaps const& overlaps, std::size_t node) const {
        Box const box = Load(node);
        return overlaps(box.center, box.halfExtent);
    }

    Box Load(std::size_t node) const {
        Float4 sum(0.0f);
        Float4 difference(0.0f);
        LoadNode(nodes_[node], sum, difference);
        return {sum * halfCell_, difference * halfCell_};
    }

    /// The number of nodes in a subtree; 1 for a leaf. As arithmetic: ~e is -e - 1.
    static std::size_t GetSize(std::int64_t e) { return static_cast<std::size_t>(1 + (~e & e >> 63)); }

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

}  // namespace

std::vector<unsigned> FindItemsAlongRay(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray) {
    RayTest const isMet(Narrow(ray.origin - tree.getOrigin()), Narrow(ray.direction));
    return MetLeaves(tree, isMet).GetItems();
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
