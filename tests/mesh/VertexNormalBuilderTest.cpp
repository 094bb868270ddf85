#include <Tools/VertexNormalBuilder.h>

#include "support/MeshShapes.h"
#include "support/RawModel.h"

#include <gtest/gtest.h>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::VertexNormalBuilder;

constexpr float kHalfPi = 1.5707964F;

VertexNormalBuilder Build(RawBRep const& shape, float angle) {
    VertexNormalBuilder builder;
    EXPECT_TRUE(builder.BuildBRep(ModelOf(shape), 0, angle));
    return builder;
}

glm::vec3 CornerPosition(VertexNormalBuilder& builder, std::uint16_t corner) {
    return builder.GetPositions()[builder.GetCorners()[corner].position];
}

/// The vector area of all triangles, which for a closed mesh is zero, and for a face is its normal times its area.
glm::vec3 VectorArea(VertexNormalBuilder& builder) {
    glm::vec3 sum(0);
    for (auto const& t : builder.GetTriangles()) {
        glm::vec3 const a = CornerPosition(builder, t.a);
        sum += glm::cross(CornerPosition(builder, t.b) - a, CornerPosition(builder, t.c) - a) / 2.0F;
    }
    return sum;
}

double TotalArea(VertexNormalBuilder& builder) {
    double area = 0;
    for (auto const& t : builder.GetTriangles()) {
        glm::vec3 const a = CornerPosition(builder, t.a);
        area += glm::length(glm::cross(CornerPosition(builder, t.b) - a, CornerPosition(builder, t.c) - a)) / 2;
    }
    return area;
}

bool IsEmpty(VertexNormalBuilder& builder) {
    return builder.GetTriangles().empty() && builder.GetCorners().empty() && builder.GetPositions().empty() &&
           builder.GetNormals().empty() && builder.GetTexCoords().empty();
}

TEST(VertexNormalBuilder, CubeBelowTheRightAngleHasThreeCornersPerVertex) {
    auto builder = Build(RawBox({0, 0, 0}, {1, 1, 1}), 0.5F);
    EXPECT_EQ(builder.GetPositions().size(), 8u);
    EXPECT_EQ(builder.GetCorners().size(), 24u);
    EXPECT_EQ(builder.GetNormals().size(), 6u);
    EXPECT_EQ(builder.GetTriangles().size(), 12u);
    EXPECT_TRUE(builder.GetTexCoords().empty());
    std::set<std::pair<int, int>> distinct;
    for (auto const& c : builder.GetCorners()) distinct.emplace(c.normal, c.position);
    EXPECT_EQ(distinct.size(), 24u);
}

TEST(VertexNormalBuilder, CubeAboveTheRightAngleHasOneCornerPerVertex) {
    auto builder = Build(RawBox({0, 0, 0}, {1, 1, 1}), 2.0F);
    EXPECT_EQ(builder.GetCorners().size(), 8u);
    EXPECT_EQ(builder.GetNormals().size(), 8u);
    for (auto const& corner : builder.GetCorners()) {
        glm::vec3 const outward = builder.GetPositions()[corner.position] - glm::vec3(0.5F);
        EXPECT_NEAR(glm::dot(builder.GetNormals()[corner.normal], glm::normalize(outward)), 1, 1e-6);
    }
}

TEST(VertexNormalBuilder, TrianglesWindAsTheirFaces) {
    auto builder = Build(RawBox({0, 0, 0}, {1, 2, 3}), 0.5F);
    for (auto const& t : builder.GetTriangles()) {
        glm::vec3 const a = CornerPosition(builder, t.a);
        glm::vec3 const n = glm::cross(CornerPosition(builder, t.b) - a, CornerPosition(builder, t.c) - a);
        for (std::uint16_t const c : {t.a, t.b, t.c}) {
            EXPECT_GT(glm::dot(n, builder.GetNormals()[builder.GetCorners()[c].normal]), 0);
        }
    }
}

TEST(VertexNormalBuilder, AngleExactlyAtTheThresholdDoesNotSmooth) {
    // Two faces with normals (0, 0, 1) and (0, -0.6, 0.8), whose product is 0.8F; an angle with exactly this cosine.
    auto const shape =
        ShapeOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, -4, -3}, {0, -4, -3}}, {{0, 1, 2, 3}, {5, 4, 1, 0}});
    float angle = std::acos(0.8F);
    for (int i = 0; i < 8 && std::cos(angle) != 0.8F; ++i) angle = std::nextafter(angle, 0.0F);
    ASSERT_EQ(std::cos(angle), 0.8F);
    EXPECT_EQ(Build(shape, angle).GetNormals().size(), 2u);
    float wider = angle;
    while (std::cos(wider) == 0.8F) wider = std::nextafter(wider, 2.0F);
    EXPECT_EQ(Build(shape, wider).GetNormals().size(), 3u);  // at 0 and 1 the mean, elsewhere each face's own
}

