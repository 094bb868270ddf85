#include "picking/RayArc.h"

#include "picking/ClippingPlanes.h"
#include "picking/EdgeScenes.h"

#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Quorlan::Testing {

namespace {

using GeometryObjectLib::ArcSegment;
using Tools::Picking::ClosestPoint;
using Tools::Picking::ClosestPointPointArc;
using Tools::Picking::ClosestPointRayArc;
using Tools::Picking::IsArcBeyond;

constexpr double kPi = 3.141592653589793;
constexpr double kTurn = 2 * kPi;

/// In the plane z = 0 around the origin, from the x axis on.
ArcSegment Flat(double radius, double sweep) { return {{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, radius, sweep}; }

void ExpectClosest(ClosestPoint const& found, Vertex const& point, double distance) {
    EXPECT_NEAR(found.distance, distance, 1e-6 * (1 + distance));
    EXPECT_NEAR(found.point.x, point.x, 1e-6 * (1 + std::abs(point.x)));
    EXPECT_NEAR(found.point.y, point.y, 1e-6 * (1 + std::abs(point.y)));
    EXPECT_NEAR(found.point.z, point.z, 1e-6 * (1 + std::abs(point.z)));
}

/// The arc's point at an angle, in a frame made orthonormal in double precision.
struct Oracle {
    Vertex center, u, v;
    double radius, sweep;

    explicit Oracle(ArcSegment const& arc)
        : center(arc.center), radius(arc.radius), sweep(std::min(arc.sweepAngle, kTurn)) {
        Vertex const n = arc.axis / Length(arc.axis);
        Vertex const side = Cross(n, arc.startDirection);
        v = side / Length(side);
        u = Cross(v, n);
    }

    Vertex At(double angle) const { return center + radius * (std::cos(angle) * u + std::sin(angle) * v); }

    /// The least of `measure` over the arc: densely sampled, then narrowed down around the best sample.
    template <class Measure>
    double Least(Measure const& measure) const {
        constexpr int kSamples = 720;
        int best = 0;
        for (int i = 1; i <= kSamples; ++i) {
            if (measure(At(sweep * i / kSamples)) < measure(At(sweep * best / kSamples))) best = i;
        }
        double lower = sweep * std::max(best - 1, 0) / kSamples;
        double upper = sweep * std::min(best + 1, kSamples) / kSamples;
        for (int i = 0; i < 60; ++i) {
            double const third = (upper - lower) / 3;
            if (measure(At(lower + third)) > measure(At(upper - third))) {
                lower += third;
            } else {
                upper -= third;
            }
        }
        return std::min(measure(At(sweep * best / kSamples)), measure(At(0.5 * (lower + upper))));
    }

    double FromPoint(Vertex const& point) const {
        return Least([&](Vertex const& p) { return Length(p - point); });
    }

    /// From the ray's whole line.
    double FromLine(Ray3f const& ray) const {
        Vertex const origin = ToVertex(ray.origin);
        Vertex const direction = ToVertex(ray.direction) / Length(ToVertex(ray.direction));
        return Least([&](Vertex const& p) { return Length(Cross(p - origin, direction)); });
    }
};

/// As a buffer stores it: single precision throughout, the start direction perpendicular to the axis up to rounding.
ArcSegment RandomArc(RandomScene& random, float size, double sweep) {
    Vector3f const axis = random.Direction();
    Vector3f const side = Cross(axis, random.Direction());
    return {ToVertex(random.Point(size)), ToVertex(axis), ToVertex(side / Length(side)),
            random.Between(0.1f * size, size), static_cast<float>(sweep)};
}

/// How far the found distance lies above the true one, in shares of the radius plus the distance.
double Excess(Ray3f const& ray, ArcSegment const& arc) {
    double const truth = Oracle(arc).FromLine(ray);
    return (ClosestPointRayArc(ray, arc).distance - truth) / (arc.radius + truth);
}

}  // namespace

TEST(ClosestPointPointArc, InsideTheSweepItIsTheCirclesNearestPoint) {
    ExpectClosest(ClosestPointPointArc({1, 1, 0}, Flat(2, kPi)), {std::sqrt(2), std::sqrt(2), 0}, 2 - std::sqrt(2));
    ExpectClosest(ClosestPointPointArc({0, 6, 3}, Flat(2, kPi)), {0, 2, 0}, 5);
    ExpectClosest(ClosestPointPointArc({0, -6, 3}, Flat(2, kTurn)), {0, -2, 0}, 5);
}

TEST(ClosestPointPointArc, OutsideTheSweepItIsTheNearerEnd) {
    ExpectClosest(ClosestPointPointArc({2, -3, 0}, Flat(2, kPi / 2)), {2, 0, 0}, 3);
    ExpectClosest(ClosestPointPointArc({-3, 2, 0}, Flat(2, kPi / 2)), {0, 2, 0}, 3);
}

TEST(ClosestPointPointArc, TheEndWinsATieWithTheStart) {
    ClosestPoint const found = ClosestPointPointArc({0, -2, 0}, Flat(1, kPi));
    EXPECT_NEAR(found.point.x, -1, 1e-6);
    ExpectClosest(ClosestPointPointArc({-2, -2, 0}, Flat(1, kPi / 2)), {0, 1, 0}, std::sqrt(13));
}

TEST(ClosestPointPointArc, APointOnTheAxisGivesTheStart) {
    ExpectClosest(ClosestPointPointArc({0, 0, 4}, Flat(3, kTurn)), {3, 0, 0}, 5);
    ExpectClosest(ClosestPointPointArc({0, 0, 0}, Flat(3, 1)), {3, 0, 0}, 3);
    ExpectClosest(ClosestPointPointArc({1e-14, -1e-14, 4}, Flat(3, kTurn)), {3, 0, 0}, 5);
}

TEST(ClosestPointPointArc, ATinyNegativeAngleIsTheStart) {
    // 2 pi minus less than its rounding is 2 pi again; it counts as 0, not as outside the sweep.
    ClosestPoint const found = ClosestPointPointArc({2, -1e-17, 0}, Flat(1, 1));
    EXPECT_EQ(found.point.x, 1);
    EXPECT_EQ(found.distance, 1);
}

TEST(ClosestPointPointArc, ATurnStoredInSinglePrecisionIsTheWholeCircle) {
    ExpectClosest(ClosestPointPointArc({3, -1e-12, 0}, Flat(1, 6.2831855f)), {1, 0, 0}, 2);
    ExpectClosest(ClosestPointPointArc({0, -3, 0}, Flat(1, 6.2831855f)), {0, -1, 0}, 2);
    ExpectClosest(ClosestPointPointArc({0, -3, 0}, Flat(1, 100)), {0, -1, 0}, 2);
}

TEST(ClosestPointPointArc, RadiusZeroIsThePointOfTheCenter) {
    ExpectClosest(ClosestPointPointArc({3, 4, 0}, Flat(0, 1)), {0, 0, 0}, 5);
    ExpectClosest(ClosestPointPointArc({0, 0, 0}, Flat(0, 1)), {0, 0, 0}, 0);
}

TEST(ClosestPointPointArc, SweepZeroIsTheStart) {
    ExpectClosest(ClosestPointPointArc({3, 0, 0}, Flat(1, 0)), {1, 0, 0}, 2);
    ExpectClosest(ClosestPointPointArc({0, 3, 0}, Flat(1, 0)), {1, 0, 0}, std::sqrt(10));
}

TEST(ClosestPointPointArc, OfANegativeSweepOnlyTheTwoEndsCount) {
    // The arc from the x axis down to the negative y axis, as the ends go; nothing between them.
    ExpectClosest(ClosestPointPointArc({1, -0.5, 0}, Flat(1, -kPi / 2)), {1, 0, 0}, 0.5);
    ExpectClosest(ClosestPointPointArc({0.5, -1, 0}, Flat(1, -kPi / 2)), {0, -1, 0}, 0.5);
    ExpectClosest(ClosestPointPointArc({2, 0, 0}, Flat(1, -kPi / 2)), {1, 0, 0}, 1);
    ExpectClosest(ClosestPointPointArc({0, 0, 0}, Flat(1, -kPi / 2)), {0, -1, 0}, 1);
}

TEST(ClosestPointPointArc, AxisAndStartNeedNotBeOfUnitLength) {
    ArcSegment arc = Flat(2, kPi);
    arc.axis = {0, 0, 7};
    arc.startDirection = {0.25, 0, 0.5};
    ExpectClosest(ClosestPointPointArc({0, 6, 3}, arc), {0, 2, 0}, 5);
}

TEST(ClosestPointPointArc, WhatIsNotANumberGivesADistanceThatIsNotANumber) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(ClosestPointPointArc({nan, 0, 0}, Flat(1, 1)).distance));
    EXPECT_TRUE(std::isnan(ClosestPointPointArc({3, 0, 0}, Flat(1, nan)).distance));
    ArcSegment arc = Flat(1, 1);
    arc.startDirection = arc.axis;
    EXPECT_TRUE(std::isnan(ClosestPointPointArc({3, 0, 0}, arc).distance));
}

