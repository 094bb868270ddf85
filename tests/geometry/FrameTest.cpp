#include "geometry/Frame.h"

#include <gtest/gtest.h>

namespace {

using namespace GeometryObjectLib;

TEST(Frame, AxesOfAnyLengthGiveTheUnitFrame) {
    Frame const frame = Frame::FromAxes({}, {2, 0, 0}, {0, 3, 0});
    EXPECT_EQ(frame.x.x, 1);
    EXPECT_EQ(frame.y.y, 1);
    EXPECT_EQ(frame.z.z, 1);
}

}  // namespace