TEST(VertexNormalBuilder, RightAngleInSinglePrecisionSmoothsPerpendicularFaces) {
    ASSERT_LT(std::cos(kHalfPi), 0.0F);
    EXPECT_EQ(Build(RawBox({0, 0, 0}, {1, 1, 1}), kHalfPi).GetCorners().size(), 8u);
}

TEST(VertexNormalBuilder, FacesThatCancelOutGetTheDefaultNormal) {
    auto const shape = ShapeOf({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}, {{0, 1, 2}, {2, 1, 0}});
    auto builder = Build(shape, 3.2F);  // cosine above that of opposite normals: cos(3.2) > -1
    ASSERT_GT(std::cos(3.2F), -1.0F);
    EXPECT_EQ(builder.GetNormals().size(), 2u);
    auto const doubled = ShapeOf({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}, {{0, 1, 2}, {2, 1, 0}, {1, 0, 2}, {0, 2, 1}});
    ASSERT_EQ(Build(doubled, 3.1415927F).GetNormals().size(), 2u);  // -1 > -1 is false
}

TEST(VertexNormalBuilder, SumOfNoLengthGivesTheDefaultNormal) {
    // Three faces around the z axis at 120 degrees, all smoothed together: their normals sum to (nearly) nothing.
    float const h = std::sqrt(3.0F) / 2;
    auto const shape =
        ShapeOf({{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, {-0.5F, h, 0}, {-0.5F, -h, 0}}, {{0, 1, 2}, {0, 1, 3}, {0, 1, 4}});
    auto builder = Build(shape, 3.0F);
    auto const& atOrigin = builder.GetNormals()[builder.GetCorners()[0].normal];
    EXPECT_EQ(atOrigin, glm::vec3(1, 0, 0));
}

TEST(VertexNormalBuilder, VertexUsedByNoFaceGivesTheZeroCornerAtItsIndex) {
    auto shape = RawBox({0, 0, 0}, {1, 1, 1});
    shape.vertices->insert(shape.vertices->begin() + 8, {9, 9, 9});
    auto builder = Build(shape, 0.5F);
    EXPECT_EQ(builder.GetCorners()[8].normal, 0);
    EXPECT_EQ(builder.GetCorners()[8].position, 0);
    EXPECT_EQ(builder.GetCorners().size(), 25u);
}

TEST(VertexNormalBuilder, FacesOfLessThanThreeVerticesMakeNothing) {
    auto const shape = ShapeOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{}, {0}, {1, 2}, {0, 1, 2}});
    auto builder = Build(shape, 0.5F);
    EXPECT_EQ(builder.GetTriangles().size(), 1u);
    EXPECT_EQ(builder.GetCorners().size(), 3u);
    EXPECT_EQ(builder.GetNormals().size(), 1u);
}

TEST(VertexNormalBuilder, TinyFacesAndBRepsOfLessThanThreeVerticesGetTheDefaultNormal) {
    auto tiny = Build(ShapeOf({{0, 0, 0}, {1e-4F, 0, 0}, {0, 1e-4F, 0}}, {{0, 1, 2}}), 0.5F);
    EXPECT_EQ(tiny.GetNormals().front(), glm::vec3(1, 0, 0));
    auto small = Build(ShapeOf({{0, 0, 0}, {1e-3F, 0, 0}, {0, 1e-3F, 0}}, {{0, 1, 2}}), 0.5F);
    EXPECT_EQ(small.GetNormals().front(), glm::vec3(0, 0, 1));
    auto two = Build(ShapeOf({{0, 0, 0}, {0, 1, 0}}, {{0, 1, 0}}), 0.5F);
    EXPECT_EQ(two.GetNormals().front(), glm::vec3(1, 0, 0));
    EXPECT_EQ(two.GetTriangles().size(), 1u);
}

TEST(VertexNormalBuilder, ConvexQuadrilateralIsSplitFromItsFirstVertex) {
    auto builder = Build(ShapeOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{1, 2, 3, 0}}), 0.5F);
    auto const& t = builder.GetTriangles();
    ASSERT_EQ(t.size(), 2u);
    EXPECT_EQ((std::array<int, 6>{t[0].a, t[0].b, t[0].c, t[1].a, t[1].b, t[1].c}),
              (std::array<int, 6>{1, 2, 3, 1, 3, 0}));
}

