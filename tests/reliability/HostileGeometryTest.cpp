// Valid indices, hostile numbers: what passes the validator must not hurt any tool.

#include "support/RawModel.h"
#include "support/RunEveryTool.h"

#include <Quorlan/ModelValidator.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

RawModel ModelOf(RawBRep const& shape) {
    RawModel model;
    model.facetedBReps.emplace();
    auto const entity = model.AddEntity();
    model.AddInstance(entity, model.AddBRep(shape), At(1, 2, 3));
    return model;
}

void ExpectValidAndHarmless(RawModel const& model) {
    auto const buffer = model.Write();
    ModelValidator validator;
    ASSERT_TRUE(validator.Build(buffer)) << validator.GetProblems().front();
    TestSupport::RunEveryTool(buffer);
}

RawBRep MakePolygon(std::uint16_t size) {
    RawBRep shape;
    std::vector<std::uint16_t> loop;
    for (std::uint16_t i = 0; i < size; ++i) {
        float const angle = 6.2831853F * static_cast<float>(i) / static_cast<float>(size);
        float const radius = i % 2 == 0 ? 1.0F : 2.0F;
        shape.vertices->push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
        loop.push_back(i);
    }
    shape.faces->push_back(loop);
    return shape;
}

TEST(HostileGeometry, AHoleThatEarcutWouldNeverLeaveHurtsNoTool) {
    RawBRep shape;
    shape.vertices = {{0, 7.00649232e-45F, 0},
                      {1.35525272e-19F, 0, 0},
                      {4, 4, 0},
                      {3, 3, 1},
                      {0, 1, 0},
                      {3, 3, 0},
                      {1, 3, 0},
                      {1, 1, 1},
                      {1, 3, 1},
                      {3, 1, 1}};
    shape.faces->push_back(std::vector<std::uint16_t>{3, 0, 2, 1});
    shape.holes.emplace();
    shape.holes->push_back({0, std::vector<std::uint16_t>{4, 0, 5, 6}});
    shape.holes->push_back({0, std::vector<std::uint16_t>{7, 8, 3, 9}});
    ExpectValidAndHarmless(ModelOf(shape));
}

TEST(HostileGeometry, CoordinatesThatAreNotFiniteHurtNoTool) {
    for (float const odd : {kNaN, kInfinity, -kInfinity, 3e38F}) {
        auto shape = RawBox({0, 0, 0}, {1, 1, 1});
        (*shape.vertices)[3].y = odd;
        shape.holes.emplace();
        shape.holes->push_back({1, std::vector<std::uint16_t>{3, 4, 5}});
        ExpectValidAndHarmless(ModelOf(shape));
        for (auto& vertex : *shape.vertices) vertex = {odd, odd, odd};
        ExpectValidAndHarmless(ModelOf(shape));
    }
}

TEST(HostileGeometry, ALargeLoopWithACoordinateThatIsNotFiniteHasNoTriangles) {
    auto shape = MakePolygon(200);
    Tools::VertexNormalBuilder mesh;
    ASSERT_TRUE(mesh.BuildBRep(ModelOf(shape).Write(), 0, 0.5F));
    EXPECT_EQ(mesh.GetTriangles().size(), 198u);
    (*shape.vertices)[100].x = kNaN;
    ASSERT_TRUE(mesh.BuildBRep(ModelOf(shape).Write(), 0, 0.5F));
    EXPECT_TRUE(mesh.GetTriangles().empty());
    ExpectValidAndHarmless(ModelOf(shape));
}

TEST(HostileGeometry, PlacementsThatAreNotFiniteHurtNoTool) {
    double const odds[] = {kNaN, kInfinity, 1e308, -1e308};
    for (double const odd : odds) {
        auto model = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
        for (int i = 0; i < 5; ++i) model.AddInstance(0, 0, At(odd, i, -odd));
        PlacementRecord flat;
        flat.xAxis = flat.yAxis = {0, 0, 0};
        model.AddInstance(0, 0, flat);
        ExpectValidAndHarmless(model);
    }
}

TEST(HostileGeometry, BoundsThatAreNotFiniteHurtNoTool) {
    for (float const odd : {kNaN, kInfinity, -3e38F}) {
        auto model = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
        model.definitions->front().hi = {odd, -odd, odd};
        for (int i = 0; i < 5; ++i) model.AddInstance(0, 0, At(i, 0, 0));
        ExpectValidAndHarmless(model);
    }
}

TEST(HostileGeometry, MoreThan65535FacesKeepTheirCorners) {
    RawBRep shape;
    for (std::uint32_t i = 0; i < 60000; ++i) shape.vertices->push_back({static_cast<float>(i % 300), 1, 0});
    for (std::uint32_t i = 0; i < 70000; ++i) {
        auto const first = static_cast<std::uint16_t>(i % 59998);
        shape.faces->push_back(std::vector<std::uint16_t>{first, static_cast<std::uint16_t>(first + 1),
                                                          static_cast<std::uint16_t>(first + 2)});
    }
    auto const buffer = ModelOf(shape).Write();
    ASSERT_TRUE(ModelValidator().Build(buffer));
    Tools::VertexNormalBuilder mesh;
    ASSERT_TRUE(mesh.BuildBRep(buffer, 0, 0.5F));
    EXPECT_EQ(mesh.GetTriangles().size(), 70000u);
}

TEST(HostileGeometry, LoopsOfRandomIndicesHurtNoTool) {
    constexpr unsigned kSeed = 11;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    for (int round = 0; round < 200; ++round) {
        RawBRep shape;
        for (int i = 0; i < 12; ++i) {
            auto const coordinate = [&] { return static_cast<float>(random() % 3); };
            shape.vertices->push_back({coordinate(), coordinate(), coordinate()});
        }
        auto const makeLoop = [&] {
            std::vector<std::uint16_t> loop(3 + random() % 8);
            for (auto& index : loop) index = static_cast<std::uint16_t>(random() % 12);
            return loop;
        };
        shape.holes.emplace();
        for (int i = 0; i < 4; ++i) shape.faces->push_back(makeLoop());
        for (int i = 0; i < 4; ++i) shape.holes->push_back({static_cast<std::uint16_t>(random() % 4), makeLoop()});
        ExpectValidAndHarmless(ModelOf(shape));
    }
}

}  // namespace
