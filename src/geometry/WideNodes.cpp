#include "geometry/WideNodes.h"

#include "geometry/BoxTreeNodes.h"
#include "model/LargePages.h"

#include <algorithm>
#include <array>
#include <optional>

namespace GeometryObjectLib {
namespace {

using Node = QuantizedAxisAlignedBoxTreeNode_s;
using WideNode = QuantizedAxisAlignedBoxTreeWideNode_s;

constexpr std::size_t kLeastNodes = 64;                   ///< below, queries gain nothing
constexpr std::size_t kMostNodes = std::size_t{1} << 28;  ///< so that a child of a wide node has a number of 32 bits
constexpr std::size_t kWidth = 8;

/// The children of a node that is followed by its two subtrees and nothing else. Nodes come from the caller: no place
/// beyond `end`, where the node's subtree ends, is looked at.
std::optional<std::array<std::size_t, 2>> FindTwoChildren(std::vector<Node> const& nodes, std::size_t node,
                                                          std::size_t end) {
    if (end - node < 3) return std::nullopt;
    std::size_t const left = node + 1;
    std::size_t const leftSize = GetSubtreeSize(nodes[left]);
    if (leftSize >= end - left) return std::nullopt;
    std::size_t const right = left + leftSize;
    if (GetSubtreeSize(nodes[right]) != end - right) return std::nullopt;
    return std::array<std::size_t, 2>{left, right};
}

bool IsInOrder(Node const& node) { return node.minX <= node.maxX && node.minY <= node.maxY && node.minZ <= node.maxZ; }

bool Contains(Node const& outer, Node const& inner) {
    return outer.minX <= inner.minX && inner.maxX <= outer.maxX && outer.minY <= inner.minY &&
           inner.maxY <= outer.maxY && outer.minZ <= inner.minZ && inner.maxZ <= outer.maxZ;
}

/// Whether all nodes are one tree and every inner node has two children whose boxes its own contains.
bool AreNested(std::vector<Node> const& nodes) {
    if (nodes.empty() || GetSubtreeSize(nodes[0]) != nodes.size()) return false;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!IsInOrder(nodes[i])) return false;
        if (nodes[i].escapeOrItem >= 0) continue;
        auto const children = FindTwoChildren(nodes, i, i + GetSubtreeSize(nodes[i]));
        if (!children) return false;
        for (std::size_t const child : *children) {
            if (!Contains(nodes[i], nodes[child])) return false;
        }
    }
    return true;
}

/// Some nodes whose subtrees are all of another's, depth first.
struct Children {
    std::array<std::size_t, kWidth> node;
    std::size_t count = 0;
};

/// REQUIRES: the tree is nested.
class WideNodeMaker {
public:
    explicit WideNodeMaker(std::vector<Node> const& nodes) : nodes_(nodes) {}

    std::vector<WideNode> Make() {
        std::size_t const usualCount = CountLeaves(nodes_.size()) / 4;
        wideNodes_.reserve(usualCount);
        Quorlan::AdviseLargePages(wideNodes_.data(), usualCount * sizeof(WideNode));
        tops_.reserve(usualCount);
        tops_.push_back(0);
        for (std::size_t i = 0; i < tops_.size(); ++i) wideNodes_.push_back(MakeOne(tops_[i]));
        return std::move(wideNodes_);
    }

private:
    static std::size_t CountLeaves(std::size_t subtreeSize) { return (subtreeSize + 1) / 2; }

    WideNode MakeOne(std::size_t top) {
        bool const isLowest = CountLeaves(GetSubtreeSize(nodes_[top])) <= kWidth;
        Children const children = FindChildren(top, isLowest);
        WideNode wide;
        SetBounds(wide, nodes_[top], children);
        wide.form = static_cast<std::uint16_t>(wide.form | (children.count - 1) << 12 | (isLowest ? 1u << 15 : 0u));
        if (isLowest) {
            wide.first = static_cast<std::uint32_t>(top);
            for (std::size_t i = 0; i < children.count; ++i) {
                wide.leafOffsets |= static_cast<std::uint32_t>(children.node[i] - top) << 4 * i;
            }
        } else {
            wide.first = static_cast<std::uint32_t>(tops_.size());
            tops_.insert(tops_.end(), children.node.begin(),
                         children.node.begin() + static_cast<std::ptrdiff_t>(children.count));
        }
        return wide;
    }

    /// Takes the place of the largest subtree by those of its children until there are eight, or none is too large.
    Children FindChildren(std::size_t top, bool isLowest) const {
        std::size_t const leaves = CountLeaves(GetSubtreeSize(nodes_[top]));
        std::size_t most = 1;  // leaves of a child
        while (!isLowest && most * kWidth < leaves) most *= kWidth;
        Children children;
        children.node[children.count++] = top;
        std::array<std::size_t, kWidth> sizes{GetSubtreeSize(nodes_[top])};
        while (children.count < kWidth) {
            auto const end = sizes.begin() + static_cast<std::ptrdiff_t>(children.count);
            auto const largest = std::max_element(sizes.begin(), end);
            if (CountLeaves(*largest) <= most) break;
            auto const place = static_cast<std::size_t>(largest - sizes.begin());
            std::copy_backward(largest, end, end + 1);
            std::copy_backward(children.node.begin() + (largest - sizes.begin()),
                               children.node.begin() + static_cast<std::ptrdiff_t>(children.count),
                               children.node.begin() + static_cast<std::ptrdiff_t>(children.count) + 1);
            std::size_t const left = children.node[place] + 1;
            sizes[place] = GetSubtreeSize(nodes_[left]);
            sizes[place + 1] -= sizes[place] + 1;
            children.node[place] = left;
            children.node[place + 1] = left + sizes[place];
            ++children.count;
        }
        return children;
    }

    /// In steps that are as small as eight bits allow.
    void SetBounds(WideNode& wide, Node const& top, Children const& children) const {
        using Bound = std::uint16_t Node::*;
        constexpr Bound kLower[] = {&Node::minX, &Node::minY, &Node::minZ};
        constexpr Bound kUpper[] = {&Node::maxX, &Node::maxY, &Node::maxZ};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            unsigned const base = top.*kLower[axis];
            unsigned const extent = top.*kUpper[axis] - base;
            unsigned shift = 0;
            while (extent >> shift > 255) ++shift;
            wide.base[axis] = static_cast<std::uint16_t>(base);
            wide.form = static_cast<std::uint16_t>(wide.form | shift << 4 * axis);
            for (std::size_t i = 0; i < children.count; ++i) {
                Node const& child = nodes_[children.node[i]];
                wide.bounds[2 * axis][i] = static_cast<std::uint8_t>((child.*kLower[axis] - base) >> shift);
                wide.bounds[2 * axis + 1][i] = static_cast<std::uint8_t>((child.*kUpper[axis] - base) >> shift);
            }
        }
    }

    std::vector<Node> const& nodes_;
    std::vector<std::uint32_t> tops_;  // of the wide nodes
    std::vector<WideNode> wideNodes_;
};

}  // namespace

std::vector<WideNode> MakeWideNodes(std::vector<Node> const& nodes) {
    if (nodes.size() < kLeastNodes || nodes.size() > kMostNodes || !AreNested(nodes)) return {};
    return WideNodeMaker(nodes).Make();
}

}  // namespace GeometryObjectLib
