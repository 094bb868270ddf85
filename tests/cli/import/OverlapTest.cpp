#include "shape/Overlap.h"

#include <gtest/gtest.h>

#include "support/Shapes.h"

namespace QuorlanProgram::Import {
namespace {

using TestSupport::MakeBox;
using TestSupport::MakeUnitCube;

TEST(Overlap, WindsOnceRoundAPointInsideAndNotRoundOneOutside) {
    auto const cube = MakeUnitCube();
    EXPECT_NEAR(GetWindingNumber(cube, {0.5, 0.2, 0.9}), 1, 1e-9);
    EXPECT_NEAR(GetWindingNumber(cube, {1.5, 0.2, 0.9}), 0, 1e-9);
}

TEST(Overlap, AHoleIsOutside) {
    auto const tube = Extrude(
        {{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}}}, {0, 0, 1});
    EXPECT_NEAR(GetWindingNumber(tube, {2, 2, 0.5}), 0, 1e-9);
    EXPECT_NEAR(GetWindingNumber(tube, {0.5, 2, 0.5}), 1, 1e-9);
}

TEST(Overlap, BoxesThatShareABitOverlap) {
    EXPECT_TRUE(OverlapAtSamples(MakeUnitCube(), MakeBox({0.9, 0.9, 0.9}, {2, 2, 2})));
    EXPECT_FALSE(OverlapAtSamples(MakeUnitCube(), MakeBox({1, 0, 0}, {2, 1, 1})));
}

TEST(Overlap, BoxesAloneDoNotMakeAnOverlap) {
    auto const corner = Extrude({{{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {1, 1, 0}, {1, 4, 0}, {0, 4, 0}}}, {0, 0, 1});
    EXPECT_FALSE(OverlapAtSamples(corner, MakeBox({2, 2, 0}, {3, 3, 1})));
}

}  // namespace
}  // namespace QuorlanProgram::Import
