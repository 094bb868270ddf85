#include <Tools/QaabBuilder.h>

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Tools::QaabBuilder;
using Node = QuantizedAxisAlignedBoxTreeNode_s;

bool SameNode(Node const& a, Node const& b) { return std::memcmp(&a, &b, sizeof(Node)) == 0; }

/// Unit boxes with their lower corners at the given positions.
RawModel UnitBoxesAt(std::vector<Vector3f> const& positions) {
    RawModel model;
    auto const entity = model.AddEntity();
    auto const definition = model.AddDefinition({0, 0, 0}, {1, 1, 1});
    for (Vector3f const& p : positions) model.AddInstance(entity, definition, At(p.x, p.y, p.z));
    return model;
}

QaabBuilder BuildTree(RawModel const& model) {
    auto const buffer = model.Write();
    QaabBuilder builder;
    EXPECT_TRUE(builder.Build(buffer.data()));
    return builder;
}

void ExpectPlainTree(RawModel const& model) {
    auto const builder = BuildTree(model);
    PlainTree const expected(PlainBoxes(model));
    EXPECT_TRUE(SameBits(builder.getOrigin(), {expected.origin[0], expected.origin[1], expected.origin[2]}));
    EXPECT_TRUE(SameBits(builder.getBvhQuantization(),
                         {expected.quantization[0], expected.quantization[1], expected.quantization[2]}));
    ASSERT_EQ(builder.getNodes().size(), expected.nodes.size());
    for (std::size_t k = 0; k < expected.nodes.size(); ++k) {
        ASSERT_TRUE(SameNode(builder.getNodes()[k], expected.nodes[k])) << "node " << k;
    }
}

TEST(QaabBuilder, IsEmptyBeforeTheFirstBuild) {
    QaabBuilder const builder;
    EXPECT_TRUE(builder.getNodes().empty());
    EXPECT_EQ(builder.getOrigin().x, 0);
    EXPECT_EQ(builder.getBvhQuantization().x, 0);
}

TEST(QaabBuilder, OneInstanceGivesOneLeafOverTheWholeGrid) {
    auto const builder = BuildTree(UnitBoxesAt({{5, 6, 7}}));
    ASSERT_EQ(builder.getNodes().size(), 1u);
    EXPECT_TRUE(SameNode(builder.getNodes()[0], {0, 65535, 0, 65535, 0, 65535, 0}));
    EXPECT_TRUE(SameBits(builder.getOrigin(), {5, 6, 7}));
    EXPECT_TRUE(SameBits(builder.getBvhQuantization(), {65535, 65535, 65535}));
}

TEST(QaabBuilder, TwoInstancesGiveAnInnerNodeAndLeavesInInstanceOrder) {
    auto const builder = BuildTree(UnitBoxesAt({{0, 0, 0}, {2, 0, 0}}));
    ASSERT_EQ(builder.getNodes().size(), 3u);
    EXPECT_TRUE(SameNode(builder.getNodes()[0], {0, 65535, 0, 65535, 0, 65535, -3}));
    EXPECT_TRUE(SameNode(builder.getNodes()[1], {0, 21845, 0, 65535, 0, 65535, 0}));
    EXPECT_TRUE(SameNode(builder.getNodes()[2], {43690, 65535, 0, 65535, 0, 65535, 1}));
}

TEST(QaabBuilder, NodeCountAndRootEscapeFollowFromTheInstanceCount) {
    for (std::uint32_t count = 1; count < 40; ++count) {
        auto const builder = BuildTree(MakeRandomModel(count, count));
        EXPECT_EQ(builder.getNodes().size(), 2 * count - 1);
        EXPECT_EQ(builder.getNodes()[0].escapeOrItem, count == 1 ? 0 : 1 - 2 * static_cast<std::int32_t>(count));
    }
}

TEST(QaabBuilder, PartitionIsBySwapsAndNotStable) {
    // Along x the mean is 4.5: items 1, 3, 4 and 5 swap to the front, which leaves 2 before 0.
    auto const builder = BuildTree(UnitBoxesAt({{0, 0, 0}, {7, 0, 0}, {1, 0, 0}, {6, 0, 0}, {5, 0, 0}, {8, 0, 0}}));
    std::vector<std::int32_t> leaves;
    for (Node const& node : builder.getNodes()) {
        if (node.escapeOrItem >= 0) leaves.push_back(node.escapeOrItem);
    }
    EXPECT_EQ(leaves, (std::vector<std::int32_t>{1, 3, 4, 5, 2, 0}));
}

TEST(QaabBuilder, FlatAxisQuantizesToTheWholeGridWithAnInfiniteScale) {
    RawModel model;
    auto const entity = model.AddEntity();
    auto const flat = model.AddDefinition({0, 0, 0}, {1, 1, 0});
    for (int i = 0; i < 5; ++i) model.AddInstance(entity, flat, At(2 * i, 0, 4));
    auto const builder = BuildTree(model);
    EXPECT_TRUE(std::isinf(builder.getBvhQuantization().z));
    for (Node const& node : builder.getNodes()) {
        EXPECT_EQ(node.minZ, 0);
        EXPECT_EQ(node.maxZ, 65535);
    }
    ExpectPlainTree(model);
}

