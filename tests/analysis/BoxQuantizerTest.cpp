#include "analysis/BoxQuantizer.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Quorlan;
using Leaf = GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

/// The leaf of a cube around (center, center, center) on a grid of one line per unit from the origin on.
Leaf QuantizeCube(double center, double half, float scale = 1) {
    BoxQuantizer const quantizer({0, 0, 0}, {scale, scale, scale});
    BoxTreeItem item{};
    Leaf leaf;
    quantizer.Quantize({{center, center, center}, {half, half, half}}, 7, item, leaf);
    EXPECT_EQ(item.instance, 7u);
    EXPECT_EQ(leaf.escapeOrItem, 7);
    EXPECT_EQ(leaf.minX, leaf.minY);
    EXPECT_EQ(leaf.minX, leaf.minZ);
    EXPECT_EQ(leaf.maxX, leaf.maxY);
    EXPECT_EQ(leaf.maxX, leaf.maxZ);
    return leaf;
}

TEST(BoxQuantizer, LowerEndsAreRoundedDownAndUpperEndsUp) {
    Leaf const leaf = QuantizeCube(10.5, 0.25);
    EXPECT_EQ(leaf.minX, 10);
    EXPECT_EQ(leaf.maxX, 11);
    Leaf const onLines = QuantizeCube(10, 2);
    EXPECT_EQ(onLines.minX, 8);
    EXPECT_EQ(onLines.maxX, 12);
}

TEST(BoxQuantizer, LowerEndsAreClampedBelowOnly) {
    EXPECT_EQ(QuantizeCube(0, 3).minX, 0);
    EXPECT_EQ(QuantizeCube(70000, 1).minX, 69999 - 65536);
}

TEST(BoxQuantizer, UpperEndsAreClampedAboveOnly) {
    EXPECT_EQ(QuantizeCube(65535, 3).maxX, 65535);
    EXPECT_EQ(QuantizeCube(-10, 1).maxX, 65536 - 9);
}

TEST(BoxQuantizer, ProductsThatAreNotNumbersGiveTheWholeAxis) {
    Leaf const leaf = QuantizeCube(0, 0, std::numeric_limits<float>::infinity());
    EXPECT_EQ(leaf.minX, 0);
    EXPECT_EQ(leaf.maxX, 65535);
}

}  // namespace
