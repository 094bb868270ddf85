#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include "geometry/BoxTreeNodes.h"

#include <array>
#include <optional>

namespace GeometryObjectLib {
namespace {

using Node = QuantizedAxisAlignedBoxTreeNode_s;
using Quad = QuantizedAxisAlignedBoxTreeQuad_s;

constexpr std::size_t kNodesPerQuad = 128;  ///< so that quads take at most one byte per leaf

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

/// The four grandchildren of a node with more than `leastSize` nodes, where there are so many and all are inner nodes.
std::optional<std::array<std::size_t, 4>> FindGrandchildren(std::vector<Node> const& nodes, std::size_t node,
                                                            std::size_t leastSize) {
    std::size_t const size = GetSubtreeSize(nodes[node]);
    if (size < leastSize) return std::nullopt;
    auto const children = FindTwoChildren(nodes, node, node + size);
    if (!children) return std::nullopt;
    auto const left = FindTwoChildren(nodes, (*children)[0], (*children)[1]);
    auto const right = FindTwoChildren(nodes, (*children)[1], node + size);
    if (!left || !right) return std::nullopt;
    std::array<std::size_t, 4> const all{(*left)[0], (*left)[1], (*right)[0], (*right)[1]};
    for (std::size_t const grandchild : all) {
        if (nodes[grandchild].escapeOrItem >= 0) return std::nullopt;
    }
    return all;
}

void SetBox(Quad& quad, std::size_t lane, Node const& node) {
    std::uint16_t const bounds[] = {node.minX, node.maxX, node.minY, node.maxY, node.minZ, node.maxZ};
    for (std::size_t k = 0; k < 6; ++k) quad.bounds[k][lane] = bounds[k];
}

/// Breadth first, so that the upper levels lie together.
std::vector<Quad> MakeQuads(std::vector<Node> const& nodes, std::size_t leastSize) {
    std::vector<Quad> quads;
    if (nodes.empty() || GetSubtreeSize(nodes[0]) != nodes.size()) return quads;
    std::vector<std::array<std::size_t, 4>> grandchildren;  // of each quad
    auto const add = [&](std::size_t node) {
        auto const found = FindGrandchildren(nodes, node, leastSize);
        if (found) grandchildren.push_back(*found);
        return found.has_value();
    };
    add(0);
    for (std::size_t i = 0; i < grandchildren.size(); ++i) {
        Quad quad;
        for (std::size_t lane = 0; lane < 4; ++lane) {
            std::size_t const node = grandchildren[i][lane];
            SetBox(quad, lane, nodes[node]);
            auto const next = static_cast<std::int32_t>(grandchildren.size());
            quad.child[lane] = add(node) ? ~next : static_cast<std::int32_t>(node);
        }
        quads.push_back(quad);
    }
    return quads;
}

bool IsInOrder(Node const& node) { return node.minX <= node.maxX && node.minY <= node.maxY && node.minZ <= node.maxZ; }

bool Contains(Node const& outer, Node const& inner) {
    return outer.minX <= inner.minX && inner.maxX <= outer.maxX && outer.minY <= inner.minY &&
           inner.maxY <= outer.maxY && outer.minZ <= inner.minZ && inner.maxZ <= outer.maxZ;
}

/// Whether every inner node has two children whose boxes its own contains. REQUIRES: the root's subtree is all nodes.
bool AreNested(std::vector<Node> const& nodes) {
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

}  // namespace

QuantizedAxisAlignedBoxTree::QuantizedAxisAlignedBoxTree(Vertex origin, Vertex bvhQuantization,
                                                         std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes)
    : origin_(origin), bvhQuantization_(bvhQuantization), nodes_(std::move(nodes)) {
    for (std::size_t leastSize = kNodesPerQuad;; leastSize *= 2) {
        upperQuads_ = MakeQuads(nodes_, leastSize);
        if (upperQuads_.size() * sizeof(Quad) <= nodes_.size() / 2) break;
    }
    if (!upperQuads_.empty() && !AreNested(nodes_)) upperQuads_.clear();
}

}  // namespace GeometryObjectLib
