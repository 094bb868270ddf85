#include <GeometryObjectLib/AxisAlignedBox3.h>

#include "support/SameBits.h"

#include <gtest/gtest.h>

namespace {

using GeometryObjectLib::AxisAlignedBox3;
using Quorlan::Testing::SameBits;

TEST(AxisAlignedBox3, CornersGiveCentreAndHalfExtent) {
    auto const box = AxisAlignedBox3::FromCorners({-1, 0, 2}, {3, 1, 2});
    EXPECT_TRUE(SameBits(box, AxisAlignedBox3{{1, 0.5, 2}, {2, 0.5, 0}}));
}

TEST(AxisAlignedBox3, CentreAndHalfExtentGiveCorners) {
    AxisAlignedBox3 const box{{1, 0.5, 2}, {2, 0.5, 0}};
    EXPECT_TRUE(SameBits(box.GetMin(), {-1, 0, 2}));
    EXPECT_TRUE(SameBits(box.GetMax(), {3, 1, 2}));
}

TEST(AxisAlignedBox3, DefaultIsAPointAtTheOrigin) {
    EXPECT_TRUE(SameBits(AxisAlignedBox3(), AxisAlignedBox3{{0, 0, 0}, {0, 0, 0}}));
}

}  // namespace