TEST(QaabBuilder, EqualBoxesAreSplitInTheMiddle) {
    auto const builder = BuildTree(UnitBoxesAt(std::vector<Vector3f>(7)));
    std::vector<std::int32_t> escapes;
    for (Node const& node : builder.getNodes()) escapes.push_back(node.escapeOrItem);
    EXPECT_EQ(escapes, (std::vector<std::int32_t>{-13, -5, 0, -3, 1, 2, -7, -3, 3, 4, -3, 5, 6}));
}

TEST(QaabBuilder, InnerNodesHoldTheirChildrenAndSkipTheirSubtrees) {
    auto const builder = BuildTree(MakeRandomModel(11, 500));
    auto const& nodes = builder.getNodes();
    std::vector<bool> seen(500);
    for (std::size_t k = 0; k < nodes.size(); ++k) {
        if (nodes[k].escapeOrItem >= 0) {
            EXPECT_FALSE(seen[static_cast<std::size_t>(nodes[k].escapeOrItem)]);
            seen[static_cast<std::size_t>(nodes[k].escapeOrItem)] = true;
            continue;
        }
        auto const size = [&](std::size_t n) {
            return nodes[n].escapeOrItem < 0 ? static_cast<std::size_t>(-nodes[n].escapeOrItem) : std::size_t{1};
        };
        Node const& left = nodes[k + 1];
        Node const& right = nodes[k + 1 + size(k + 1)];
        EXPECT_EQ(size(k), 1 + size(k + 1) + size(k + 1 + size(k + 1)));
        EXPECT_EQ(nodes[k].minX, std::min(left.minX, right.minX));
        EXPECT_EQ(nodes[k].maxX, std::max(left.maxX, right.maxX));
        EXPECT_EQ(nodes[k].minY, std::min(left.minY, right.minY));
        EXPECT_EQ(nodes[k].maxY, std::max(left.maxY, right.maxY));
        EXPECT_EQ(nodes[k].minZ, std::min(left.minZ, right.minZ));
        EXPECT_EQ(nodes[k].maxZ, std::max(left.maxZ, right.maxZ));
    }
}

TEST(QaabBuilder, FailedBuildKeepsTheEarlierTree) {
    auto builder = BuildTree(UnitBoxesAt({{5, 6, 7}}));
    RawModel wrongIdentifier = UnitBoxesAt({{0, 0, 0}});
    wrongIdentifier.identifier = "QLN9";
    RawModel withoutGeometry;
    withoutGeometry.hasGeometry = false;
    for (RawModel const& model : {RawModel(), wrongIdentifier, withoutGeometry}) {
        auto const buffer = model.Write();
        EXPECT_FALSE(builder.Build(buffer.data()));
        EXPECT_EQ(builder.getNodes().size(), 1u);
        EXPECT_EQ(builder.getOrigin().x, 5);
    }
}

TEST(QaabBuilder, RebuildingReplacesTheTree) {
    QaabBuilder builder;
    for (std::uint32_t const count : {300u, 4u, 70u}) {
        auto const model = MakeRandomModel(count, count);
        auto const buffer = model.Write();
        ASSERT_TRUE(builder.Build(buffer.data()));
        PlainTree const expected(PlainBoxes(model));
        ASSERT_EQ(builder.getNodes().size(), expected.nodes.size());
        EXPECT_TRUE(SameNode(builder.getNodes().back(), expected.nodes.back()));
    }
}

TEST(QaabBuilder, GivesTheBitsOfThePlainRecursion) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kRotated, RandomPlacements::kMixed}) {
        for (std::uint32_t count = 1; count < 20; ++count) {
            SCOPED_TRACE(count);
            ExpectPlainTree(MakeRandomModel(count, count, style));
        }
        for (std::uint32_t seed = 100; seed < 103; ++seed) {
            SCOPED_TRACE(seed);
            ExpectPlainTree(MakeRandomModel(seed, 2000, style));
        }
    }
}

TEST(QaabBuilder, GivesTheBitsOfThePlainRecursionForClustersAndForPositionsThatAreNotNumbers) {
    RawModel model = MakeRandomModel(5, 600, RandomPlacements::kAligned);
    for (std::size_t i = 0; i < 600; i += 3) (*model.placements)[i].origin = {1, 1, 1};
    for (std::size_t i = 0; i < 300; ++i) (*model.placements)[i].origin[0] = std::pow(1.05, static_cast<double>(i));
    ExpectPlainTree(model);
    for (std::size_t i = 50; i < 60; ++i) (*model.placements)[i].origin[1] = std::nan("");
    ExpectPlainTree(model);
}

}  // namespace
