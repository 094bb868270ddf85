#include "picking/EdgeScenes.h"
#include "picking/FaceWithHole.h"
#include "support/RawModel.h"
#include "support/Shapes.h"

#include <Tools/Picking/RayToBRepSurfaceIntersectionBuilder.h>
#include <Tools/Picking/RayToFacetedBRepSurfaceIntersectionBuilder.h>

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

namespace {

using namespace Quorlan::Tools::Picking;
using namespace Quorlan::Testing;
using TestSupport::MakeUnitCube;
using Builder = RayToBRepSurfaceIntersectionBuilder;
using Loop = std::vector<std::uint16_t>;

constexpr float kLargest = std::numeric_limits<float>::max();

/// A model with the shape as element 1 of each of the three vectors, after a shape that no test meets.
std::vector<char> WriteModel(RawBRep const& shape) {
    RawModel model;
    model.facetedBReps = {RawBox({90, 90, 90}, {91, 91, 91}), shape};
    model.brepsWithUV = model.facetedBReps;
    model.brepsWithNormal = model.facetedBReps;
    return model.Write();
}

struct EntryPoint {
    std::string name;
    bool (Builder::*build)(glm::vec3 const&, glm::vec3 const&, std::vector<glm::vec4> const&, std::vector<char> const&,
                           unsigned int);
};

class RayToBRepSurfaceIntersectionBuilderTest : public testing::TestWithParam<EntryPoint> {
protected:
    bool Build(glm::vec3 const& origin, glm::vec3 const& direction, std::vector<char> const& model,
               std::vector<glm::vec4> const& planes = {}) {
        return (builder.*GetParam().build)(origin, direction, planes, model, 1);
    }

    void ExpectFirstCubeHit() const {
        EXPECT_EQ(builder.GetRayParameter(), 4);
        EXPECT_EQ(builder.GetWireIndex(), 3u);
        EXPECT_EQ(builder.GetPosition(), glm::vec3(1, 0.5f, 0.25f));
        EXPECT_EQ(builder.GetNormal(), glm::vec3(1, 0, 0));
    }

    bool HitCube() { return Build({5, 0.5f, 0.25f}, {-1, 0, 0}, WriteModel(ToRawBRep(MakeUnitCube()))); }

