#include "picking/EdgeOracle.h"
#include "picking/EdgeScenes.h"

#include <Tools/Picking/RayToBRepEdgesBuilder.h>
#include <Tools/Picking/RayToFacetedBRepEdgesBuilder.h>

#include <gtest/gtest.h>

namespace Quorlan::Testing {

namespace {

using Tools::Picking::RayToBRepEdgesBuilder;
using Tools::Picking::RayToFacetedBRepEdgesBuilder;

glm::vec3 const kDown{0, 0, -1};

std::vector<char> BufferOf(RawBRep const& shape, std::uint8_t kind = 1) {
    RawModel model;
    model.AddBRep(shape, kind);
    return model.Write();
}

std::vector<char> BufferOf(FacetedBRep const& brep) { return BufferOf(ToRawBRep(brep)); }

/// A builder that holds the hit (1, 0, 0) of face 1 at parameter 10.
RayToBRepEdgesBuilder BuilderWithAHit() {
    FacetedBRep brep = Square(8, -1);
    Append(brep, Square(1));
    RayToBRepEdgesBuilder builder;
    EXPECT_TRUE(builder.BuildBRep({1.5f, 0, 10}, kDown, {}, BufferOf(brep), 0));
    return builder;
}

void ExpectKeptHit(RayToBRepEdgesBuilder const& builder) {
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(1, 0, 0));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetRayParameter(), 10);
}

}  // namespace

TEST(RayToBRepEdgesBuilder, TheRayParameterIsThePositionOfTheEdgePointAlongTheRay) { ExpectKeptHit(BuilderWithAHit()); }

TEST(RayToBRepEdgesBuilder, AnEdgeBehindTheOriginHasANegativeRayParameter) {
    RayToBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.BuildBRep({0.5f, 0, -3}, kDown, {}, BufferOf(Square(1)), 0));
    EXPECT_EQ(builder.GetRayParameter(), -3);
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(1, 0, 0));
}

TEST(RayToBRepEdgesBuilder, EachEntryPointReadsItsOwnVector) {
    RawModel model;
    model.AddBRep(ToRawBRep(Square(1)), 1);
    model.AddBRep(ToRawBRep(Square(2)), 6);
    model.AddBRep(ToRawBRep(Square(3)), 7);
    auto const buffer = model.Write();
    RayToBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.BuildBRep({0.5f, 0, 10}, kDown, {}, buffer, 0));
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(1, 0, 0));
    ASSERT_TRUE(builder.BuildBRepWithUV({0.5f, 0, 10}, kDown, {}, buffer, 0));
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(2, 0, 0));
    ASSERT_TRUE(builder.BuildBRepWithNormal({0.5f, 0, 10}, kDown, {}, buffer, 0));
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(3, 0, 0));
}

TEST(RayToBRepEdgesBuilder, TheIndexSelectsTheShape) {
    RawModel model;
    for (double const half : {1.0, 2.0, 3.0}) model.AddBRep(ToRawBRep(Square(half)), 6);
    RayToBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.BuildBRepWithUV({0.5f, 0, 10}, kDown, {}, model.Write(), 2));
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(3, 0, 0));
}

TEST(RayToBRepEdgesBuilder, AMissKeepsEverything) {
    auto builder = BuilderWithAHit();
    EXPECT_FALSE(builder.BuildBRep({0, 0, 4}, kDown, {{0, 0, 1, -5}}, BufferOf(Square(1)), 0));
    ExpectKeptHit(builder);
}

TEST(RayToBRepEdgesBuilder, AFailedLookupKeepsEverything) {
    auto builder = BuilderWithAHit();
    EXPECT_FALSE(builder.BuildBRep({0, 0, 4}, kDown, {}, {}, 0));

    RawModel withoutGeometry;
    withoutGeometry.hasGeometry = false;
    EXPECT_FALSE(builder.BuildBRep({0, 0, 4}, kDown, {}, withoutGeometry.Write(), 0));
    EXPECT_FALSE(builder.BuildBRepWithUV({0, 0, 4}, kDown, {}, BufferOf(Square(1)), 0));
    EXPECT_FALSE(builder.BuildBRepWithNormal({0, 0, 4}, kDown, {}, BufferOf(Square(1)), 0));

    RawModel model;
    model.facetedBReps.emplace(1, ToRawBRep(Square(1))).front().vertices.reset();
    EXPECT_FALSE(builder.BuildBRep({0, 0, 4}, kDown, {}, model.Write(), 0));
    ExpectKeptHit(builder);
}

TEST(RayToBRepEdgesBuilder, AShapeWithoutAFaceVectorIsAMissThatKeepsEverything) {
    RawBRep shape = ToRawBRep(Square(1));
    shape.faces.reset();
    auto builder = BuilderWithAHit();
    EXPECT_FALSE(builder.BuildBRep({0, 0, 4}, kDown, {}, BufferOf(shape), 0));
    ExpectKeptHit(builder);
}