TEST(VertexNormalBuilder, ArrowQuadrilateralsAreCutAtTheReflexVertexInEveryOrientation) {
    // An arrow head with its reflex vertex at each place of the loop, in each coordinate plane, both ways round.
    std::vector<std::array<float, 2>> const arrow{{0, 0}, {2, 1}, {0, 2}, {0.5F, 1}};
    for (int plane = 0; plane < 3; ++plane) {
        for (int start = 0; start < 4; ++start) {
            for (bool const reversed : {false, true}) {
                std::vector<Vector3f> vertices;
                for (auto const& [u, v] : arrow) {
                    vertices.push_back(plane == 0   ? Vector3f{0, u, v}
                                       : plane == 1 ? Vector3f{v, 0, u}
                                                    : Vector3f{u, v, 0});
                }
                std::vector<std::uint16_t> loop;
                for (int i = 0; i < 4; ++i) loop.push_back(static_cast<std::uint16_t>((start + i) % 4));
                if (reversed) std::reverse(loop.begin(), loop.end());
                auto builder = Build(ShapeOf(vertices, {loop}), 0.5F);
                ASSERT_EQ(builder.GetTriangles().size(), 2u) << plane << ' ' << start << ' ' << reversed;
                glm::vec3 expected(0);
                expected[plane] = reversed ? -1.5F : 1.5F;
                EXPECT_NEAR(glm::length(VectorArea(builder) - expected), 0, 1e-6) << plane << ' ' << start;
            }
        }
    }
}

TEST(VertexNormalBuilder, PrismOf129SidesClosesWithoutAndWithTheFixedBuffer) {
    for (int const count : {5, 80, 81, 128, 129, 200}) {
        auto const sides = static_cast<std::uint16_t>(count);
        auto builder = Build(RawPrism(sides), 0.5F);
        EXPECT_EQ(builder.GetTriangles().size(), 2u * sides + 2u * (sides - 2u)) << sides;
        EXPECT_NEAR(glm::length(VectorArea(builder)), 0, 1e-4) << sides;
    }
}

TEST(VertexNormalBuilder, PlateWithHolesHasTheAreaOfItsFaces) {
    auto const plate = RawPlate(8);
    auto builder = Build(plate, 0.1F);
    double const hole = 2 * std::sqrt(2.0);
    double const rim = 8 * 2 * std::sin(3.141592653589793 / 8);
    EXPECT_NEAR(TotalArea(builder), 2 * (24 * 3 - 8 * hole) + 2 * 27 + 8 * rim, 1e-4);
    EXPECT_NEAR(glm::length(VectorArea(builder)), 0, 1e-4);
}

TEST(VertexNormalBuilder, HoleListedTwiceIsCutOutOnceAndAddsNoCorner) {
    auto const plate = RawPlate(1);
    auto twice = plate;
    for (auto const& hole : *plate.holes) twice.holes->push_back(hole);
    auto once = Build(plate, 0.1F);
    auto builder = Build(twice, 0.1F);
    EXPECT_EQ(builder.GetCorners().size(), once.GetCorners().size());
    EXPECT_NEAR(TotalArea(builder), TotalArea(once), 1e-4);
    EXPECT_NEAR(glm::length(VectorArea(builder)), 0, 1e-4);
}

TEST(VertexNormalBuilder, HolesOfDegenerateFacesAreStillTriangulatedAsHoles) {
    auto shape = ShapeOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1}});
    shape.holes.emplace({RawHole{0, std::vector<std::uint16_t>{2}}});
    auto builder = Build(shape, 0.5F);
    EXPECT_TRUE(builder.GetTriangles().empty());
    EXPECT_EQ(builder.GetCorners().size(), 3u);
}

TEST(VertexNormalBuilder, StoredNormalsReplaceTheSmoothedOnesAndCornersKeepTheirIndices) {
    auto shape = RawBox({0, 0, 0}, {1, 1, 1});
    for (int i = 0; i < 8; ++i) shape.normals.push_back({0, static_cast<float>(i), 0});
    VertexNormalBuilder stored;
    ASSERT_TRUE(stored.BuildBRepWithNormal(ModelOf(shape, 7), 0));
    auto smoothed = Build(shape, 0.31415927F);
    ASSERT_EQ(stored.GetNormals().size(), 8u);
    EXPECT_EQ(stored.GetNormals()[5], glm::vec3(0, 5, 0));
    ASSERT_EQ(stored.GetCorners().size(), smoothed.GetCorners().size());
    for (std::size_t i = 0; i < stored.GetCorners().size(); ++i) {
        EXPECT_EQ(stored.GetCorners()[i].normal, smoothed.GetCorners()[i].normal);
        EXPECT_EQ(stored.GetCorners()[i].position, smoothed.GetCorners()[i].position);
    }
}

