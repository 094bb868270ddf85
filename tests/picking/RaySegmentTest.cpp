#include "picking/RaySegment.h"

#include "picking/EdgeOracle.h"
#include "picking/EdgeScenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace Quorlan::Testing {

namespace {

using Tools::Picking::ClosestPoint;
using Tools::Picking::ClosestPointRaySegment;
using Tools::Picking::IsSegmentClipped;

using Planes = std::vector<Plane3f>;

Plane3f const kKeepLowX{{1, 0, 0}, 0};    // x <= 0
Plane3f const kKeepHighX{{-1, 0, 0}, 0};  // x >= 0

void ExpectClosest(Ray3f const& ray, Vector3f const& p, Vector3f const& q, Vector3f const& point, float distance) {
    for (bool const exchanged : {false, true}) {
        SCOPED_TRACE(exchanged ? "exchanged" : "as given");
        ClosestPoint const found = exchanged ? ClosestPointRaySegment(ray, q, p) : ClosestPointRaySegment(ray, p, q);
        EXPECT_EQ(found.distance, distance);
        EXPECT_EQ(found.point.x, point.x);
        EXPECT_EQ(found.point.y, point.y);
        EXPECT_EQ(found.point.z, point.z);
    }
}

/// The distance of a point from the half line, in double precision.
double DistanceFromRay(Ray3f const& ray, Vector3f const& point) {
    Vertex const direction = ToVertex(ray.direction) / Length(ToVertex(ray.direction));
    Vertex const offset = ToVertex(point) - ToVertex(ray.origin);
    return Length(offset - std::max(Dot(offset, direction), 0.0) * direction);
}

double ScaleOf(Ray3f const& ray, Vector3f const& p, Vector3f const& q) {
    return std::max(Length(ray.origin - (p + q) * 0.5f), 0.5f * Length(q - p));
}

struct Worst {
    double distanceError = 0;  ///< of the scale
    double pointExcess = 0;    ///< of the scale: how much farther the returned point is than the nearest one

    void Add(Ray3f const& ray, Vector3f const& p, Vector3f const& q) {
        ClosestPoint const found = ClosestPointRaySegment(ray, p, q);
        double const truth = SearchedDistance(ray, p, q);
        double const scale = ScaleOf(ray, p, q);
        distanceError = std::max(distanceError, std::abs(found.distance - truth) / scale);
        pointExcess = std::max(pointExcess, (DistanceFromRay(ray, found.point) - truth) / scale);
    }
};

}  // namespace

TEST(IsSegmentClipped, WithoutPlanesOnlyShortSegmentsAreClipped) {
    EXPECT_FALSE(IsSegmentClipped(Planes{}, {0, 0, 0}, {1, 0, 0}));
    EXPECT_TRUE(IsSegmentClipped(Planes{}, {2, 3, 4}, {2, 3, 4}));
}

TEST(IsSegmentClipped, ASquaredLengthOfExactlyTheEpsilonIsClipped) {
    float const step = 0x1p-12f;  // 2 * 2^-24 is the epsilon
    EXPECT_TRUE(IsSegmentClipped(Planes{}, {0, 0, 0}, {step, step, 0}));
    EXPECT_FALSE(IsSegmentClipped(Planes{}, {0, 0, 0}, {step, step, 0x1p-20f}));
}

TEST(IsSegmentClipped, OutsideOnePlaneIsClippedAndOnThePlaneIsNot) {
    EXPECT_TRUE(IsSegmentClipped(Planes{kKeepLowX}, {1, 0, 0}, {2, 0, 0}));
    EXPECT_FALSE(IsSegmentClipped(Planes{kKeepLowX}, {0, 0, 0}, {0, 1, 0}));
    EXPECT_FALSE(IsSegmentClipped(Planes{kKeepLowX}, {-1, 0, 0}, {2, 0, 0}));
}

TEST(IsSegmentClipped, PlanesThatLeaveNothingTogetherClip) {
    EXPECT_TRUE(IsSegmentClipped(Planes{{{1, 0, 0}, -1}, {{-1, 0, 0}, -1}}, {-5, 0, 0}, {5, 0, 0}));  // x<=-1, x>=1
    EXPECT_TRUE(IsSegmentClipped(Planes{kKeepLowX, kKeepHighX}, {-5, 0, 0}, {5, 0, 0}));              // one point left
    EXPECT_FALSE(IsSegmentClipped(Planes{{{1, 0, 0}, 1}, {{-1, 0, 0}, 1}}, {-5, 0, 0}, {5, 0, 0}));
    EXPECT_FALSE(IsSegmentClipped(Planes{{{1, 0, 0}, 1}, {{-1, 0, 0}, 1}}, {5, 0, 0}, {-5, 0, 0}));
}

