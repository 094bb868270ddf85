#include "picking/EdgeOracle.h"
#include "picking/EdgeScenes.h"

#include <Tools/Picking/RayToFacetedBRepEdgesBuilder.h>

#include <gtest/gtest.h>

#include <limits>

namespace Quorlan::Testing {

namespace {

using Tools::Picking::RayToFacetedBRepEdgesBuilder;

constexpr float kMaxFloat = std::numeric_limits<float>::max();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Straight down at (x, y) from z = 10.
Ray3f Down(float x, float y) { return {{x, y, 10}, {0, 0, -1}}; }

void ExpectPoint(Vector3f const& actual, Vector3f const& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

/// Two corners joined by an edge, there and back.
FacetedBRep Edge(Vertex const& p, Vertex const& q) {
    FacetedBRep brep;
    brep.vertices = {p, q};
    brep.faces = {{0, 1}};
    return brep;
}

}  // namespace

TEST(RayToFacetedBRepEdgesBuilder, ANewBuilderHoldsZeros) {
    RayToFacetedBRepEdgesBuilder const builder;
    ExpectPoint(builder.GetEdgePoint(), {0, 0, 0});
    EXPECT_EQ(builder.GetRayParameter(), 0);
    EXPECT_EQ(builder.GetWireIndex(), 0u);
}

TEST(RayToFacetedBRepEdgesBuilder, TheRayParameterIsTheDistanceFromTheEdge) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0.75f, 0.5f), {}, Square(1)));
    EXPECT_EQ(builder.GetRayParameter(), 0.25f);
    ExpectPoint(builder.GetEdgePoint(), {1, 0.5f, 0});
    EXPECT_EQ(builder.GetWireIndex(), 0u);
}

TEST(RayToFacetedBRepEdgesBuilder, TheClosingEdgeOfALoopCounts) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(-1.5f, 0.25f), {}, Square(1)));
    ExpectPoint(builder.GetEdgePoint(), {-1, 0.25f, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AnEdgeOfAHoleReportsTheFaceOfTheHole) {
    FacetedBRep brep = Square(8);
    Append(brep, Square(4, 1));
    brep.vertices.insert(brep.vertices.end(), {{-1, -1, 1}, {-1, 1, 1}, {1, 1, 1}});
    brep.holes[1] = {{8, 9, 10}};
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(-1.25f, 0), {}, brep));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 0.25f);
    ExpectPoint(builder.GetEdgePoint(), {-1, 0, 1});
}

TEST(RayToFacetedBRepEdgesBuilder, AnEdgeBehindTheOriginIsMeasuredFromTheOrigin) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build({{0, 3, 4}, {0, 0, 1}}, {}, Edge({-2, 0, 0}, {2, 0, 0})));
    EXPECT_EQ(builder.GetRayParameter(), 5);
    ExpectPoint(builder.GetEdgePoint(), {0, 0, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AParallelEdgeGivesItsFartherEnd) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build({{0, 2, 0}, {1, 0, 0}}, {}, Edge({5, 0, 0}, {9, 0, 0})));
    EXPECT_EQ(builder.GetRayParameter(), 2);
    ExpectPoint(builder.GetEdgePoint(), {9, 0, 0});
    ASSERT_TRUE(builder.Build({{0, 2, 0}, {1, 0, 0}}, {}, Edge({9, 0, 0}, {5, 0, 0})));
    ExpectPoint(builder.GetEdgePoint(), {9, 0, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AnEdgeWhoseClosestPointIsClippedIsRejected) {
    // x > 1 is cut away: half of the edge is left, but not its closest point.
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_FALSE(builder.Build(Down(2, 1), {{{1, 0, 0}, 1}}, Edge({-3, 0, 0}, {3, 0, 0})));
}

TEST(RayToFacetedBRepEdgesBuilder, AnEdgeWhoseClosestPointIsInsideCountsThoughMostOfItIsClipped) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(2, 1), {{{-1, 0, 0}, -1.75f}, {{1, 0, 0}, 2.25f}}, Edge({-300, 0, 0}, {300, 0, 0})));
    ExpectPoint(builder.GetEdgePoint(), {2, 0, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AClosestPointOnAClippingPlaneIsKept) {
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_TRUE(builder.Build(Down(2, 1), {{{1, 0, 0}, 2}}, Edge({-3, 0, 0}, {3, 0, 0})));
}

TEST(RayToFacetedBRepEdgesBuilder, AnEdgeClippedWholeGivesWayToAFartherOne) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0.75f, 0), {{{1, 0, 0}, 0.5f}}, Square(1)));
    ExpectPoint(builder.GetEdgePoint(), {-1, 0, 0});
    EXPECT_EQ(builder.GetRayParameter(), 1.75f);
}

