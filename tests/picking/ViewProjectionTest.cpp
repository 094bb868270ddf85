#include <GeometryObjectLib/AffineTransform.h>
#include <Tools/Picking/ViewProjection.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace Quorlan::Tools::Picking;
using GeometryObjectLib::Matrix4;

constexpr double kPi = 3.14159265358979323846;
constexpr double kLargest = std::numeric_limits<double>::max();

void ExpectEqual(Vertex const& actual, Vertex const& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

void ExpectNear(Vertex const& actual, Vertex const& expected, double tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

double HeightOver(Plane3f const& plane, Vertex const& p) {
    return double{plane.normal.x} * p.x + double{plane.normal.y} * p.y + double{plane.normal.z} * p.z - plane.distance;
}

/// Looks along y with z up, so that the right vector is x.
ViewProjection AlongY(bool isPerspective, double sizeX = 640, double sizeY = 480) {
    return isPerspective ? ViewProjection::FromPerspective({1, 2, 3}, {0, 1, 0}, {0, 0, 1}, kPi / 3, sizeX, sizeY)
                         : ViewProjection::FromOrthogonal({1, 2, 3}, {0, 1, 0}, {0, 0, 1}, 0.5, sizeX, sizeY);
}

TEST(ViewProjection, IsBornAsPerspectiveCameraWithoutPlacement) {
    ViewProjection const view;
    EXPECT_TRUE(view.IsPerspective());
    EXPECT_EQ(view.GetAngle(), 1.0471975511965976);
    EXPECT_EQ(view.GetScale(), 1.0);
    EXPECT_EQ(view.GetSizeX(), 640);
    EXPECT_EQ(view.GetSizeY(), 480);
    ExpectEqual(view.GetLocation(), {});
    ExpectEqual(view.GetDirection(), {});
    ExpectEqual(view.GetUpVector(), {});
    ExpectEqual(view.GetRightVector(), {});
}

TEST(ViewProjection, FactoriesZeroTheParameterOfTheOtherKind) {
    EXPECT_EQ(AlongY(false).GetAngle(), 0);
    EXPECT_EQ(AlongY(false).GetScale(), 0.5);
    EXPECT_FALSE(AlongY(false).IsPerspective());
    EXPECT_EQ(AlongY(true).GetScale(), 0);
    EXPECT_EQ(AlongY(true).GetAngle(), kPi / 3);
    EXPECT_TRUE(AlongY(true).IsPerspective());
}

TEST(ViewProjection, PlacementKeepsTheDirectionAndMakesTheOthersUnitAndPerpendicular) {
    Vertex const direction{0.3, -4, 1.7};
    for (auto const& view : {ViewProjection::FromPerspective({1, 2, 3}, direction, {0.1, 0.2, 5}, 1, 800, 600),
                             ViewProjection::FromOrthogonal({1, 2, 3}, direction, {0.1, 0.2, 5}, 2, 800, 600)}) {
        ExpectEqual(view.GetLocation(), {1, 2, 3});
        ExpectEqual(view.GetDirection(), direction);
        EXPECT_NEAR(Length(view.GetUpVector()), 1, 1e-15);
        EXPECT_NEAR(Length(view.GetRightVector()), 1, 1e-15);
        EXPECT_NEAR(Dot(view.GetUpVector(), view.GetRightVector()), 0, 1e-15);
        EXPECT_NEAR(Dot(view.GetUpVector(), direction), 0, 1e-14);
        EXPECT_NEAR(Dot(view.GetRightVector(), direction), 0, 1e-14);
        EXPECT_GT(view.GetUpVector().z, 0);
    }
}

TEST(ViewProjection, SetPlacementLeavesAllElse) {
    ViewProjection view = AlongY(false, 100, 200);
    view.SetPlacement({7, 8, 9}, {1, 0, 0}, {0, 0, 2});
    ExpectEqual(view.GetLocation(), {7, 8, 9});
    ExpectEqual(view.GetRightVector(), {0, -1, 0});
    ExpectEqual(view.GetUpVector(), {0, 0, 1});
    EXPECT_EQ(view.GetScale(), 0.5);
    EXPECT_EQ(view.GetSizeX(), 100);
    EXPECT_EQ(view.GetSizeY(), 200);
    EXPECT_FALSE(view.IsPerspective());
}

TEST(ViewProjection, SettersStoreTheValueAndComputeNothing) {
    ViewProjection view = AlongY(false);
    view.SetIsPerspective(true);
    EXPECT_TRUE(view.IsPerspective());
    EXPECT_EQ(view.GetAngle(), 0);
    EXPECT_EQ(view.GetScale(), 0.5);
    view.SetAngle(-1);
    view.SetScale(0);
    view.SetSizeX(3);
    view.SetSizeY(-4);
    EXPECT_EQ(view.GetAngle(), -1);
    EXPECT_EQ(view.GetScale(), 0);
    EXPECT_EQ(view.GetSizeX(), 3);
    EXPECT_EQ(view.GetSizeY(), -4);
}

TEST(ViewProjection, DirectionParallelToUpGivesVectorsThatAreNotFinite) {
    auto const view = ViewProjection::FromPerspective({}, {0, 0, 1}, {0, 0, 1}, 1, 640, 480);
    EXPECT_FALSE(std::isfinite(view.GetRightVector().x));
    EXPECT_FALSE(std::isfinite(view.GetUpVector().x));
}

TEST(ViewToWorld, CentreRayOfPerspectiveIsTheNormalisedDirectionFromTheCamera) {
    auto const view = ViewProjection::FromPerspective({1, 2, 3}, {0, 4, 3}, {0, 0, 1}, 1, 640, 480);
    Vertex origin;
    Vertex direction;
    ViewToWorld(view, 320, 240, origin, direction);
    ExpectEqual(origin, {1, 2, 3});
    ExpectNear(direction, {0, 0.8, 0.6}, 1e-15);
}

TEST(ViewToWorld, CentreRayOfParallelCameraIsTheStoredDirection) {
    auto const view = ViewProjection::FromOrthogonal({1, 2, 3}, {0, 4, 3}, {0, 0, 1}, 2, 640, 480);
    Vertex origin;
    Vertex direction;
    ViewToWorld(view, 320, 240, origin, direction);
    ExpectEqual(origin, {1, 2, 3});
    ExpectEqual(direction, {0, 4, 3});
}

TEST(ViewToWorld, RaysOfParallelCameraDifferInTheirOriginsOnly) {
    Vertex origin;
    Vertex direction;
    ViewToWorld(AlongY(false), 420, 140, origin, direction);
    ExpectEqual(origin, {1 + 0.5 * 100, 2, 3 + 0.5 * 100});
    ExpectEqual(direction, {0, 1, 0});
}

TEST(ViewToWorld, PixelsGrowToTheRightAndDownward) {
    Vertex origin;
    Vertex direction;
    ViewToWorld(AlongY(true), 640, 480, origin, direction);
    EXPECT_GT(direction.x, 0);
    EXPECT_LT(direction.z, 0);
    EXPECT_NEAR(Length(direction), 1, 1e-15);
}

TEST(ViewToWorld, AngleSpansTheWidthOfLandscapeAndTheHeightOfPortrait) {
    Vertex origin;
    Vertex direction;
    ViewToWorld(AlongY(true, 640, 480), 640, 240, origin, direction);
    EXPECT_NEAR(std::atan2(direction.x, direction.y), kPi / 6, 1e-14);
    ViewToWorld(AlongY(true, 480, 640), 240, 0, origin, direction);
    EXPECT_NEAR(std::atan2(direction.z, direction.y), kPi / 6, 1e-14);
    ViewToWorld(AlongY(true, 480, 640), 480, 320, origin, direction);
    EXPECT_NEAR(direction.x / direction.y, std::tan(kPi / 6) * 0.75, 1e-14);
}

TEST(ViewToWorld, ZeroVectorsGiveTheStoredDirection) {
    Vertex origin{1, 1, 1};
    Vertex direction{1, 1, 1};
    ViewToWorld(ViewProjection(), 10, 20, origin, direction);
    ExpectEqual(origin, {});
    ExpectEqual(direction, {});
}

TEST(WorldToView, FindsThePixelThatARayStartedFrom) {
    std::mt19937 random(20240607);
    std::uniform_real_distribution<double> coordinate(-100, 100);
    for (int i = 0; i < 2000; ++i) {
        Vertex const axis{coordinate(random), coordinate(random), coordinate(random)};
        Vertex const location{coordinate(random), coordinate(random), coordinate(random)};
        double const sizeX = 700 + coordinate(random);
        double const sizeY = 700 + coordinate(random);
        auto const view =
            i % 2 == 0 ? ViewProjection::FromPerspective(location, axis / Length(axis), {0, 0.1, 1}, 1, sizeX, sizeY)
                       : ViewProjection::FromOrthogonal(location, axis / Length(axis), {0, 0.1, 1}, 0.01, sizeX, sizeY);
        double const pixelX = 350 + 5 * coordinate(random);
        double const pixelY = 350 + 5 * coordinate(random);
        Vertex origin;
        Vertex direction;
        ViewToWorld(view, pixelX, pixelY, origin, direction);
        double x = 0;
        double y = 0;
        WorldToView(view, origin + direction * (101 + coordinate(random)), x, y);
        EXPECT_NEAR(x, pixelX, 1e-8);
        EXPECT_NEAR(y, pixelY, 1e-8);
    }
}

TEST(WorldToView, PerspectiveMarksPointsOnAndBehindTheCamera) {
    for (double const depth : {1e-8, 0.0, -5.0}) {
        double x = 0;
        double y = 0;
        WorldToView(AlongY(true), {1, 2 + depth, 3}, x, y);
        EXPECT_EQ(x, kLargest);
        EXPECT_EQ(y, kLargest);
    }
    double x = 0;
    double y = 0;
    WorldToView(AlongY(true), {1, 2 + 2e-7, 3}, x, y);
    EXPECT_NEAR(x, 320, 1e-6);
}

TEST(WorldToView, ParallelCameraShowsWhatIsBehindIt) {
    double x = 0;
    double y = 0;
    WorldToView(AlongY(false), {1 + 5, -100, 3 + 10}, x, y);
    EXPECT_EQ(x, 320 + 10);
    EXPECT_EQ(y, 240 - 20);
}

TEST(WorldToView, DepthScalesWithTheLengthOfTheDirection) {
    auto const view = ViewProjection::FromPerspective({}, {0, 2, 0}, {0, 0, 1}, kPi / 2, 640, 480);
    double x = 0;
    double y = 0;
    WorldToView(view, {1, 1, 0}, x, y);
    EXPECT_NEAR(x, 320 + 320 * 0.5, 1e-9);
    EXPECT_NEAR(y, 240, 1e-9);
}

TEST(CreateClippingPlanes, ComesInTheOrderLeftTopRightBottom) {
    for (bool const isPerspective : {true, false}) {
        auto const planes = CreateClippingPlanes(AlongY(isPerspective), {}, 320, 240, 10);
        ASSERT_EQ(planes.size(), 4u);
        EXPECT_LT(planes[0].normal.x, -0.9f);
        EXPECT_GT(planes[1].normal.z, 0.9f);
        EXPECT_GT(planes[2].normal.x, 0.9f);
        EXPECT_LT(planes[3].normal.z, -0.9f);
    }
}

TEST(CreateClippingPlanes, KeepsExactlyThePointsThatAreSeenInThePickBox) {
    std::mt19937 random(77);
    std::uniform_real_distribution<double> coordinate(-1, 1);
    AffineTransform transform;
    transform.matrix.m = {0, -3, 0, 5, 3, 0, 0, -7,
                          0, 0,  3, 2, 0, 0, 0, 1};  // a quarter turn, three times larger, moved
    int inside = 0;
    for (int i = 0; i < 4000; ++i) {
        bool const isPerspective = i % 2 == 0;
        auto const view = i % 4 < 2 ? AlongY(isPerspective) : AlongY(isPerspective, 480, 640);
        auto const planes = CreateClippingPlanes(view, transform, 200, 300, 40);
        Vertex origin;
        Vertex direction;
        double const pixelX = 200 + 80 * coordinate(random);
        double const pixelY = 300 + 80 * coordinate(random);
        ViewToWorld(view, pixelX, pixelY, origin, direction);
        Vertex const world = origin + direction * (20 + 10 * coordinate(random)) - transform.matrix.GetColumn(3);
        Vertex const model{world.y / 3, -world.x / 3, world.z / 3};
        double const outside = std::max(std::abs(pixelX - 200), std::abs(pixelY - 300)) - 40;
        if (std::abs(outside) < 0.1) continue;  // nearer to the edge than single precision can tell
        bool isKept = true;
        for (auto const& plane : planes) isKept = isKept && HeightOver(plane, model) <= 0;
        EXPECT_EQ(isKept, outside < 0) << "pixel " << pixelX << ' ' << pixelY;
        inside += isKept ? 1 : 0;
    }
    EXPECT_GT(inside, 500);
}

TEST(CreateClippingPlanes, SingularTransformCountsAsIdentity) {
    AffineTransform singular;
    singular.matrix.m.fill(0);
    auto const planes = CreateClippingPlanes(AlongY(true), singular, 100, 100, 5);
    auto const expected = CreateClippingPlanes(AlongY(true), {}, 100, 100, 5);
    ASSERT_EQ(planes.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(planes[i].normal.x, expected[i].normal.x);
        EXPECT_EQ(planes[i].distance, expected[i].distance);
    }
}

TEST(CreateClippingPlanes, DegenerateCameraStillGivesFourPlanes) {
    EXPECT_EQ(CreateClippingPlanes(ViewProjection(), {}, 0, 0, 0).size(), 4u);
    EXPECT_EQ(CreateClippingPlanes(AlongY(true), {}, 320, 240, 0).size(), 4u);
}

}  // namespace
