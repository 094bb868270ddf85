#include "mesh/GraphicsSkeleton.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;
using GeometryObjectLib::Vertex;
using Quorlan::Tools::MakeSkeleton;

constexpr double kPi = 3.141592653589793;

FacetedBRep SkeletonOf(GraphicsContainer const& graphics) {
    FacetedBRep skeleton;
    MakeSkeleton(graphics, skeleton);
    return skeleton;
}

void ExpectNear(Vertex const& a, Vertex const& b) {
    EXPECT_LT(Length(a - b), 1e-15) << a.x << " " << a.y << " " << a.z;
}

TEST(GraphicsSkeleton, LinesGiveTheirEndsAndTheLoopTheCounts) {
    auto const skeleton = SkeletonOf({{{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 1, 0}}}, {}});
    ASSERT_EQ(skeleton.vertices.size(), 4u);
    ExpectNear(skeleton.vertices[3], {1, 1, 0});
    EXPECT_EQ(skeleton.faces, (std::vector<std::vector<std::uint32_t>>{{2, 0}}));
}

TEST(GraphicsSkeleton, ArcsGiveCentreAxisSweepStartAndEnd) {
    auto const skeleton = SkeletonOf({{}, {{{1, 2, 3}, {0, 0, 1}, {1, 0, 0}, 2, kPi / 2}}});
    ASSERT_EQ(skeleton.vertices.size(), 5u);
    ExpectNear(skeleton.vertices[0], {1, 2, 3});
    ExpectNear(skeleton.vertices[1], {1, 2, 4});
    ExpectNear(skeleton.vertices[2], {1, 2, 3 + kPi / 2});
    ExpectNear(skeleton.vertices[3], {3, 2, 3});
    ExpectNear(skeleton.vertices[4], {1, 4, 3});
    EXPECT_EQ(skeleton.faces, (std::vector<std::vector<std::uint32_t>>{{0, 1}}));
}

TEST(GraphicsSkeleton, CollinearPointsGetOneBesideThem) {
    for (Vertex const& end : {Vertex{2, 0, 0}, Vertex{0, 0, -5}, Vertex{1e-3, 1e-3, 1e-3}, Vertex{4, 5, 6}}) {
        auto const skeleton = SkeletonOf({{{{0, 0, 0}, end}, {end, end + end}}, {}});
        ASSERT_EQ(skeleton.vertices.size(), 5u);
        EXPECT_NEAR(Length(skeleton.vertices[4]), 1, 1e-15);
        EXPECT_NEAR(Dot(skeleton.vertices[4], end), 0, 1e-15);
    }
}

TEST(GraphicsSkeleton, NearlyCollinearPointsCountAsCollinear) {
    for (auto const& [offset, isCollinear] : {std::pair{0.9e-6, true}, {1.1e-6, false}}) {
        auto const skeleton = SkeletonOf({{{{0, 0, 0}, {4, 0, 0}}, {{1, offset, 0}, {2, 0, 0}}}, {}});
        EXPECT_EQ(skeleton.vertices.size(), isCollinear ? 5u : 4u) << offset;
    }
}

TEST(GraphicsSkeleton, CoincidentPointsGetNone) {
    EXPECT_EQ(SkeletonOf({{{{1, 1, 1}, {1, 1, 1}}}, {}}).vertices.size(), 2u);
}

TEST(GraphicsSkeleton, StorageOfAnEarlierSkeletonIsOverwritten) {
    FacetedBRep skeleton;
    MakeSkeleton({{{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 1, 0}}}, {}}, skeleton);
    MakeSkeleton({{{{0, 0, 0}, {1, 0, 0}}}, {}}, skeleton);
    EXPECT_EQ(skeleton.vertices.size(), 3u);
    EXPECT_EQ(skeleton.faces[0][0], 1u);
}

}  // namespace