    Builder builder;
};

INSTANTIATE_TEST_SUITE_P(AllLayouts, RayToBRepSurfaceIntersectionBuilderTest,
                         testing::Values(EntryPoint{"BRep", &Builder::BuildBRep},
                                         EntryPoint{"WithNormal", &Builder::BuildBRepWithNormal},
                                         EntryPoint{"WithUV", &Builder::BuildBRepWithUV}),
                         [](auto const& entry) { return entry.param.name; });

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, CubeIsHitOnTheSideThatFacesTheRay) {
    ASSERT_TRUE(HitCube());
    ExpectFirstCubeHit();
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, MissResetsTheResult) {
    ASSERT_TRUE(HitCube());
    EXPECT_FALSE(Build({5, 3, 0.25f}, {-1, 0, 0}, WriteModel(ToRawBRep(MakeUnitCube()))));
    EXPECT_EQ(builder.GetRayParameter(), kLargest);
    EXPECT_EQ(builder.GetWireIndex(), 0u);
    EXPECT_EQ(builder.GetPosition(), glm::vec3(0, 0, 0));
    EXPECT_EQ(builder.GetNormal(), glm::vec3(1, 0, 0));
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, AbsentFacesAreAMissThatResets) {
    ASSERT_TRUE(HitCube());
    RawBRep shape = ToRawBRep(MakeUnitCube());
    shape.faces.reset();
    EXPECT_FALSE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, WriteModel(shape)));
    EXPECT_EQ(builder.GetRayParameter(), kLargest);
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, AbsentVerticesVectorsAndGeometryLeaveTheFieldsUntouched) {
    ASSERT_TRUE(HitCube());
    RawBRep shape = ToRawBRep(MakeUnitCube());
    shape.vertices.reset();
    EXPECT_FALSE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, WriteModel(shape)));
    ExpectFirstCubeHit();
    EXPECT_FALSE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, RawModel().Write()));
    ExpectFirstCubeHit();
    RawModel bare;
    bare.hasGeometry = false;
    EXPECT_FALSE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, bare.Write()));
    ExpectFirstCubeHit();
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, FacesWithoutALoopKeepTheirNumber) {
    RawBRep shape = ToRawBRep(MakeUnitCube());
    shape.faces->insert(shape.faces->begin(), RawLoop());
    ASSERT_TRUE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, WriteModel(shape)));
    EXPECT_EQ(builder.GetWireIndex(), 4u);
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, RayThroughAHoleMissesAndHolesWithoutALoopAreSkipped) {
    RawBRep shape = ToRawBRep(MakeFaceWithHole(0));
    EXPECT_FALSE(Build({2, 2, 5}, {0, 0, -1}, WriteModel(shape)));
    EXPECT_TRUE(Build({0.5f, 2, 5}, {0, 0, -1}, WriteModel(shape)));
    shape.holes->front().loop.reset();
    EXPECT_TRUE(Build({2, 2, 5}, {0, 0, -1}, WriteModel(shape)));
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, HolesOfManyFacesInAnyOrderExcludeTheirFaces) {
    RawBRep shape;
    shape.holes.emplace();
    for (std::uint16_t layer = 0; layer < 40; ++layer) {
        RawBRep const plate = ToRawBRep(MakeFaceWithHole(layer));
        auto const first = static_cast<std::uint16_t>(shape.vertices->size());
        for (auto const& v : *plate.vertices) shape.vertices->push_back(v);
        auto const shift = [first](Loop loop) {
            for (auto& index : loop) index = static_cast<std::uint16_t>(index + first);
            return loop;
        };
        shape.faces->push_back(shift(**plate.faces->begin()));
        if (layer == 17) continue;  // the one plate without a hole
        shape.holes->insert(shape.holes->begin() + layer / 2, {layer, shift(*plate.holes->front().loop)});
    }
    ASSERT_TRUE(Build({2, 2, 100}, {0, 0, -1}, WriteModel(shape)));
    EXPECT_EQ(builder.GetWireIndex(), 17u);
    ASSERT_TRUE(Build({0.5f, 2, 100}, {0, 0, -1}, WriteModel(shape)));
    EXPECT_EQ(builder.GetWireIndex(), 39u);
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, PointOnAClippingPlaneIsKeptAndOneBeyondIsNot) {
    auto const model = WriteModel(ToRawBRep(MakeUnitCube()));
    EXPECT_TRUE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, model, {{0, 1, 0, 0.5f}}));
    EXPECT_FALSE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, model, {{0, 1, 0, 0.49f}}));
    EXPECT_TRUE(Build({5, 0.5f, 0.25f}, {-1, 0, 0}, model, {{0, 1, 0, -std::numeric_limits<float>::infinity()}}));
}

TEST_P(RayToBRepSurfaceIntersectionBuilderTest, GivesTheSameBitsAsTheShapeInMemory) {
    std::mt19937 random(31);
    std::uniform_real_distribution<float> coordinate(-3, 3);
    std::uniform_int_distribution<std::uint32_t> vertex(0, 59);
    FacetedBRep shape;
    for (int i = 0; i < 60; ++i) shape.vertices.push_back({coordinate(random), coordinate(random), coordinate(random)});
    for (std::uint32_t face = 0; face < 40; ++face) {
        auto& loop = shape.faces.emplace_back();
        for (int i = 0; i < 3 + static_cast<int>(face % 4); ++i) loop.push_back(vertex(random));
        if (face % 3 == 0) shape.holes[face] = {{vertex(random), vertex(random), vertex(random)}};
    }
    auto const model = WriteModel(ToRawBRep(shape));
    RayToFacetedBRepSurfaceIntersectionBuilder inMemory;
    int hits = 0;
    for (int i = 0; i < 1000; ++i) {
        bool const singleSided = i % 2 == 0;
        glm::vec3 const origin(coordinate(random), coordinate(random), coordinate(random));
        glm::vec3 const direction(coordinate(random), coordinate(random), coordinate(random));
        glm::vec4 const plane(coordinate(random), coordinate(random), coordinate(random), 3);
        builder.SetSingleSided(singleSided);
        inMemory.SetSingleSided(singleSided);
        bool const isHit = inMemory.Build({{origin.x, origin.y, origin.z}, {direction.x, direction.y, direction.z}},
                                          {{{plane.x, plane.y, plane.z}, plane.w}}, shape);
        ASSERT_EQ(Build(origin, direction, model, {plane}), isHit);
        EXPECT_EQ(builder.GetRayParameter(), inMemory.GetRayParameter());
        EXPECT_EQ(builder.GetWireIndex(), inMemory.GetWireIndex());
        EXPECT_EQ(builder.GetPosition().z, inMemory.GetPosition().z);
        EXPECT_EQ(builder.GetNormal().y, inMemory.GetNormal().y);
        hits += isHit ? 1 : 0;
    }
    EXPECT_GT(hits, 100);
}

}  // namespace
