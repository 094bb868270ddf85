#include "picking/FaceWithHole.h"
#include "support/Shapes.h"

#include <Tools/Picking/RayToFacetedBRepSurfaceIntersectionBuilder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace Quorlan::Tools::Picking;
using GeometryObjectLib::Vertex;
using Builder = RayToFacetedBRepSurfaceIntersectionBuilder;
using Quorlan::Testing::MakeFaceWithHole;
using TestSupport::MakeBox;
using TestSupport::MakeUnitCube;

constexpr float kLargest = std::numeric_limits<float>::max();

/// A square 0..1 x 0..1 at height z that faces up.
FacetedBRep MakeSquare(double z) {
    FacetedBRep square;
    square.vertices = {{0, 0, z}, {1, 0, z}, {1, 1, z}, {0, 1, z}};
    square.faces = {{0, 1, 2, 3}};
    return square;
}

void ExpectMiss(Builder const& builder) {
    EXPECT_EQ(builder.GetRayParameter(), kLargest);
    EXPECT_EQ(builder.GetWireIndex(), 0u);
    EXPECT_EQ(builder.GetPosition().x, 0);
    EXPECT_EQ(builder.GetPosition().y, 0);
    EXPECT_EQ(builder.GetPosition().z, 0);
    EXPECT_EQ(builder.GetNormal().x, 1);
    EXPECT_EQ(builder.GetNormal().y, 0);
    EXPECT_EQ(builder.GetNormal().z, 0);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, IsBornWithZeros) {
    Builder const builder;
    EXPECT_EQ(builder.GetRayParameter(), 0);
    EXPECT_EQ(builder.GetWireIndex(), 0u);
    EXPECT_EQ(builder.GetNormal().x, 0);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, CubeIsHitOnTheSideThatFacesTheRay) {
    Builder builder;
    ASSERT_TRUE(builder.Build({{5, 0.25f, 0.75f}, {-2, 0, 0}}, {}, MakeUnitCube()));
    EXPECT_EQ(builder.GetWireIndex(), 3u);
    EXPECT_EQ(builder.GetRayParameter(), 2);
    EXPECT_EQ(builder.GetPosition().x, 1);
    EXPECT_EQ(builder.GetPosition().y, 0.25f);
    EXPECT_EQ(builder.GetPosition().z, 0.75f);
    EXPECT_EQ(builder.GetNormal().x, 1);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, MissAfterHitResetsTheResult) {
    Builder builder;
    ASSERT_TRUE(builder.Build({{5, 0.5f, 0.5f}, {-1, 0, 0}}, {}, MakeUnitCube()));
    EXPECT_FALSE(builder.Build({{5, 2, 0.5f}, {-1, 0, 0}}, {}, MakeUnitCube()));
    ExpectMiss(builder);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, ShapeWithoutFacesIsAMiss) {
    Builder builder;
    EXPECT_FALSE(builder.Build({{5, 0.5f, 0.5f}, {-1, 0, 0}}, {}, FacetedBRep()));
    ExpectMiss(builder);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, OriginBehindThePlaneNeverHits) {
    for (bool const singleSided : {true, false}) {
        Builder builder;
        builder.SetSingleSided(singleSided);
        EXPECT_FALSE(builder.Build({{0.5f, 0.5f, -1}, {0, 0, 1}}, {}, MakeSquare(0)));
        EXPECT_FALSE(builder.Build({{0.5f, 0.5f, -1}, {0, 0, -1}}, {}, MakeSquare(0)));
    }
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, FaceTurnedAwayIsHitBehindTheOriginOnlyWhenBothSidesCount) {
    Builder builder;
    EXPECT_FALSE(builder.Build({{0.5f, 0.5f, 2}, {0, 0, 1}}, {}, MakeSquare(0)));
    builder.SetSingleSided(false);
    ASSERT_TRUE(builder.Build({{0.5f, 0.5f, 2}, {0, 0, 1}}, {}, MakeSquare(0)));
    EXPECT_EQ(builder.GetRayParameter(), -2);
    EXPECT_EQ(builder.GetPosition().z, 0);
    EXPECT_EQ(builder.GetNormal().z, 1);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, FaceParallelToTheRayIsNeverHit) {
    for (bool const singleSided : {true, false}) {
        Builder builder;
        builder.SetSingleSided(singleSided);
        EXPECT_FALSE(builder.Build({{-1, 0.5f, 0}, {1, 0, 0}}, {}, MakeSquare(0)));
    }
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, OriginOnThePlaneHitsAtZero) {
    Builder builder;
    ASSERT_TRUE(builder.Build({{0.5f, 0.5f, 0}, {0, 0, -1}}, {}, MakeSquare(0)));
    EXPECT_EQ(builder.GetRayParameter(), 0);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, LastOfSeveralFacesWinsWhateverItsDistance) {
    FacetedBRep stack = MakeSquare(0);
    for (auto const& vertex : MakeSquare(5).vertices) stack.vertices.push_back(vertex);
    stack.faces = {{4, 5, 6, 7}, {0, 1, 2, 3}};
    Builder builder;
    ASSERT_TRUE(builder.Build({{0.5f, 0.5f, 10}, {0, 0, -1}}, {}, stack));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 10);

    stack.faces = {{0, 1, 2, 3}, {4, 5, 6, 7}};
    ASSERT_TRUE(builder.Build({{0.5f, 0.5f, 10}, {0, 0, -1}}, {}, stack));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 5);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, RayThroughAHoleMissesTheFace) {
    Builder builder;
    EXPECT_FALSE(builder.Build({{2, 2, 5}, {0, 0, -1}}, {}, MakeFaceWithHole(0)));
    ExpectMiss(builder);
    ASSERT_TRUE(builder.Build({{0.5f, 2, 5}, {0, 0, -1}}, {}, MakeFaceWithHole(0)));
    EXPECT_EQ(builder.GetRayParameter(), 5);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, PiercedHoleExcludesItsFaceWhole) {
    // The hole stands off its face: its plane is pierced inside it, and the face is excluded although the ray meets it.
    FacetedBRep plate = MakeFaceWithHole(0);
    for (std::size_t i = 4; i < 8; ++i) plate.vertices[i].z = 1;
    Builder builder;
    EXPECT_FALSE(builder.Build({{2, 2, 5}, {0, 0, -1}}, {}, plate));
    builder.SetSingleSided(false);
    EXPECT_FALSE(builder.Build({{2, 2, 5}, {0, 0, -1}}, {}, plate));
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, HoleThatClippingTakesAwayExcludesNothing) {
    FacetedBRep plate = MakeFaceWithHole(0);
    for (std::size_t i = 4; i < 8; ++i) plate.vertices[i].z = 1;
    Builder builder;
    ASSERT_TRUE(builder.Build({{2, 2, 5}, {0, 0, -1}}, {{{0, 0, 1}, 0.5f}}, plate));
    EXPECT_EQ(builder.GetRayParameter(), 5);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, HolesExcludeTheirOwnFacesOnly) {
    FacetedBRep plates = MakeFaceWithHole(0);
    for (double const z : {1.0, 2.0}) {
        auto const first = static_cast<std::uint32_t>(plates.vertices.size());
        for (auto const& vertex : MakeFaceWithHole(z).vertices) plates.vertices.push_back(vertex);
        plates.faces.push_back({first, first + 1, first + 2, first + 3});
        if (z == 2.0) plates.holes[2] = {{first + 4, first + 5, first + 6, first + 7}};
    }
    Builder builder;
    ASSERT_TRUE(builder.Build({{2, 2, 5}, {0, 0, -1}}, {}, plates));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    ASSERT_TRUE(builder.Build({{0.5f, 2, 5}, {0, 0, -1}}, {}, plates));
    EXPECT_EQ(builder.GetWireIndex(), 2u);
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, PointOnAClippingPlaneIsKeptAndOneBeyondIsNot) {
    Builder builder;
    Ray3f const ray{{0.5f, 0.5f, 2}, {0, 0, -1}};
    EXPECT_TRUE(builder.Build(ray, {{{1, 0, 0}, 0.5f}}, MakeSquare(0)));
    EXPECT_FALSE(builder.Build(ray, {{{1, 0, 0}, std::nextafter(0.5f, 0.0f)}}, MakeSquare(0)));
    EXPECT_FALSE(builder.Build(ray, {{{1, 0, 0}, 9}, {{-1, 0, 0}, -1}}, MakeSquare(0)));
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, ClippingPlaneAtInfinityKeepsThePoint) {
    Builder builder;
    Ray3f const ray{{0.5f, 0.5f, 2}, {0, 0, -1}};
    for (float const distance : {-std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_TRUE(builder.Build(ray, {{{1, 0, 0}, distance}}, MakeSquare(0)));
    }
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, DegenerateLoopsNeverMatch) {
    FacetedBRep shape = MakeSquare(0);
    shape.faces = {{}, {0}, {0, 1}, {0, 0, 0}, {0, 1, 0, 1}};
    for (bool const singleSided : {true, false}) {
        Builder builder;
        builder.SetSingleSided(singleSided);
        EXPECT_FALSE(builder.Build({{0.5f, 0.5f, 2}, {0, 0, -1}}, {}, shape));
        EXPECT_FALSE(builder.Build({{2, 0, 0}, {-1, 0, 0}}, {}, shape));
    }
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, ConcaveFaceIsHitInsideItsOutlineOnly) {
    FacetedBRep shape;  // an L
    shape.vertices = {{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {1, 1, 0}, {1, 4, 0}, {0, 4, 0}};
    shape.faces = {{0, 1, 2, 3, 4, 5}};
    Builder builder;
    EXPECT_TRUE(builder.Build({{3.5f, 0.5f, 1}, {0, 0, -1}}, {}, shape));
    EXPECT_TRUE(builder.Build({{0.5f, 3.5f, 1}, {0, 0, -1}}, {}, shape));
    EXPECT_FALSE(builder.Build({{2, 2, 1}, {0, 0, -1}}, {}, shape));
}

/// Which face of a box a ray enters through, by slabs in double precision; -1 for none. The faces are -z, +z, -y, +x,
/// +y, -x.
int EnterBox(Vertex const& lo, Vertex const& hi, Vertex const& o, Vertex const& d, double& t, double& margin) {
    double const low[] = {lo.x, lo.y, lo.z};
    double const high[] = {hi.x, hi.y, hi.z};
    double const from[] = {o.x, o.y, o.z};
    double const along[] = {d.x, d.y, d.z};
    constexpr int kEntered[3][2] = {{5, 3}, {2, 4}, {0, 1}};
    double enter = -1e300;
    double leave = 1e300;
    int face = -1;
    for (int axis = 0; axis < 3; ++axis) {
        double const first = ((along[axis] > 0 ? low : high)[axis] - from[axis]) / along[axis];
        double const second = ((along[axis] > 0 ? high : low)[axis] - from[axis]) / along[axis];
        margin = std::min(margin, std::abs(first - enter));
        if (first > enter) face = kEntered[axis][along[axis] > 0 ? 0 : 1];
        enter = std::max(enter, first);
        leave = std::min(leave, second);
    }
    margin = std::min({margin, std::abs(leave - enter), std::abs(enter)});
    t = enter;
    return enter < leave && enter > 0 ? face : -1;
}

TEST(RayToFacetedBRepSurfaceIntersectionBuilder, AgreesWithTheSlabTestOnRandomBoxes) {
    std::mt19937 random(4711);
    std::uniform_real_distribution<double> coordinate(-10, 10);
    int hits = 0;
    for (int i = 0; i < 20000; ++i) {
        Vertex const lo{coordinate(random), coordinate(random), coordinate(random)};
        Vertex const hi = lo + Vertex{std::abs(coordinate(random)) + 0.1, std::abs(coordinate(random)) + 0.1,
                                      std::abs(coordinate(random)) + 0.1};
        Vertex const origin{2 * coordinate(random), 2 * coordinate(random), 2 * coordinate(random)};
        Vertex const direction = (lo + hi) / 2 - origin + Vertex{coordinate(random), coordinate(random), 0} / 2;
        double t = 0;
        double margin = 1e300;
        int const face = EnterBox(lo, hi, origin, direction, t, margin);
        if (margin < 1e-4) continue;
        Builder builder;
        Ray3f const ray{
            {static_cast<float>(origin.x), static_cast<float>(origin.y), static_cast<float>(origin.z)},
            {static_cast<float>(direction.x), static_cast<float>(direction.y), static_cast<float>(direction.z)}};
        ASSERT_EQ(builder.Build(ray, {}, MakeBox(lo, hi)), face >= 0) << "box " << i;
        if (face < 0) continue;
        ++hits;
        EXPECT_EQ(builder.GetWireIndex(), static_cast<std::uint64_t>(face)) << "box " << i;
        EXPECT_NEAR(builder.GetRayParameter(), t, 1e-4 * (1 + t)) << "box " << i;
    }
    EXPECT_GT(hits, 5000);
}

}  // namespace
