#include "picking/EdgeScenes.h"
#include "picking/PickOracle.h"
#include "picking/PickScene.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Tools/Picking/ModelInstancesPicker.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace {

using namespace Quorlan::Tools::Picking;
using namespace Quorlan::Testing;
using Types = std::vector<GeometryType>;

constexpr unsigned kAllKinds = 1u << 1 | 1u << 5 | 1u << 6 | 1u << 7;
Types const kAllTypes{GeometryType::FACETED_BREP, GeometryType::BREP_WITH_NORMAL, GeometryType::BREP_WITH_UV,
                      GeometryType::GRAPHICS_CONTAINER};

/// A segment from z = -1 to z = 1 at (x, y).
RawGraphics MakeUprightLine(float x, float y) {
    RawGraphics graphics;
    graphics.segments->push_back({{x, y, -1}, {x, y, 1}});
    return graphics;
}

ModelInstancesPicker LookAlongY(bool isPerspective, double sizeX = 640, double sizeY = 480) {
    ModelInstancesPicker picker;
    Vertex const location{0, -10, 0};
    picker.SetViewProjection(isPerspective
                                 ? ViewProjection::FromPerspective(location, {0, 1, 0}, {0, 0, 1}, 1, sizeX, sizeY)
                                 : ViewProjection::FromOrthogonal(location, {0, 1, 0}, {0, 0, 1}, 0.02, sizeX, sizeY));
    picker.SetPickPositionX(sizeX / 2);
    picker.SetPickPositionY(sizeY / 2);
    return picker;
}

/// Instances 0 to 3: the same box as kinds 1, 6 and 7, and a line; each 1 unit nearer to the camera than the one
/// before.
RawModel MakeModelOfAllKinds() {
    PickScene scene;
    std::vector<std::uint32_t> definitions;
    for (std::uint8_t const kind : {std::uint8_t{1}, std::uint8_t{6}, std::uint8_t{7}}) {
        definitions.push_back(scene.AddShape(TestSupport::MakeBox({0.02, 0, -1}, {1, 0.5, 1}), kind));
    }
    definitions.push_back(scene.AddGraphics(MakeUprightLine(0.02f, 0), {0, 0, -1}, {0.02f, 0, 1}));
    for (std::uint32_t i = 0; i < 4; ++i) scene.model.AddInstance(0, definitions[i], At(0, -1.0 * i, 0));
    return scene.model;
}

TEST(ModelInstancesPickerEdges, TypesSelectTheKindsThatAreTested) {
    auto const buffer = MakeModelOfAllKinds().Write();
    std::vector<unsigned> const all{0, 1, 2, 3};
    struct Case {
        Types types;
        unsigned instance;
    };
    for (auto const& [types, instance] :
         {Case{{GeometryType::FACETED_BREP}, 0}, Case{{GeometryType::BREP_WITH_UV}, 1},
          Case{{GeometryType::BREP_WITH_NORMAL}, 2}, Case{{GeometryType::GRAPHICS_CONTAINER}, 3}, Case{kAllTypes, 3},
          Case{{GeometryType::FACETED_BREP, GeometryType::BREP_WITH_UV}, 1},
          Case{{GeometryType(1234), GeometryType::NONE, GeometryType(1), GeometryType::FACETED_BREP}, 0}}) {
        auto picker = LookAlongY(false);
        ASSERT_TRUE(picker.PickEdges(types, buffer, {}, all, 5));
        EXPECT_EQ(picker.GetGeometryInstanceId(), instance);
        EXPECT_NEAR(picker.GetShortestDistance(), 10 - instance, 1e-5);
    }
    for (auto const& types : {Types{}, Types{GeometryType(7)}, Types{GeometryType(11)}, Types{GeometryType::NONE}}) {
        auto picker = LookAlongY(false);
        EXPECT_FALSE(picker.PickEdges(types, buffer, {}, all, 5));
        EXPECT_EQ(picker.GetGeometryInstanceId(), 0xFFFFFFFFu);
        EXPECT_EQ(picker.GetShortestDistance(), std::numeric_limits<double>::max());
    }
}

