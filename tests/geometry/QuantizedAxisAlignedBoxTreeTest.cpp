#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include "picking/PickScene.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <utility>

namespace {

using namespace GeometryObjectLib;
using Quorlan::Testing::MakeTree;
using Tree = QuantizedAxisAlignedBoxTree;
using Node = QuantizedAxisAlignedBoxTreeNode_s;
using Quad = QuantizedAxisAlignedBoxTreeQuad_s;

Tree MakeRandomTree(std::size_t boxCount) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> between(0, 100);
    std::vector<AxisAlignedBox3> boxes(boxCount);
    for (auto& box : boxes) box = {{between(engine), between(engine), between(engine) / 10}, {0.5, 0.25, 1}};
    return MakeTree(boxes);
}

std::size_t GetSize(Node const& node) {
    return node.escapeOrItem < 0 ? static_cast<std::size_t>(-std::int64_t{node.escapeOrItem}) : 1;
}

std::vector<std::size_t> GetGrandchildren(std::vector<Node> const& nodes, std::size_t node) {
    std::vector<std::size_t> all;
    std::size_t const left = node + 1;
    std::size_t const right = left + GetSize(nodes[left]);
    for (std::size_t const child : {left, right}) {
        all.push_back(child + 1);
        all.push_back(child + 1 + GetSize(nodes[child + 1]));
    }
    return all;
}

TEST(QuantizedAxisAlignedBoxTree, HoldsWhatItIsGiven) {
    Tree const tree({1, 2, 3}, {4, 5, 6}, std::vector<Node>{{0, 1, 2, 3, 4, 5, 6}});
    EXPECT_EQ(tree.getOrigin().y, 2);
    EXPECT_EQ(tree.getBvhQuantization().z, 6);
    ASSERT_EQ(tree.getNodes().size(), 1u);
    EXPECT_EQ(tree.getNodes()[0].maxZ, 5);
    EXPECT_EQ(tree.getNodes()[0].escapeOrItem, 6);
    EXPECT_TRUE(tree.getUpperQuads().empty());
}

TEST(QuantizedAxisAlignedBoxTree, EmptyTreeHasNoQuads) {
    EXPECT_TRUE(Tree().getUpperQuads().empty());
    EXPECT_TRUE(Tree({}, {}, {}).getUpperQuads().empty());
}

TEST(QuantizedAxisAlignedBoxTree, SmallTreeHasNoQuads) { EXPECT_TRUE(MakeRandomTree(30).getUpperQuads().empty()); }

TEST(QuantizedAxisAlignedBoxTree, QuadsAreTheGrandchildrenOfTheirNodes) {
    Tree const tree = MakeRandomTree(20000);
    auto const& nodes = tree.getNodes();
    auto const& quads = tree.getUpperQuads();
    ASSERT_GT(quads.size(), 50u);
    std::vector<std::size_t> nodeOfQuad(quads.size(), nodes.size());
    nodeOfQuad[0] = 0;
    for (std::size_t i = 0; i < quads.size(); ++i) {
        ASSERT_LT(nodeOfQuad[i], nodes.size());
        auto const expected = GetGrandchildren(nodes, nodeOfQuad[i]);
        for (std::size_t k = 0; k < 4; ++k) {
            Node const& node = nodes[expected[k]];
            std::uint16_t const bounds[] = {node.minX, node.maxX, node.minY, node.maxY, node.minZ, node.maxZ};
            for (std::size_t row = 0; row < 6; ++row) ASSERT_EQ(quads[i].bounds[row][k], bounds[row]);
            ASSERT_LT(node.escapeOrItem, 0);
            std::int32_t const child = quads[i].child[k];
            if (child < 0) {
                ASSERT_GT(~child, static_cast<std::int32_t>(i));
                nodeOfQuad[static_cast<std::size_t>(~child)] = expected[k];
            } else {
                ASSERT_EQ(static_cast<std::size_t>(child), expected[k]);
            }
        }
    }
}

TEST(QuantizedAxisAlignedBoxTree, QuadsTakeAtMostOneBytePerLeaf) {
    for (std::size_t const leaves : {100u, 300u, 1000u, 1500u, 5000u, 20000u}) {
        EXPECT_LE(MakeRandomTree(leaves).getUpperQuads().size() * sizeof(Quad), leaves) << leaves;
    }
}

TEST(QuantizedAxisAlignedBoxTree, CopiesAreIndependent) {
    Tree first = MakeRandomTree(5000);
    Tree const second = first;
    std::size_t const quads = first.getUpperQuads().size();
    first = Tree();
    EXPECT_EQ(second.getUpperQuads().size(), quads);
    EXPECT_EQ(second.getNodes().size(), 9999u);
    EXPECT_TRUE(first.getUpperQuads().empty());
}

TEST(QuantizedAxisAlignedBoxTree, NodesThatMakeNoTreeAreKeptAndNotFollowed) {
    auto const nodes = MakeRandomTree(500).getNodes();
    for (std::int32_t const word : {-1, -2, -3, -50, -999, -1000, -5000, std::numeric_limits<std::int32_t>::min(), 7}) {
        for (std::size_t const place : {0u, 1u, 2u, 3u, 70u, 998u}) {
            auto broken = nodes;
            broken[place].escapeOrItem = word;
            EXPECT_EQ(Tree({}, {1, 1, 1}, std::move(broken)).getNodes().size(), 999u);
        }
    }
}

}  // namespace
