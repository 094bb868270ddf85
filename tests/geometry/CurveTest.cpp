#include <GeometryObjectLib/Arc3D.h>
#include <GeometryObjectLib/InvalidCurve3D.h>
#include <GeometryObjectLib/Line3D.h>
#include <GeometryObjectLib/Polyline3D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

using namespace GeometryObjectLib;

constexpr double kPi = 3.14159265358979323846;

void ExpectNear(Vertex const& actual, Vertex const& expected, double tolerance = 1e-15) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

TEST(Curve3D, EveryClassHasItsKind) {
    std::vector<std::unique_ptr<Curve3D>> curves;
    curves.push_back(std::make_unique<InvalidCurve3D>());
    curves.push_back(std::make_unique<Line3D>(Vertex{}, Vertex{}));
    curves.push_back(std::make_unique<Polyline3D>(std::vector<Vertex>{}));
    curves.push_back(std::make_unique<Arc3D>());
    for (std::uint32_t kind = 0; kind < curves.size(); ++kind) EXPECT_EQ(curves[kind]->GetKind(), kind);
}

TEST(InvalidCurve3D, BothEndsAreSharedZeroVertices) {
    InvalidCurve3D const a;
    InvalidCurve3D const b;
    ExpectNear(a.GetStartPoint(), {0, 0, 0}, 0);
    ExpectNear(a.GetEndPoint(), {0, 0, 0}, 0);
    EXPECT_EQ(&a.GetStartPoint(), &b.GetStartPoint());
    EXPECT_EQ(&a.GetEndPoint(), &b.GetEndPoint());
    EXPECT_NE(&a.GetStartPoint(), &a.GetEndPoint());
}

TEST(Line3D, EndsAreThoseGiven) {
    Line3D const line({1, 2, 3}, {4, 5, 6});
    ExpectNear(line.GetStartPoint(), {1, 2, 3}, 0);
    ExpectNear(line.GetEndPoint(), {4, 5, 6}, 0);
}

TEST(Polyline3D, EndsAreTheFirstAndTheLastPoint) {
    Polyline3D const polyline({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    EXPECT_EQ(polyline.GetPointCount(), 3u);
    EXPECT_EQ(polyline.GetPoints()[1].x, 2);
    EXPECT_EQ(polyline.GetStartPoint().x, 1);
    EXPECT_EQ(polyline.GetEndPoint().x, 3);
    Polyline3D const point({{7, 8, 9}});
    EXPECT_EQ(&point.GetStartPoint(), &point.GetEndPoint());
}

TEST(Polyline3D, WithoutPointsBothEndsAreOneSharedZeroVertex) {
    Polyline3D const a({});
    Polyline3D const b({});
    EXPECT_EQ(a.GetPointCount(), 0u);
    ExpectNear(a.GetStartPoint(), {0, 0, 0}, 0);
    EXPECT_EQ(&a.GetStartPoint(), &b.GetEndPoint());
}

TEST(Polyline3D, SharedVertexIsTheSameInAllThreads) {
    std::vector<Vertex const*> seen(8);
    std::vector<std::thread> threads;
    for (auto& vertex : seen) threads.emplace_back([&vertex] { vertex = &Polyline3D({}).GetEndPoint(); });
    for (auto& thread : threads) thread.join();
    for (auto const* vertex : seen) EXPECT_EQ(vertex, seen.front());
}

TEST(Arc3D, DefaultsAreNotDerivedFrom) {
    Arc3D const arc;
    EXPECT_EQ(arc.GetRadius(), 0);
    EXPECT_EQ(arc.GetSweepAngle(), 0);
    ExpectNear(arc.GetCenter(), {0, 0, 0}, 0);
    ExpectNear(arc.GetAxis(), {0, 0, 1}, 0);
    ExpectNear(arc.GetStartDirection(), {1, 0, 0}, 0);
    ExpectNear(arc.GetStartPoint(), {0, 0, 0}, 0);
    ExpectNear(arc.GetEndPoint(), {0, 0, 0}, 0);
}

TEST(Arc3D, QuarterCircleRunsCounterClockwiseAboutItsAxis) {
    Arc3D const arc({0, 0, 0}, 2, {0, 0, 5}, {3, 0, 0}, kPi / 2);
    ExpectNear(arc.GetStartPoint(), {2, 0, 0});
    ExpectNear(arc.GetEndPoint(), {0, 2, 0});
    ExpectNear(arc.GetAxis(), {0, 0, 1}, 0);
    ExpectNear(arc.GetStartDirection(), {1, 0, 0}, 0);
    Arc3D const mirrored({0, 0, 0}, 2, {0, 0, -1}, {3, 0, 0}, kPi / 2);
    ExpectNear(mirrored.GetEndPoint(), {0, -2, 0});
}

TEST(Arc3D, FullCircleEndsWhereItStarts) {
    Arc3D const arc({1, 2, 3}, 4, {1, 0, 0}, {0, 1, 0}, 2 * kPi);
    ExpectNear(arc.GetEndPoint(), arc.GetStartPoint(), 4e-15);
}

TEST(Arc3D, NegativeSweepRunsClockwise) {
    ExpectNear(Arc3D({0, 0, 0}, 1, {0, 0, 1}, {1, 0, 0}, -kPi / 2).GetEndPoint(), {0, -1, 0});
}

TEST(Arc3D, RandomArcsKeepTheirRadiusAndSweep) {
    constexpr unsigned kSeed = 3;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<double> number(-10, 10);
    for (int i = 0; i < 200; ++i) {
        Vertex const axis{number(random), number(random), number(random)};
        Vertex const start = Cross(axis, {number(random), number(random), number(random)});
        Vertex const center{number(random), number(random), number(random)};
        double const sweep = std::fabs(number(random)) / 10 * kPi;
        Arc3D const arc(center, 3, axis, start, sweep);
        Vertex const a = (arc.GetStartPoint() - center) / 3;
        Vertex const b = (arc.GetEndPoint() - center) / 3;
        EXPECT_NEAR(Length(a), 1, 1e-13);
        EXPECT_NEAR(Length(b), 1, 1e-13);
        EXPECT_NEAR(std::atan2(Dot(Cross(a, b), arc.GetAxis()), Dot(a, b)), sweep, 1e-12);
    }
}

TEST(Arc3D, DirectionOfNoLengthGivesPointsThatAreNotNumbers) {
    EXPECT_TRUE(std::isnan(Arc3D({0, 0, 0}, 1, {0, 0, 1}, {0, 0, 0}, 1).GetStartPoint().x));
}

}  // namespace