TEST(ModelInstancesPickerEdges, KindsThatNoBuilderTestsAreNeverPicked) {
    RawModel model = MakeModelOfAllKinds();
    Types types;
    for (std::uint32_t type = 0; type < 12; ++type) types.push_back(GeometryType(type));
    types.push_back(GeometryType::NONE);
    for (int const kind : {0, 2, 3, 4, 8, 9, 10, 11, 12, 13, 14, 15, 16, 40}) {
        for (auto& definition : *model.definitions) definition.kind = static_cast<std::uint8_t>(kind);
        EXPECT_FALSE(LookAlongY(false).PickEdges(types, model.Write(), {}, {0, 1, 2, 3}, 5)) << kind;
    }
}

TEST(ModelInstancesPickerEdges, NormalIsTheImageOfTheXAxis) {
    auto const transform = TestSupport::MakeRotationZ(0.3);
    auto picker = LookAlongY(true);
    ASSERT_TRUE(picker.PickEdges(kAllTypes, MakeModelOfAllKinds().Write(), transform, {0}, 400));
    EXPECT_EQ(picker.GetPickedNormal().x, std::cos(0.3));
    EXPECT_EQ(picker.GetPickedNormal().y, std::sin(0.3));
    EXPECT_EQ(picker.GetPickedNormal().z, 0);
}

TEST(ModelInstancesPickerEdges, ToleranceCountsPixelsOnAnyViewport) {
    for (bool const isPerspective : {true, false}) {
        for (auto const& [sizeX, sizeY] : {std::pair{640.0, 480.0}, {480.0, 640.0}, {500.0, 500.0}}) {
            auto picker = LookAlongY(isPerspective, sizeX, sizeY);
            ViewProjection const view =
                isPerspective ? ViewProjection::FromPerspective({0, -10, 0}, {0, 1, 0}, {0, 0, 1}, 1, sizeX, sizeY)
                              : ViewProjection::FromOrthogonal({0, -10, 0}, {0, 1, 0}, {0, 0, 1}, 0.02, sizeX, sizeY);
            PickScene scene;
            scene.model.AddInstance(0, scene.AddGraphics(MakeUprightLine(0.125f, 3), {0, 0, -1}, {1, 3, 1}));
            double x = 0;
            double y = 0;
            WorldToView(view, {0.125, 3, 0}, x, y);
            double const pixels = x - sizeX / 2;
            ASSERT_GT(pixels, 2);
            EXPECT_TRUE(picker.PickEdges(kAllTypes, scene.model.Write(), {}, {0}, pixels * 1.0001));
            EXPECT_FALSE(picker.PickEdges(kAllTypes, scene.model.Write(), {}, {0}, pixels * 0.9999));
        }
    }
}

TEST(ModelInstancesPickerEdges, NearestAlongTheRayWinsAndFirstOfEqualOnes) {
    PickScene scene;
    auto const line = scene.AddGraphics(MakeUprightLine(0.02f, 0), {0, 0, -1}, {0.02f, 0, 1});
    scene.model.AddInstance(0, line);
    scene.model.AddInstance(0, line, At(0, 2, 0));
    scene.model.AddInstance(0, line);
    auto picker = LookAlongY(true);
    ASSERT_TRUE(picker.PickEdges(kAllTypes, scene.model.Write(), {}, {1, 2, 0}, 5));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 2u);
    EXPECT_NEAR(picker.GetPickedPoint().x, 0.02, 1e-7);
    EXPECT_NEAR(picker.GetPickedPoint().y, 0, 1e-6);
}

TEST(ModelInstancesPickerEdges, EdgeBehindTheCameraCountsLikeAnyOther) {
    PickScene scene;
    scene.model.AddInstance(0, scene.AddGraphics(MakeUprightLine(0.02f, -12), {0, -12, -1}, {0.02f, -12, 1}));
    for (bool const isPerspective : {true, false}) {
        auto picker = LookAlongY(isPerspective);
        ASSERT_TRUE(picker.PickEdges(kAllTypes, scene.model.Write(), {}, {0}, 120));
        EXPECT_NEAR(picker.GetShortestDistance(), -2, 1e-5);
    }
}

