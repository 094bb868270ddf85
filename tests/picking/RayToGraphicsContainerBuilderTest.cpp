#include "picking/EdgeOracle.h"
#include "picking/EdgeScenes.h"

#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace Quorlan::Testing {

namespace {

using Tools::Picking::RayToGraphicsContainerBuilder;

constexpr float kTurn = 6.2831855f;
glm::vec3 const kDown{0, 0, -1};

std::vector<char> BufferOf(RawGraphics const& graphics) {
    RawModel model;
    model.graphicsContainers = {{graphics}};
    return model.Write();
}

RawGraphics Lines(std::vector<RawLine> lines) {
    RawGraphics graphics;
    graphics.segments = std::move(lines);
    return graphics;
}

RawArc CircleAt(Vector3f const& center, float radius) { return {center, {0, 0, 1}, {1, 0, 0}, radius, kTurn}; }

/// A builder that holds the hit (1, 0, 0) of segment 1 at parameter 10.
RayToGraphicsContainerBuilder BuilderWithAHit() {
    RayToGraphicsContainerBuilder builder;
    auto const lines = Lines({{{5, -1, 0}, {5, 1, 0}}, {{1, -1, 0}, {1, 1, 0}}});
    EXPECT_TRUE(builder.Build({0, 0, 10}, kDown, {}, BufferOf(lines), 0));
    return builder;
}

void ExpectKeptHit(RayToGraphicsContainerBuilder const& builder) {
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(1, 0, 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 10);
}

}  // namespace

TEST(RayToGraphicsContainerBuilder, ANewBuilderHoldsZeros) {
    RayToGraphicsContainerBuilder const builder;
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(0, 0, 0));
    EXPECT_EQ(builder.GetRayParameter(), 0);
    EXPECT_EQ(builder.HitSegmentNumber(), 0u);
}

TEST(RayToGraphicsContainerBuilder, FindsTheNearestSegment) { ExpectKeptHit(BuilderWithAHit()); }

TEST(RayToGraphicsContainerBuilder, ArcsAreNumberedAfterAllSegments) {
    RawGraphics graphics = Lines({{{5, -1, 0}, {5, 1, 0}}, {{6, -1, 0}, {6, 1, 0}}, {{7, -1, 0}, {7, 1, 0}}});
    graphics.arcs = {{CircleAt({0, 0, 2}, 1), CircleAt({0, 0, 2}, 3)}};
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({1.25f, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 3u);
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(1, 0, 2));
    EXPECT_EQ(builder.GetRayParameter(), 8);
    ASSERT_TRUE(builder.Build({2.75f, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 4u);
}

TEST(RayToGraphicsContainerBuilder, TheIndexSelectsTheContainer) {
    RawModel model;
    model.graphicsContainers = {{Lines({{{5, -1, 0}, {5, 1, 0}}}), Lines({{{6, -1, 0}, {6, 1, 0}}})}};
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({0, 0, 10}, kDown, {}, model.Write(), 1));
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(6, 0, 0));
}

TEST(RayToGraphicsContainerBuilder, AContainerWithoutAnArcVectorIsRejectedThoughItHasSegments) {
    RawGraphics graphics = Lines({{{5, -1, 0}, {5, 1, 0}}});
    graphics.arcs.reset();
    auto builder = BuilderWithAHit();
    EXPECT_FALSE(builder.Build({0, 0, 7}, kDown, {}, BufferOf(graphics), 0));
    ExpectKeptHit(builder);
}

TEST(RayToGraphicsContainerBuilder, AFailedLookupKeepsEverything) {
    auto builder = BuilderWithAHit();
    EXPECT_FALSE(builder.Build({0, 0, 7}, kDown, {}, {}, 0));
    EXPECT_FALSE(builder.Build({0, 0, 7}, kDown, {}, RawModel().Write(), 0));
    RawModel withoutGeometry;
    withoutGeometry.hasGeometry = false;
    EXPECT_FALSE(builder.Build({0, 0, 7}, kDown, {}, withoutGeometry.Write(), 0));
    RawGraphics withoutSegments;
    withoutSegments.segments.reset();
    withoutSegments.arcs = {{CircleAt({0, 0, 0}, 1)}};
    EXPECT_FALSE(builder.Build({0, 0, 7}, kDown, {}, BufferOf(withoutSegments), 0));
    ExpectKeptHit(builder);
}

TEST(RayToGraphicsContainerBuilder, AMissMeasuresTheKeptPointOnTheNewRay) {
    auto builder = BuilderWithAHit();
    EXPECT_FALSE(builder.Build({0, 0, 7}, kDown, {}, BufferOf({}), 0));
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(1, 0, 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 7);
}