TEST(IsSegmentClipped, ASegmentThatPassesTheCornerOfTwoPlanesIsClipped) {
    // Outside neither plane as a whole, but what the first leaves is outside the second.
    EXPECT_TRUE(IsSegmentClipped(Planes{{{1, 0, 0}, 0}, {{0, 1, 0}, 0}}, {-1, 3, 0}, {3, -1, 0}));
    EXPECT_FALSE(IsSegmentClipped(Planes{{{1, 0, 0}, 0}, {{0, 1, 0}, 0}}, {-3, 1, 0}, {1, -3, 0}));
}

TEST(IsSegmentClipped, EndsWhoseDistancesDifferByTheEpsilonAreNotCut) {
    // Cut at x = 0.5, the segment would lie outside the second plane, x <= 0.4.
    Planes const planes{{{0, 0, 1}, 0}, {{1, 0, 0}, 0.4f}};
    EXPECT_FALSE(IsSegmentClipped(planes, {0, 0, 0x1p-24f}, {1, 0, -0x1p-24f}));
    EXPECT_TRUE(IsSegmentClipped(planes, {0, 0, 0x1p-23f}, {1, 0, -0x1p-23f}));
}

TEST(IsSegmentClipped, AnEndThatIsNotANumberClips) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(IsSegmentClipped(Planes{}, {nan, 0, 0}, {1, 0, 0}));
}

TEST(IsSegmentClipped, BothFormsOfPlanesGiveTheSameAnswer) {
    constexpr std::uint32_t kSeed = 4311;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 2000; ++i) {
        Planes const planes = random.Planes(4, 3);
        Vector3f const p = random.Point(4);
        Vector3f const q = random.Point(4);
        ASSERT_EQ(IsSegmentClipped(planes, p, q), IsSegmentClipped(ToGlm(planes), p, q));
    }
}

TEST(ClosestPointRaySegment, InsideBoth) {
    ExpectClosest({{0.5f, 3, 8}, {0, 0, -1}}, {-1, 0, 2}, {1, 0, 2}, {0.5f, 0, 2}, 3);
}

TEST(ClosestPointRaySegment, AtEitherEnd) {
    ExpectClosest({{4, 4, 8}, {0, 0, -1}}, {-1, 0, 2}, {1, 0, 2}, {1, 0, 2}, 5);
    ExpectClosest({{-4, 4, 8}, {0, 0, -1}}, {-1, 0, 2}, {1, 0, 2}, {-1, 0, 2}, 5);
}

TEST(ClosestPointRaySegment, FromTheOriginToTheInside) {
    ExpectClosest({{0.5f, 3, -4}, {0, 0, -1}}, {-1, 0, 0}, {1, 0, 0}, {0.5f, 0, 0}, 5);
}

TEST(ClosestPointRaySegment, FromTheOriginToAnEnd) {
    ExpectClosest({{3, 0, -4}, {0, 0, -1}}, {-2, 0, 0}, {0, 0, 0}, {0, 0, 0}, 5);
    ExpectClosest({{-3, 0, -4}, {0, 0, -1}}, {0, 0, 0}, {2, 0, 0}, {0, 0, 0}, 5);
}

TEST(ClosestPointRaySegment, LinesThatMeetBehindTheOriginAndBeyondAnEnd) {
    // What counts is whether the ray still comes closer to that end than its origin is.
    for (float const side : {1.0f, -1.0f}) {
        SCOPED_TRACE(side);
        auto const measure = [side](Vector3f const& origin, Vector3f const& direction) {
            Ray3f const ray{{side * origin.x, origin.y, 0}, {side * direction.x, direction.y, 0}};
            return ClosestPointRaySegment(ray, {-1, 0, 0}, {1, 0, 0});
        };
        ClosestPoint const passing = measure({4, 0.75f, 0}, {-0.8f, 0.6f, 0});
        EXPECT_NEAR(passing.distance, 2.4f, 1e-5f);
        EXPECT_EQ(passing.point.x, side);
        ClosestPoint const leaving = measure({4, 0.75f, 0}, {0.6f, 0.8f, 0});
        EXPECT_NEAR(leaving.distance, std::sqrt(9.5625f), 1e-5f);
        EXPECT_EQ(leaving.point.x, side);
        ClosestPoint const above = measure({0.5f, 2, 0}, {-0.8f, 0.6f, 0});
        EXPECT_EQ(above.distance, 2);
        EXPECT_EQ(above.point.x, 0.5f * side);
    }
}

TEST(ClosestPointRaySegment, AParallelSegmentGivesTheEndFartherAlongTheRay) {
    ExpectClosest({{0, 2, 0}, {1, 0, 0}}, {5, 0, 0}, {9, 0, 0}, {9, 0, 0}, 2);
    ExpectClosest({{0, 2, 0}, {-1, 0, 0}}, {5, 0, 0}, {9, 0, 0}, {5, 0, 0}, std::sqrt(29.0f));
}