TEST(ModelInstancesPickerEdges, ClippingPlanesAreInWorldSpace) {
    auto const buffer = MakeModelOfAllKinds().Write();
    auto const transform = TestSupport::MakeTranslation(0, 100, 0);
    auto picker = LookAlongY(false);
    picker.SetDynamicClippingPlanes({{{0, -1, 0}, -98.75f}});  // cuts away y < 98.75
    ASSERT_TRUE(picker.PickEdges(kAllTypes, buffer, transform, {0, 1, 2, 3}, 5));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 1u);
}

TEST(ModelInstancesPickerEdges, PrimitiveIsTheFaceOrTheNumberOfTheLine) {
    PickScene scene;
    RawGraphics graphics;
    for (float const x : {3.0f, 2.0f}) graphics.segments->push_back({{x, 0, -1}, {x, 0, 1}});
    graphics.arcs->push_back({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, 0.01f, 6});
    scene.model.AddInstance(0, scene.AddGraphics(graphics, {-1, 0, -1}, {3, 0, 1}));
    auto picker = LookAlongY(false);
    ASSERT_TRUE(picker.PickEdges(kAllTypes, scene.model.Write(), {}, {0}, 5));
    EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), 2u);
}

TEST(ModelInstancesPickerEdges, AgreeWithThePickOneByOneOnRandomModels) {
    std::uint32_t const seed = 99;
    RecordProperty("seed", static_cast<int>(seed));
    RandomScene random(seed);
    RawModel const model = MakeRandomModel(seed, 60, 3);
    auto const buffer = model.Write();
    std::vector<unsigned> all(model.instances->size());
    std::iota(all.begin(), all.end(), 0);
    int hits = 0;
    int clear = 0;
    for (int i = 0; i < 200; ++i) {
        auto const transform = TestSupport::MakeRotation(ToVertex(random.Direction()), random.Between(0, 6));
        Vertex const direction = ToVertex(random.Direction());
        Vertex const unit = direction / Length(direction);
        Vertex const location = ToVertex(random.Point(2)) - unit * 8;
        double const sizeX = i % 5 == 0 ? 300 : 640;
        auto const view = i % 2 == 0 ? ViewProjection::FromPerspective(location, unit, {0.1, 0.2, 1}, 1, sizeX, 480)
                                     : ViewProjection::FromOrthogonal(location, unit, {0.1, 0.2, 1}, 0.02, sizeX, 480);
        auto const planes = random.Planes(1, 3);
        double const tolerance = i % 3 == 0 ? 3 : 12;
        bool const isLinesOnly = i % 4 == 0;
        auto const expected = PickEdgesOneByOne(model, buffer, transform, view, sizeX / 2, 240, planes, all,
                                                isLinesOnly ? 1u << 5 : kAllKinds, tolerance);
        if (!expected.isClear) continue;
        ++clear;
        ModelInstancesPicker picker;
        picker.SetViewProjection(view);
        picker.SetPickPositionX(sizeX / 2);
        picker.SetPickPositionY(240);
        picker.SetDynamicClippingPlanes(planes);
        Types const types = isLinesOnly ? Types{GeometryType::GRAPHICS_CONTAINER} : kAllTypes;
        ASSERT_EQ(picker.PickEdges(types, buffer, transform, all, tolerance), expected.isHit) << "pick " << i;
        if (!expected.isHit) continue;
        ++hits;
        EXPECT_EQ(picker.GetGeometryInstanceId(), expected.instance) << "pick " << i;
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), expected.face) << "pick " << i;
        EXPECT_NEAR(picker.GetShortestDistance(), expected.t, 1e-3) << "pick " << i;
        EXPECT_NEAR(Length(picker.GetPickedPoint() - expected.point), 0, 1e-3) << "pick " << i;
    }
    EXPECT_GT(clear, 130);
    EXPECT_GT(hits, 40);
}

}  // namespace