TEST(RayToGraphicsContainerBuilder, OnlyTheClosestPointIsTestedAgainstThePlanes) {
    auto const lines = Lines({{{-3, 0, 0}, {3, 0, 0}}, {{-3, 4, 0}, {3, 4, 0}}});
    RayToGraphicsContainerBuilder builder;
    EXPECT_TRUE(builder.Build({2, 1, 10}, kDown, {{1, 0, 0, 2}}, BufferOf(lines), 0));  // on the plane
    EXPECT_FALSE(builder.Build({2, 1, 10}, kDown, {{1, 0, 0, 1}}, BufferOf(lines), 0));
    ASSERT_TRUE(builder.Build({2, 1, 10}, kDown, {{0, -1, 0, -1}}, BufferOf(lines), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
}

TEST(RayToGraphicsContainerBuilder, ShortSegmentsCountButNotThoseWithoutLength) {
    RayToGraphicsContainerBuilder builder;
    auto const graphics = Lines({{{2, 0, 0}, {2, 0, 0}}, {{3, 0, 0}, {3, 1e-5f, 0}}});
    ASSERT_TRUE(builder.Build({2, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
    EXPECT_FALSE(builder.Build({2, 0, 10}, kDown, {}, BufferOf(Lines({{{2, 0, 0}, {2, 0, 0}}})), 0));
}

TEST(RayToGraphicsContainerBuilder, OfEquallyNearElementsTheFirstIsReported) {
    RawGraphics graphics = Lines({{{2, -1, 0}, {2, 1, 0}}, {{-2, -1, 0}, {-2, 1, 0}}});
    graphics.arcs = {{CircleAt({4, 0, 0}, 2)}};
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({0, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 0u);
    graphics.segments->front() = {{9, -1, 0}, {9, 1, 0}};
    ASSERT_TRUE(builder.Build({0, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
}

TEST(RayToGraphicsContainerBuilder, SegmentsAreMeasuredFromTheOriginAndArcsFromTheWholeLine) {
    // Both lie behind the origin; the arc is nearer to the line, the segment nearer to the origin.
    RawGraphics graphics = Lines({{{1, -1, 0}, {1, 1, 0}}});
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({0, 0, -3}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.GetRayParameter(), -3);
    graphics.arcs = {{CircleAt({0, 0, 90}, 2)}};
    ASSERT_TRUE(builder.Build({0, 0, -3}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), -93);
}

TEST(RayToGraphicsContainerBuilder, ARayAlongTheAxisOfAnArcFindsItsStartAtTheRadius) {
    RawGraphics graphics = Lines({{{3, -1, 0}, {3, 1, 0}}});
    graphics.arcs = {{{{0, 0, 0}, {0, 0, 1}, {0, 1, 0}, 2.5f, 1}}};
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({0, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(0, 2.5f, 0));
    EXPECT_EQ(builder.GetRayParameter(), 10);
}

TEST(RayToGraphicsContainerBuilder, AnArcOutsideItsSweepGivesTheNearerEnd) {
    RawGraphics graphics;
    graphics.arcs = {{{{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, 2, 1.5707964f}}};  // the first quadrant
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({2, -1, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.GetNearestPoint(), glm::vec3(2, 0, 0));
    ASSERT_TRUE(builder.Build({-1, 2, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_NEAR(builder.GetNearestPoint().x, 0, 1e-6f);
    EXPECT_EQ(builder.GetNearestPoint().y, 2);
}

TEST(RayToGraphicsContainerBuilder, AnArcThatIsNotANumberNeverWins) {
    RawGraphics graphics;
    RawArc broken = CircleAt({0, 0, 0}, 1);
    broken.axis = {0, 0, 0};
    graphics.arcs = {{broken, CircleAt({0, 0, 0}, 50)}};
    RayToGraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build({0, 0, 10}, kDown, {}, BufferOf(graphics), 0));
    EXPECT_EQ(builder.HitSegmentNumber(), 1u);
}

TEST(RayToGraphicsContainerBuilder, FindsTheNearestOfRandomSegments) {
    constexpr std::uint32_t kSeed = 4401;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    RayToGraphicsContainerBuilder builder;
    for (int i = 0; i < 100; ++i) {
        std::vector<RawLine> lines(1 + random.Below(12));
        for (RawLine& line : lines) line = {random.Point(5), random.Point(5)};
        Ray3f const ray = random.Ray(10);
        std::vector<double> distances;
        for (RawLine const& line : lines) distances.push_back(SearchedDistance(ray, line.start, line.end));
        ASSERT_TRUE(builder.Build(ToGlm(ray.origin), ToGlm(ray.direction), {}, BufferOf(Lines(lines)), 0));
        double const least = *std::min_element(distances.begin(), distances.end());
        ASSERT_NEAR(distances[builder.HitSegmentNumber()], least, 0.02) << i;
    }
}

}  // namespace Quorlan::Testing
