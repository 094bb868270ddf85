#include <GeometryObjectLib/Vertex.h>

#include <gtest/gtest.h>

namespace {

using GeometryObjectLib::Vertex;

TEST(Vertex, QuotientDividesEachComponentInsteadOfMultiplyingByTheInverse) {
    Vertex const quotient = Vertex{1, 5, 7} / 49.0;
    EXPECT_EQ(quotient.x, 1 / 49.0);
    EXPECT_EQ(quotient.y, 5 / 49.0);
    EXPECT_EQ(quotient.z, 7 / 49.0);
    EXPECT_NE(quotient.y, 5 * (1 / 49.0));
}

}  // namespace