TEST(ClosestPointPointArc, AgreesWithDenseSampling) {
    constexpr std::uint32_t kSeed = 4420;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 200; ++i) {
        ArcSegment const arc = RandomArc(random, 5, random.Between(0.01f, 6.3f));
        Vertex const point = ToVertex(random.Point(12));
        double const truth = Oracle(arc).FromPoint(point);
        ASSERT_NEAR(ClosestPointPointArc(point, arc).distance, truth, 1e-6 * (arc.radius + truth)) << i;
    }
}

TEST(ClosestPointRayArc, ARayOnTheAxisGivesTheStartAtTheRadius) {
    ExpectClosest(ClosestPointRayArc({{0, 0, 9}, {0, 0, -1}}, Flat(3, kTurn)), {3, 0, 0}, 3);
    ExpectClosest(ClosestPointRayArc({{0, 0, 9}, {0, 0, 1}}, Flat(3, 1)), {3, 0, 0}, 3);
}

TEST(ClosestPointRayArc, ARayParallelToTheAxisIsMeasuredFromItsPointNearestToTheCenter) {
    ExpectClosest(ClosestPointRayArc({{0, 5, 9}, {0, 0, -1}}, Flat(3, kPi)), {0, 3, 0}, 2);
    ExpectClosest(ClosestPointRayArc({{0, -5, 9}, {0, 0, 1}}, Flat(3, kTurn)), {0, -3, 0}, 2);
    ExpectClosest(ClosestPointRayArc({{0, -1, 9}, {0, 0, 1}}, Flat(3, kTurn)), {0, -3, 0}, 2);
}