TEST(RayToFacetedBRepEdgesBuilder, AnEdgeThatTouchesTheInsideWithOneEndOnlyIsClippedWhole) {
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_FALSE(builder.Build(Down(-1, 0), {{{1, 0, 0}, 0}}, Edge({0, 0, 0}, {3, 0, 0})));
}

TEST(RayToFacetedBRepEdgesBuilder, APlaneWhoseDistanceIsNotANumberCutsNothing) {
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_TRUE(builder.Build(Down(2, 1), {{{1, 0, 0}, kNaN}}, Edge({-3, 0, 0}, {3, 0, 0})));
}

TEST(RayToFacetedBRepEdgesBuilder, OfFacesThatShareAnEdgeTheLowerOneIsReported) {
    FacetedBRep brep;
    brep.vertices = {{-1, 0, 0}, {1, 0, 0}, {0, 2, 0}, {0, -2, 0}, {0, 0, 9}};
    brep.faces = {{2, 3, 4}, {0, 1, 2}, {1, 0, 3}};
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0.5f, -0.125f), {}, brep));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 0.125f);
    std::swap(brep.faces[1], brep.faces[2]);
    ASSERT_TRUE(builder.Build(Down(0.5f, -0.125f), {}, brep));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 0.125f);
}

TEST(RayToFacetedBRepEdgesBuilder, OfEquallyNearEdgesOfALoopTheFirstIsReported) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0, 0), {}, Square(1)));
    ExpectPoint(builder.GetEdgePoint(), {0, -1, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AnOuterLoopGoesBeforeAnEquallyNearHoleOfALowerFace) {
    FacetedBRep brep = Square(4);
    brep.holes[0] = {{4, 5}};
    brep.vertices.insert(brep.vertices.end(), {{-1, -1, 0}, {-1, 1, 0}, {1, -1, 0}, {1, 1, 0}});
    brep.faces.push_back({6, 7});
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0, 0), {}, brep));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    ExpectPoint(builder.GetEdgePoint(), {1, 0, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AMissGivesTheLargestFloatAndKeepsPointAndFace) {
    FacetedBRep brep = Square(8, -1);
    Append(brep, Square(1));
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(1.5f, 0), {}, brep));
    ASSERT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_FALSE(builder.Build(Down(0, 0), {{{0, 0, 1}, -5}}, brep));
    EXPECT_EQ(builder.GetRayParameter(), kMaxFloat);
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    ExpectPoint(builder.GetEdgePoint(), {1, 0, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, AShapeWithoutFacesOrWithEmptyLoopsIsAMiss) {
    FacetedBRep brep = Square(1);
    brep.faces.clear();
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_FALSE(builder.Build(Down(0, 0), {}, brep));
    EXPECT_EQ(builder.GetRayParameter(), kMaxFloat);
    brep.faces = {{}, {}};
    EXPECT_FALSE(builder.Build(Down(0, 0), {}, brep));
    EXPECT_FALSE(builder.Build(Down(0, 0), {}, {}));
}

TEST(RayToFacetedBRepEdgesBuilder, ALoopOfOneVertexHasNoEdge) {
    FacetedBRep brep = Square(1);
    brep.faces = {{2}};
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_FALSE(builder.Build(Down(1, 1), {}, brep));
}

TEST(RayToFacetedBRepEdgesBuilder, ARepeatedVertexDoesNotHideTheOtherEdges) {
    FacetedBRep brep = Square(1);
    brep.faces = {{0, 1, 1, 2, 2, 3}};
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0, 1.5f), {}, brep));
    ExpectPoint(builder.GetEdgePoint(), {0, 1, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, EdgesWhoseSquaredLengthIsWithinTheEpsilonArePassedOver) {
    RayToFacetedBRepEdgesBuilder builder;
    EXPECT_FALSE(builder.Build(Down(0, 0), {}, Edge({0, 0, 0}, {3.4e-4, 0, 0})));
    EXPECT_TRUE(builder.Build(Down(0, 0), {}, Edge({0, 0, 0}, {3.5e-4, 0, 0})));
}

TEST(RayToFacetedBRepEdgesBuilder, AVertexThatIsNotANumberLosesItsEdgesOnly) {
    FacetedBRep brep = Square(1);
    brep.vertices[0].x = kNaN;
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0, -1), {}, brep));
    ExpectPoint(builder.GetEdgePoint(), {1, -1, 0});
}