TEST(ClosestPointRaySegment, AParallelSegmentBehindTheOriginGivesTheEndNearestToIt) {
    ExpectClosest({{0, 3, 0}, {1, 0, 0}}, {-9, 0, 0}, {-4, 0, 0}, {-4, 0, 0}, 5);
}

TEST(ClosestPointRaySegment, ACollinearSegmentIsTouchedAtItsFartherEnd) {
    ExpectClosest({{0, 0, 0}, {1, 0, 0}}, {2, 0, 0}, {4, 0, 0}, {4, 0, 0}, 0);
    ExpectClosest({{8, 0, 0}, {1, 0, 0}}, {2, 0, 0}, {4, 0, 0}, {4, 0, 0}, 4);
}

TEST(ClosestPointRaySegment, ASegmentWithoutLengthGivesADistanceThatIsNotANumber) {
    EXPECT_TRUE(std::isnan(ClosestPointRaySegment({{0, 0, 9}, {0, 0, -1}}, {1, 2, 3}, {1, 2, 3}).distance));
}

TEST(ClosestPointRaySegment, TheDirectionIsUsedAsItIs) {
    // Twice the unit length is not undone: the result is what the formulas give, not the true distance 3.
    ClosestPoint const found = ClosestPointRaySegment({{0, 3, 8}, {0, 0, -2}}, {-1, 0, 2}, {1, 0, 2});
    EXPECT_NE(found.distance, 3);
}

TEST(ClosestPointRaySegment, ExchangingTheEndsGivesTheSameBits) {
    constexpr std::uint32_t kSeed = 4312;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 100000; ++i) {
        Ray3f const ray = random.Ray(20);
        Vector3f const p = random.Point(5);
        Vector3f const q = i % 4 == 0 ? p + ray.direction * random.Between(-4, 4) : random.Point(5);
        ClosestPoint const one = ClosestPointRaySegment(ray, p, q);
        ClosestPoint const other = ClosestPointRaySegment(ray, q, p);
        ASSERT_EQ(one.distance, other.distance) << i;
        ASSERT_EQ(one.point.x, other.point.x) << i;
        ASSERT_EQ(one.point.y, other.point.y) << i;
        ASSERT_EQ(one.point.z, other.point.z) << i;
    }
}

TEST(ClosestPointRaySegment, AgreesWithTheSearchInDoublePrecision) {
    for (float const size : {5.0f, 5e-3f, 5e5f}) {
        constexpr std::uint32_t kSeed = 4313;
        SCOPED_TRACE(std::to_string(kSeed) + ", size " + std::to_string(size));
        RandomScene random(kSeed);
        Worst worst;
        for (int i = 0; i < 3000; ++i) {
            Ray3f const ray = random.Ray(4 * size);
            worst.Add(ray, random.Point(size), random.Point(size));
        }
        EXPECT_LT(worst.distanceError, 1e-3);
        EXPECT_LT(worst.pointExcess, 1e-4);
    }
}

TEST(ClosestPointRaySegment, AxisParallelRaysAndEdgesBehindTheRayAreExactToRounding) {
    constexpr std::uint32_t kSeed = 4314;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    Worst parallel;
    Worst behind;
    for (int i = 0; i < 3000; ++i) {
        Vector3f const origin = random.Point(20);
        Vector3f const p = random.Point(5);
        parallel.Add({origin, {1, 0, 0}}, p, p + Vector3f{random.Between(0.1f, 9), 0, 0});
        behind.Add({{origin.x, origin.y, 30}, {0, 0, 1}}, p, random.Point(5));
    }
    EXPECT_LT(parallel.distanceError, 1e-5);
    EXPECT_LT(parallel.pointExcess, 1e-6);
    EXPECT_LT(behind.distanceError, 1e-6);
    EXPECT_LT(behind.pointExcess, 1e-6);
}

TEST(ClosestPointRaySegment, ATouchedEdgeShowsNoMoreThanAThousandthOfItsDistance) {
    constexpr std::uint32_t kSeed = 4315;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 20000; ++i) {
        Vector3f const p = random.Point(5);
        Vector3f const q = random.Point(5);
        Vector3f const target = p + random.Between(0.1f, 0.9f) * (q - p);
        Vector3f const origin = random.Point(40);
        Ray3f const ray{origin, (target - origin) / Length(target - origin)};
        if (Length(Cross(ray.direction, q - p)) < 0.1f * Length(q - p)) continue;  // near parallel is another matter
        ASSERT_LT(ClosestPointRaySegment(ray, p, q).distance, 1.5e-3 * ScaleOf(ray, p, q)) << i;
    }
}

}  // namespace Quorlan::Testing