TEST(ClosestPointRayArc, OfAPlaneParallelLineOnlyTheCrossingFartherAlongTheRayIsTried) {
    // The half circle y >= 0 and the line y = 0.6 at height 1: crossings at x = -0.8 and 0.8.
    ArcSegment const whole = Flat(1, kTurn);
    ExpectClosest(ClosestPointRayArc({{-5, 0.6f, 1}, {1, 0, 0}}, whole), {0.8, 0.6, 0}, 1);
    ExpectClosest(ClosestPointRayArc({{-5, 0.6f, 1}, {-1, 0, 0}}, whole), {-0.8, 0.6, 0}, 1);
    // A quarter that only the other crossing touches is not touched; its end is measured instead.
    ArcSegment const quarter = Flat(1, kPi / 2);
    ExpectClosest(ClosestPointRayArc({{-5, 0.6f, 0}, {1, 0, 0}}, quarter), {0.8, 0.6, 0}, 0);
    ExpectClosest(ClosestPointRayArc({{5, 0.6f, 0}, {-1, 0, 0}}, quarter), {0, 1, 0}, std::sqrt(0.8));
    EXPECT_NEAR(Oracle(quarter).FromLine({{5, 0.6f, 0}, {-1, 0, 0}}), 0, 1e-7);
}

TEST(ClosestPointRayArc, APlaneParallelLineThatMissesTheCylinderIsMeasuredFromItsPointNearestToTheCenter) {
    ExpectClosest(ClosestPointRayArc({{-5, 3, 0}, {1, 0, 0}}, Flat(1, kTurn)), {0, 1, 0}, 2);
    ExpectClosest(ClosestPointRayArc({{-5, 1, 2}, {1, 0, 0}}, Flat(1, kTurn)), {0, 1, 0}, 2);  // touches: x is 0
    ExpectClosest(ClosestPointRayArc({{-5, -3, 0}, {1, 0, 0}}, Flat(1, 1)), {1, 0, 0}, std::sqrt(10));
}

TEST(ClosestPointRayArc, PlaneParallelMeansACosineBelowTheTolerance) {
    // Seen from the other side of the quarter, the general case tries both sides of the line.
    ArcSegment const quarter = Flat(1, kPi / 2);
    float const length = std::sqrt(1 + 1e-12f);
    EXPECT_GT(ClosestPointRayArc({{5, 0.6f, 0}, {-1, 0, 0.9e-7f}}, quarter).distance, 0.5f);
    EXPECT_LT(ClosestPointRayArc({{5, 0.6f, 0}, {-1 / length, 0, 1e-6f}}, quarter).distance, 1e-4f);
}