TEST(VertexNormalBuilder, StoredNormalsKindIgnoresTheCallersAngle) {
    auto const buffer = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}), 7);
    VertexNormalBuilder builder;
    ASSERT_TRUE(builder.Build(buffer, 0, 2.0F));
    EXPECT_EQ(builder.GetCorners().size(), 24u);
}

TEST(VertexNormalBuilder, TextureCoordinatesComeOnePerStoredVertex) {
    auto shape = RawBox({0, 0, 0}, {1, 1, 1});
    for (int i = 0; i < 8; ++i) shape.uvs.emplace_back(static_cast<float>(i), -1.0F);
    VertexNormalBuilder builder;
    ASSERT_TRUE(builder.Build(ModelOf(shape, 6), 0, 2.0F));
    ASSERT_EQ(builder.GetTexCoords().size(), 8u);
    EXPECT_EQ(builder.GetTexCoords()[3], glm::vec2(3, -1));
    EXPECT_EQ(builder.GetCorners().size(), 8u);
    ASSERT_TRUE(builder.Build(ModelOf(shape, 1), 0, 2.0F));
    EXPECT_TRUE(builder.GetTexCoords().empty());
}

TEST(VertexNormalBuilder, UnsupportedKindsAndMissingDefinitionsFailAndKeepTheResults) {
    auto builder = Build(RawBox({0, 0, 0}, {1, 1, 1}), 0.5F);
    RawModel model;
    model.AddDefinition({0, 0, 0}, {1, 1, 1}, 5);
    model.AddDefinition({0, 0, 0}, {1, 1, 1}, 0);
    auto const buffer = model.Write();
    for (unsigned const definition : {0u, 1u, 2u}) EXPECT_FALSE(builder.Build(buffer, definition, 0.5F));
    EXPECT_FALSE(builder.Build({'Q', 'L', 'N', '8'}, 0, 0.5F));
    EXPECT_EQ(builder.GetTriangles().size(), 12u);
    EXPECT_EQ(builder.GetNormals().size(), 6u);
}

TEST(VertexNormalBuilder, AbsentBRepsAndTooShortBuffersGiveAnEmptyMesh) {
    auto builder = Build(RawBox({0, 0, 0}, {1, 1, 1}), 0.5F);
    EXPECT_TRUE(builder.BuildBRep(RawModel().Write(), 0, 0.5F));
    EXPECT_TRUE(IsEmpty(builder));
    builder = Build(RawBox({0, 0, 0}, {1, 1, 1}), 0.5F);
    EXPECT_FALSE(builder.BuildBRepWithUV({}, 0, 0.5F));
    EXPECT_TRUE(IsEmpty(builder));
    RawBRep nothing{std::nullopt, std::nullopt};
    EXPECT_TRUE(builder.BuildBRep(ModelOf(nothing), 0, 0.5F));
    EXPECT_TRUE(IsEmpty(builder));
}

TEST(VertexNormalBuilder, WhatIsAbsentOrOutOfRangeIsSkipped) {
    auto shape = RawBox({0, 0, 0}, {1, 1, 1});
    auto const expected = Build(shape, 0.5F);
    shape.faces->push_back(std::nullopt);
    shape.faces->push_back(std::vector<std::uint16_t>{8, 0, 65535, 1});
    shape.holes.emplace({RawHole{200, std::vector<std::uint16_t>{0, 1, 2}}});
    auto builder = Build(shape, 0.5F);
    EXPECT_EQ(builder.GetTriangles().size(), 12u);
    EXPECT_EQ(builder.GetCorners().size(), 24u);
}

TEST(VertexNormalBuilder, CopiesKeepTheirResultsWhenTheOriginalIsBuiltAgain) {
    auto builder = Build(RawBox({0, 0, 0}, {1, 1, 1}), 0.5F);
    auto copy = builder;
    EXPECT_TRUE(builder.BuildBRep(ModelOf(RawPrism(5)), 0, 0.5F));
    EXPECT_EQ(copy.GetTriangles().size(), 12u);
    EXPECT_TRUE(copy.BuildBRep(ModelOf(RawPrism(6)), 0, 0.5F));
    EXPECT_EQ(copy.GetPositions().size(), 12u);
    EXPECT_EQ(builder.GetPositions().size(), 10u);
    copy = builder;
    EXPECT_EQ(copy.GetPositions().size(), 10u);
}

}  // namespace
