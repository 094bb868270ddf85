#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include "picking/PickScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>

namespace {

using namespace GeometryObjectLib;
using Quorlan::Testing::MakeTree;
using Tree = QuantizedAxisAlignedBoxTree;
using Node = QuantizedAxisAlignedBoxTreeNode_s;
using WideNode = QuantizedAxisAlignedBoxTreeWideNode_s;

Tree MakeRandomTree(std::size_t boxCount) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> between(0, 100);
    std::vector<AxisAlignedBox3> boxes(boxCount);
    for (auto& box : boxes) box = {{between(engine), between(engine), between(engine) / 10}, {0.5, 0.25, 1}};
    return MakeTree(boxes);
}

/// The box of a wide node's child, in grid cells.
Node GetBoxOfChild(WideNode const& wide, std::size_t child) {
    auto const get = [&](std::size_t row) {
        unsigned const step = 1u << (wide.form >> 4 * (row / 2) & 15);
        unsigned const cells = wide.bounds[row][child] * step + (row % 2 == 1 ? step - 1 : 0) + wide.base[row / 2];
        return static_cast<std::uint16_t>(std::min(cells, 65535u));
    };
    return {get(0), get(1), get(2), get(3), get(4), get(5), 0};
}

bool Contains(Node const& outer, Node const& inner) {
    return outer.minX <= inner.minX && inner.maxX <= outer.maxX && outer.minY <= inner.minY &&
           inner.maxY <= outer.maxY && outer.minZ <= inner.minZ && inner.maxZ <= outer.maxZ;
}

/// The leaves below a wide node, child by child. Every box on the way must contain those below it.
std::vector<std::size_t> GetLeavesBelow(Tree const& tree, std::size_t index) {
    WideNode const& wide = tree.getWideNodes().at(index);
    std::vector<std::size_t> leaves;
    for (std::size_t i = 0; i <= (wide.form >> 12 & 7u); ++i) {
        std::vector<std::size_t> below;
        if ((wide.form >> 15) != 0) {
            below.push_back(wide.first + (wide.leafOffsets >> 4 * i & 15));
        } else {
            EXPECT_GT(wide.first + i, index);
            below = GetLeavesBelow(tree, wide.first + i);
        }
        for (std::size_t const leaf : below) {
            EXPECT_GE(tree.getNodes().at(leaf).escapeOrItem, 0);
            EXPECT_TRUE(Contains(GetBoxOfChild(wide, i), tree.getNodes()[leaf])) << leaf;
        }
        leaves.insert(leaves.end(), below.begin(), below.end());
    }
    return leaves;
}

std::vector<std::size_t> GetLeaves(Tree const& tree) {
    std::vector<std::size_t> leaves;
    for (std::size_t i = 0; i < tree.getNodes().size(); ++i) {
        if (tree.getNodes()[i].escapeOrItem >= 0) leaves.push_back(i);
    }
    return leaves;
}

/// A tree in which every inner node has one leaf and all the rest for its children, the leaf first or last by turns.
std::vector<Node> MakeChain(std::uint16_t leaves) {
    std::vector<Node> nodes;
    auto const add = [&](std::uint16_t lower, std::uint16_t upper, std::int32_t word) {
        nodes.push_back(
            {static_cast<std::uint16_t>(10 * lower), static_cast<std::uint16_t>(10 * upper + 5), 0, 9, 3, 4, word});
    };
    std::vector<std::int32_t> after;  // items of the leaves that come behind the rest
    for (std::uint16_t i = 0; i + 1 < leaves; ++i) {
        add(0, leaves, -2 * (leaves - i) + 1);
        if (i % 2 == 0)
            add(i, i, i);
        else
            after.push_back(i);
    }
    add(static_cast<std::uint16_t>(leaves - 1), static_cast<std::uint16_t>(leaves - 1), leaves - 1);
    while (!after.empty()) {
        auto const item = static_cast<std::uint16_t>(after.back());
        add(item, item, item);
        after.pop_back();
    }
    return nodes;
}