TEST(ClosestPointRayArc, TheLineGoesOnBehindTheOrigin) {
    ExpectClosest(ClosestPointRayArc({{5, 0, 0}, {1, 0, 0}}, Flat(1, 1)), {1, 0, 0}, 0);
    ExpectClosest(ClosestPointRayArc({{3, 0, 3}, {0.6f, 0, 0.8f}}, Flat(1, kTurn)), {1, 0, 0}, 0.2);
}

TEST(ClosestPointRayArc, RadiusZeroIsThePointOfTheCenter) {
    ExpectClosest(ClosestPointRayArc({{3, 0, 4}, {0.6f, 0, 0.8f}}, Flat(0, 1)), {0, 0, 0}, 0);
    ExpectClosest(ClosestPointRayArc({{0, 2, 0}, {0.6f, 0, 0.8f}}, Flat(0, 1)), {0, 0, 0}, 2);
    ExpectClosest(ClosestPointRayArc({{0, 2, 0}, {1, 0, 0}}, Flat(0, 1)), {0, 0, 0}, 2);
}

TEST(ClosestPointRayArc, ALineThroughTheCenterTouchesNeitherSideMore) {
    // Both sides are 0.8 away; the start of a half circle is on one of them only.
    Ray3f const ray{{3, 0, 4}, {-0.6f, 0, -0.8f}};
    EXPECT_NEAR(ClosestPointRayArc(ray, Flat(1, kTurn)).distance, 0.8, 1e-6);
    ExpectClosest(ClosestPointRayArc(ray, Flat(1, 1)), {1, 0, 0}, 0.8);
    ArcSegment opposite = Flat(1, 1);
    opposite.startDirection = {-1, 0, 0};
    ExpectClosest(ClosestPointRayArc(ray, opposite), {-1, 0, 0}, 0.8);
}

TEST(ClosestPointRayArc, WithoutAStationaryPointTheDistanceIsTheLargestFloatAtTheOrigin) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    ClosestPoint const found = ClosestPointRayArc({{nan, 0, 0}, {0.6f, 0, 0.8f}}, Flat(1, 1));
    EXPECT_EQ(found.distance, std::numeric_limits<float>::max());
    EXPECT_EQ(found.point.x, 0);
    EXPECT_EQ(found.point.y, 0);
    EXPECT_EQ(found.point.z, 0);
}

TEST(ClosestPointRayArc, WholeCirclesGetTheTrueMinimum) {
    constexpr std::uint32_t kSeed = 4421;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 150; ++i) {
        float const size = i % 3 == 0 ? 1e-3f : i % 3 == 1 ? 5 : 1e4f;
        ASSERT_NEAR(Excess(random.Ray(3 * size), RandomArc(random, size, 7)), 0, 1e-6) << i;
    }
}

TEST(ClosestPointRayArc, WholeCirclesInSpecialPositionsGetTheTrueMinimum) {
    constexpr std::uint32_t kSeed = 4422;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 60; ++i) {
        ArcSegment const arc = RandomArc(random, 5, 7);
        Vector3f const center = Narrow(arc.center);
        Vector3f const axis = Narrow(arc.axis);
        Vector3f const direction = random.Direction();
        Vector3f const nearAxis = axis + 1e-4f * direction;
        Vector3f const inPlane = Cross(axis, direction);
        ASSERT_NEAR(Excess({center - 3.0f * direction, direction}, arc), 0, 1e-6) << "through the centre " << i;
        ASSERT_NEAR(Excess({center + axis - 3.0f * direction, direction}, arc), 0, 1e-6) << "meets the axis " << i;
        ASSERT_NEAR(Excess({random.Point(9), nearAxis / Length(nearAxis)}, arc), 0, 1e-6) << "near the axis " << i;
        ASSERT_NEAR(Excess({random.Point(9), inPlane / Length(inPlane)}, arc), 0, 2e-6) << "plane-parallel " << i;
        ASSERT_NEAR(Excess({center - 1e5f * direction, direction}, arc), 0, 1e-6) << "far eye " << i;
    }
}

TEST(ClosestPointRayArc, PartialArcsDeviateUpwardsNeverDownwards) {
    constexpr std::uint32_t kSeed = 4423;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    int above = 0;
    int farAbove = 0;
    constexpr int kCount = 400;
    for (int i = 0; i < kCount; ++i) {
        double const excess = Excess(random.Ray(10), RandomArc(random, 5, random.Between(0.2f, 6)));
        ASSERT_GT(excess, -1e-6) << i;
        above += excess > 2e-6;
        farAbove += excess > 0.01;
    }
    // Outside the sweep an end is measured from the whole circle's stationary point, not from its foot on the line.
    EXPECT_GT(above, kCount / 4);
    EXPECT_LT(above, kCount * 3 / 4);
    EXPECT_GT(farAbove, kCount / 50);
}

