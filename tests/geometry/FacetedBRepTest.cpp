#include <GeometryObjectLib/FacetedBRep.h>

#include <gtest/gtest.h>

namespace {

using GeometryObjectLib::FacetedBRep;
using Loop = std::vector<std::uint32_t>;

/// Two faces, the second with two holes.
FacetedBRep MakeShape() {
    FacetedBRep shape;
    shape.vertices.resize(12);
    shape.vertices[3] = {1, 2, 3};
    shape.faces = {{0, 1, 2}, {0, 1, 2, 3}};
    shape.holes[1] = {{4, 5, 6}, {7, 8, 9, 10}};
    return shape;
}

TEST(FacetedBRep, DefaultIsEmpty) {
    FacetedBRep const shape;
    EXPECT_EQ(shape.GetFaceCount(), 0u);
    EXPECT_TRUE(shape.GetVertices().empty());
    EXPECT_TRUE(shape.GetInnerLoops().empty());
}

TEST(FacetedBRep, GivesItsLoops) {
    FacetedBRep const shape = MakeShape();
    EXPECT_EQ(shape.GetFaceCount(), 2u);
    EXPECT_EQ(shape.GetOuterLoop(1), (Loop{0, 1, 2, 3}));
    EXPECT_EQ(shape.GetInnerLoopCount(1), 2u);
    EXPECT_EQ(shape.GetInnerLoop(1, 1), (Loop{7, 8, 9, 10}));
    EXPECT_EQ(shape.GetVertices()[3].z, 3);
    EXPECT_EQ(&shape.GetFaces(), &shape.faces);
}

TEST(FacetedBRep, FaceWithoutAnEntryHasNoInnerLoops) {
    FacetedBRep const shape = MakeShape();
    EXPECT_EQ(shape.GetInnerLoopCount(0), 0u);
    EXPECT_EQ(shape.GetInnerLoopCount(77), 0u);
    EXPECT_EQ(shape.GetInnerLoops().size(), 1u);
}

TEST(FacetedBRep, CopyIsIndependent) {
    FacetedBRep const shape = MakeShape();
    FacetedBRep copy = shape;
    copy.vertices[3].x = 9;
    copy.faces[0][0] = 5;
    copy.holes.clear();
    EXPECT_EQ(shape.vertices[3].x, 1);
    EXPECT_EQ(shape.faces[0][0], 0u);
    EXPECT_EQ(shape.GetInnerLoopCount(1), 2u);
}

}  // namespace