TEST(QuantizedAxisAlignedBoxTree, HoldsWhatItIsGiven) {
    Tree const tree({1, 2, 3}, {4, 5, 6}, std::vector<Node>{{0, 1, 2, 3, 4, 5, 6}});
    EXPECT_EQ(tree.getOrigin().y, 2);
    EXPECT_EQ(tree.getBvhQuantization().z, 6);
    ASSERT_EQ(tree.getNodes().size(), 1u);
    EXPECT_EQ(tree.getNodes()[0].maxZ, 5);
    EXPECT_EQ(tree.getNodes()[0].escapeOrItem, 6);
    EXPECT_TRUE(tree.getWideNodes().empty());
}

TEST(QuantizedAxisAlignedBoxTree, EmptyTreeHasNoWideNodes) {
    EXPECT_TRUE(Tree().getWideNodes().empty());
    EXPECT_TRUE(Tree({}, {}, {}).getWideNodes().empty());
}

TEST(QuantizedAxisAlignedBoxTree, SmallTreeHasNoWideNodes) {
    EXPECT_TRUE(MakeRandomTree(32).getWideNodes().empty());
    EXPECT_FALSE(MakeRandomTree(33).getWideNodes().empty());
}

TEST(QuantizedAxisAlignedBoxTree, WideNodesHoldEveryLeafOnceInBoxesThatContainIt) {
    for (std::size_t const leaves : {33u, 63u, 64u, 65u, 500u, 513u, 4097u, 20000u}) {
        Tree const tree = MakeRandomTree(leaves);
        EXPECT_EQ(GetLeavesBelow(tree, 0), GetLeaves(tree)) << leaves;
    }
}

TEST(QuantizedAxisAlignedBoxTree, WideNodesOfAChainHoldEveryLeafOnce) {
    for (unsigned const count : {40u, 41u, 300u, 2000u}) {
        auto const leaves = static_cast<std::uint16_t>(count);
        Tree const tree({}, {1, 1, 1}, MakeChain(leaves));
        ASSERT_FALSE(tree.getWideNodes().empty());
        EXPECT_EQ(GetLeavesBelow(tree, 0), GetLeaves(tree)) << leaves;
        EXPECT_LE(tree.getWideNodes().size(), 2u * leaves);
    }
}

TEST(QuantizedAxisAlignedBoxTree, StepsOfAWideNodeAreAsSmallAsEightBitsAllow) {
    Tree const tree = MakeRandomTree(3000);
    for (WideNode const& wide : tree.getWideNodes()) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            unsigned const shift = wide.form >> 4 * axis & 15;
            unsigned const largest = *std::max_element(wide.bounds[2 * axis + 1], wide.bounds[2 * axis + 1] + 8);
            EXPECT_LE(shift, 8u);
            EXPECT_GE(shift == 0 ? 255u : largest, 128u);
        }
    }
}

TEST(QuantizedAxisAlignedBoxTree, WideNodesTakeAtMostTwentyBytesPerLeafWhereSubtreesAreAlike) {
    std::mt19937 engine(3);
    for (int i = 0; i < 60; ++i) {
        std::size_t const leaves = 33 + engine() % (i % 10 == 0 ? 40000 : 1500);
        EXPECT_LE(MakeRandomTree(leaves).getWideNodes().size() * sizeof(WideNode), 20 * leaves) << leaves;
    }
}

TEST(QuantizedAxisAlignedBoxTree, CopiesAreIndependent) {
    Tree first = MakeRandomTree(5000);
    Tree const second = first;
    std::size_t const wideNodes = first.getWideNodes().size();
    first = Tree();
    EXPECT_EQ(second.getWideNodes().size(), wideNodes);
    EXPECT_EQ(second.getNodes().size(), 9999u);
    EXPECT_TRUE(first.getWideNodes().empty());
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