TEST(ClosestPointRayArc, PlaneParallelPartialArcsDeviateUpwardsNeverDownwards) {
    constexpr std::uint32_t kSeed = 4424;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    int farAbove = 0;
    constexpr int kCount = 300;
    for (int i = 0; i < kCount; ++i) {
        ArcSegment arc = RandomArc(random, 5, random.Between(0.2f, 6));
        arc.axis = {0, 0, 1};
        arc.startDirection = {0.6f, 0.8f, 0};
        double const angle = random.Between(0, 6);
        Ray3f const ray{random.Point(4), {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0}};
        double const excess = Excess(ray, arc);
        ASSERT_GT(excess, -1e-6) << i;
        farAbove += excess > 0.01;
    }
    EXPECT_GT(farAbove, kCount / 5);
}

TEST(IsArcBeyond, NeverTrueForAnArcThatIsAsNearAsTheDistance) {
    constexpr std::uint32_t kSeed = 4425;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    int beyond = 0;
    for (int i = 0; i < 20000; ++i) {
        float const size = i % 2 == 0 ? 5 : 1e-2f;
        ArcSegment const arc = RandomArc(random, size, random.Between(-1, 7));
        Ray3f const ray = random.Ray(i % 3 == 0 ? 1e5f : 4 * size);
        float const distance = ClosestPointRayArc(ray, arc).distance;
        ASSERT_FALSE(IsArcBeyond(ray, arc, distance)) << i;
        beyond += IsArcBeyond(ray, arc, 0.5f * distance);
    }
    EXPECT_GT(beyond, 5000);
}

TEST(IsArcBeyond, PassingOverDistantArcsDoesNotChangeWhatTheBuilderFinds) {
    constexpr std::uint32_t kSeed = 4426;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 300; ++i) {
        RawGraphics graphics;
        Ray3f const ray = random.Ray(20);
        auto const planes = random.Planes(3, 8);
        ClosestPoint best{{}, std::numeric_limits<float>::max()};
        unsigned number = 0;
        for (unsigned k = 0; k < 20; ++k) {
            ArcSegment const arc = RandomArc(random, k % 2 == 0 ? 8 : 1, random.Between(0, 7));
            graphics.arcs->push_back({Narrow(arc.center), Narrow(arc.axis), Narrow(arc.startDirection),
                                      static_cast<float>(arc.radius), static_cast<float>(arc.sweepAngle)});
            ClosestPoint const found = ClosestPointRayArc(ray, arc);
            if (found.distance < best.distance && !Tools::Picking::IsClipped(planes, found.point)) {
                best = found;
                number = k;
            }
        }
        RawModel model;
        model.graphicsContainers = {{graphics}};
        Tools::Picking::RayToGraphicsContainerBuilder builder;
        bool const isFound = best.distance < std::numeric_limits<float>::max();
        ASSERT_EQ(builder.Build(ToGlm(ray.origin), ToGlm(ray.direction), ToGlm(planes), model.Write(), 0), isFound);
        ASSERT_EQ(builder.HitSegmentNumber(), number) << i;
        ASSERT_EQ(builder.GetNearestPoint(), ToGlm(best.point)) << i;
    }
}

TEST(IsArcBeyond, AGrazingCircleIsNotBeyond) {
    EXPECT_FALSE(IsArcBeyond({{-5, 3, 0}, {1, 0, 0}}, Flat(1, kTurn), 2));
    EXPECT_TRUE(IsArcBeyond({{-5, 3, 0}, {1, 0, 0}}, Flat(1, kTurn), 1.99f));
    EXPECT_TRUE(IsArcBeyond({{-5, 3, 0}, {7, 0, 0}}, Flat(1, kTurn), 1.99f));
}

TEST(IsArcBeyond, NothingIsBeyondTheLargestFloatAndNothingThatIsNotANumber) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(IsArcBeyond({{1e30f, 3, 0}, {0, 1, 0}}, Flat(1, 1), std::numeric_limits<float>::max()));
    EXPECT_FALSE(IsArcBeyond({{nan, 3, 0}, {1, 0, 0}}, Flat(1, 1), 0.1f));
    EXPECT_FALSE(IsArcBeyond({{-5, 3, 0}, {1, 0, 0}}, Flat(nan, 1), 0.1f));
}

}  // namespace Quorlan::Testing