TEST(RayToBRepEdgesBuilder, HolesCountWithoutAFaceVector) {
    RawBRep shape = ToRawBRep(Square(1));
    shape.faces.reset();
    shape.holes = {{{5, std::vector<std::uint16_t>{0, 1, 2, 3}}}};
    RayToBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.BuildBRep({0.5f, 0, 4}, kDown, {}, BufferOf(shape), 0));
    EXPECT_EQ(builder.GetWireIndex(), 5u);
}

TEST(RayToBRepEdgesBuilder, FacesAndHolesWithoutALoopArePassedOverAndKeepTheirNumbers) {
    RawBRep shape = ToRawBRep(Square(1));
    shape.faces->insert(shape.faces->begin(), 2, std::nullopt);
    shape.holes = {{{7, std::nullopt}, {2, std::vector<std::uint16_t>{0, 2}}}};
    RayToBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.BuildBRep({0.75f, 0.5f, 4}, kDown, {}, BufferOf(shape), 0));
    EXPECT_EQ(builder.GetWireIndex(), 2u);
    EXPECT_NEAR(builder.GetEdgePoint().x, 0.625f, 1e-6f);  // on the hole's diagonal
    EXPECT_NEAR(builder.GetEdgePoint().y, 0.625f, 1e-6f);
}

TEST(RayToBRepEdgesBuilder, HolesAreVisitedInTheOrderOfTheirVector) {
    RawBRep shape = ToRawBRep(Square(9));
    shape.vertices->insert(shape.vertices->end(), {{-1, -1, 0}, {-1, 1, 0}, {1, -1, 0}, {1, 1, 0}});
    shape.faces->push_back(std::vector<std::uint16_t>{0, 1, 2, 3});
    shape.holes = {{{1, std::vector<std::uint16_t>{4, 5}}, {0, std::vector<std::uint16_t>{6, 7}}}};
    RayToBRepEdgesBuilder builder;
    ASSERT_TRUE(builder.BuildBRep({0, 0, 4}, kDown, {}, BufferOf(shape), 0));
    EXPECT_EQ(builder.GetWireIndex(), 1u);
    EXPECT_EQ(builder.GetEdgePoint(), glm::vec3(-1, 0, 0));
}

TEST(RayToBRepEdgesBuilder, TheIdentifierOfTheBufferIsNotLookedAt) {
    RawModel model;
    model.identifier = "QLN7";
    model.AddBRep(ToRawBRep(Square(1)));
    RayToBRepEdgesBuilder builder;
    EXPECT_TRUE(builder.BuildBRep({0, 0, 4}, kDown, {}, model.Write(), 0));
}

TEST(RayToBRepEdgesBuilder, AgreesWithItsTwinOnPointAndFace) {
    constexpr std::uint32_t kSeed = 4303;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    RayToBRepEdgesBuilder builder;
    RayToFacetedBRepEdgesBuilder twin;
    for (int i = 0; i < 2000; ++i) {
        FacetedBRep const brep = random.BRep(5);
        Ray3f const ray = random.Ray(10);
        auto const planes = random.Planes(4, 5);
        bool const found = twin.Build(ray, planes, brep);
        ASSERT_EQ(builder.BuildBRep(ToGlm(ray.origin), ToGlm(ray.direction), ToGlm(planes), BufferOf(brep), 0), found);
        if (!found) continue;
        ASSERT_EQ(builder.GetEdgePoint(), ToGlm(twin.GetEdgePoint())) << i;
        ASSERT_EQ(builder.GetWireIndex(), twin.GetWireIndex()) << i;
        ASSERT_EQ(builder.GetRayParameter(), Dot(twin.GetEdgePoint() - ray.origin, ray.direction)) << i;
    }
}

TEST(RayToBRepEdgesBuilder, TheVertexLayoutsGiveTheSameEdges) {
    constexpr std::uint32_t kSeed = 4304;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int i = 0; i < 200; ++i) {
        RawBRep const shape = ToRawBRep(random.BRep(5));
        Ray3f const ray = random.Ray(10);
        glm::vec3 const origin = ToGlm(ray.origin);
        glm::vec3 const direction = ToGlm(ray.direction);
        RayToBRepEdgesBuilder plain;
        RayToBRepEdgesBuilder other;
        bool const found = plain.BuildBRep(origin, direction, {}, BufferOf(shape, 1), 0);
        ASSERT_EQ(other.BuildBRepWithUV(origin, direction, {}, BufferOf(shape, 6), 0), found);
        if (found) {
            ASSERT_EQ(other.GetEdgePoint(), plain.GetEdgePoint());
        }
        ASSERT_EQ(other.BuildBRepWithNormal(origin, direction, {}, BufferOf(shape, 7), 0), found);
        if (found) {
            ASSERT_EQ(other.GetEdgePoint(), plain.GetEdgePoint());
        }
    }
}

}  // namespace Quorlan::Testing