TEST(RayToFacetedBRepEdgesBuilder, PositionsAreNarrowedToSinglePrecision) {
    RayToFacetedBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.Build(Down(0, 5), {}, Edge({-1, 1 + 1e-12, 0}, {1, 1 + 1e-12, 0})));
    EXPECT_EQ(builder.GetRayParameter(), 4);
}

TEST(RayToFacetedBRepEdgesBuilder, FindsWhatTheStepByStepSearchFinds) {
    constexpr std::uint32_t kSeed = 4301;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    RayToFacetedBRepEdgesBuilder builder;
    int hits = 0;
    for (int i = 0; i < 5000; ++i) {
        float const size = i % 3 == 0 ? 2000.0f : 5.0f;
        FacetedBRep const brep = random.BRep(size);
        Ray3f const ray = random.Ray(2 * size);
        auto const planes = random.Planes(4, size);
        OracleEdge const expected = FindNearestEdgeStepByStep(ray, planes, brep);
        ASSERT_EQ(builder.Build(ray, planes, brep), expected.IsFound()) << i;
        ASSERT_EQ(builder.GetRayParameter(), expected.distance) << i;
        if (!expected.IsFound()) continue;
        ++hits;
        ASSERT_EQ(builder.GetWireIndex(), expected.face) << i;
        ExpectPoint(builder.GetEdgePoint(), expected.point);
    }
    EXPECT_GT(hits, 2000);
    EXPECT_LT(hits, 5000);
}

TEST(RayToFacetedBRepEdgesBuilder, WithoutPlanesTheDistanceIsTheLeastOfAllEdges) {
    constexpr std::uint32_t kSeed = 4302;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    RayToFacetedBRepEdgesBuilder builder;
    for (int i = 0; i < 60; ++i) {
        FacetedBRep brep = random.BRep(5);
        brep.faces.push_back({0, 1, 2, 3});
        Ray3f const ray = random.Ray(10);
        double least = 1e30;
        auto const measure = [&](std::vector<std::uint32_t> const& loop) {
            for (std::size_t j = 0; j < loop.size(); ++j) {
                RawBRep const raw = ToRawBRep(brep);
                auto const& p = (*raw.vertices)[loop[j]];
                auto const& q = (*raw.vertices)[loop[(j + 1) % loop.size()]];
                if (Length(p - q) > 1e-3f) least = std::min(least, SearchedDistance(ray, p, q));
            }
        };
        for (auto const& loop : brep.faces) measure(loop);
        for (auto const& [face, loops] : brep.holes) {
            for (auto const& loop : loops) measure(loop);
        }
        ASSERT_TRUE(builder.Build(ray, {}, brep));
        // A distance near zero is the root of what cancelled; see the bound at ClosestPointRaySegment.
        ASSERT_NEAR(builder.GetRayParameter(), least, 0.02) << i;
    }
}

}  // namespace Quorlan::Testing
