#include "picking/EdgeScenes.h"
#include "picking/PickOracle.h"
#include "picking/PickScene.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Tools/Picking/ModelPicker.h>

#include <gtest/gtest.h>

#include <algorithm>

// Picks of edges and lines: everything that starts from the pick box.

namespace {

using namespace Quorlan::Tools::Picking;
using namespace Quorlan::Testing;
using Quorlan::EntityIndex_t;
using Entities = std::unordered_set<EntityIndex_t>;

RawGraphics MakeLine(Vector3f const& start, Vector3f const& end) {
    RawGraphics graphics;
    graphics.segments->push_back({start, end});
    return graphics;
}

/// Looks along y from y = -5; a pixel is a hundredth of a unit.
ModelPicker LookAlongY(double sizeX = 640, double sizeY = 480) {
    ModelPicker picker;
    picker.SetViewProjection(ViewProjection::FromOrthogonal({0, -5, 0}, {0, 1, 0}, {0, 0, 1}, 0.01, sizeX, sizeY));
    picker.SetPickPositionX(sizeX / 2);
    picker.SetPickPositionY(sizeY / 2);
    return picker;
}

/// `count` upright lines at x = 0.001 and y = 0, 0.01, 0.02 …, and last a line across that passes in front of them all
/// close to the pick ray, but whose box has its centre far from it.
PickScene MakeLinesBehindOneAcross(unsigned count) {
    PickScene scene;
    auto const upright =
        scene.AddGraphics(MakeLine({0.001f, 0, -0.01f}, {0.001f, 0, 0.01f}), {0.001f, 0, -0.01f}, {0.001f, 0, 0.01f});
    auto const across = scene.AddGraphics(MakeLine({0.001f, -1, 0}, {4, -1, 0}), {0.001f, -1, 0}, {4, -1, 0});
    for (unsigned i = 0; i < count; ++i) scene.model.AddInstance(0, upright, At(0, 0.01 * i, 0));
    scene.model.AddInstance(0, across);
    return scene;
}

TEST(ModelPickerBox, LinesAndEdgesArePicked) {
    PickScene scene;
    scene.model.AddInstance(0, scene.AddShape(TestSupport::MakeBox({0.02, 0, -1}, {1, 1, 1})));
    scene.model.AddInstance(0,
                            scene.AddGraphics(MakeLine({0.03f, 2, -1}, {0.03f, 2, 1}), {0.03f, 2, -1}, {0.03f, 2, 1}));
    auto const buffer = scene.model.Write();
    auto const tree = MakeTree(scene.model);
    auto picker = LookAlongY();
    ASSERT_TRUE(picker.PickEdges(buffer, {}, Entities{}, tree, 5));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
    EXPECT_EQ(picker.GetShortestDistance(), 5);
    EXPECT_EQ(picker.GetPickedNormal().x, 1);
    EXPECT_NEAR(picker.GetPickedPoint().x, 0.02, 1e-7);
    ASSERT_TRUE(picker.PickLines(buffer, {}, Entities{}, tree, 5));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 1u);
    EXPECT_EQ(picker.GetShortestDistance(), 7);
    ASSERT_TRUE(picker.PickEdges(buffer, {}, Entities{EntityIndex_t{5}}, tree, 2.5));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
    EXPECT_FALSE(picker.PickLines(buffer, {}, Entities{}, tree, 2.5));
    EXPECT_FALSE(picker.PickEdges(buffer, {}, Entities{EntityIndex_t{0}}, tree, 5));
}

TEST(ModelPickerBox, PickBoxIsAsWideOnAPortraitViewport) {
    PickScene scene;
    scene.model.AddInstance(0,
                            scene.AddGraphics(MakeLine({0.05f, 0, -1}, {0.05f, 0, 1}), {0.05f, 0, -1}, {0.05f, 0, 1}));
    for (bool const isPerspective : {true, false}) {
        for (auto const& [sizeX, sizeY] : {std::pair{640.0, 480.0}, {480.0, 640.0}}) {
            auto picker = LookAlongY(sizeX, sizeY);
            ViewProjection view = ViewProjection::FromOrthogonal({0, -5, 0}, {0, 1, 0}, {0, 0, 1}, 0.01, sizeX, sizeY);
            if (isPerspective) {
                view = ViewProjection::FromPerspective({0, -5, 0}, {0, 1, 0}, {0, 0, 1}, 1, sizeX, sizeY);
            }
            picker.SetViewProjection(view);
            double x = 0;
            double y = 0;
            WorldToView(view, {0.05, 0, 0}, x, y);
            double const pixels = x - sizeX / 2;
            EXPECT_TRUE(picker.PickLines(scene.model.Write(), {}, Entities{}, MakeTree(scene.model), pixels * 1.001));
            EXPECT_FALSE(picker.PickLines(scene.model.Write(), {}, Entities{}, MakeTree(scene.model), pixels * 0.999));
        }
    }
}

TEST(ModelPickerBox, ThousandCandidatesAreAllTested) {
    PickScene const scene = MakeLinesBehindOneAcross(999);
    auto picker = LookAlongY();
    ASSERT_TRUE(picker.PickLines(scene.model.Write(), {}, Entities{}, MakeTree(scene.model), 10));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 999u);
    EXPECT_EQ(picker.GetShortestDistance(), 4);
}

TEST(ModelPickerBox, OfMoreThanAThousandTheHundredNearestToTheRayAreTested) {
    PickScene const scene = MakeLinesBehindOneAcross(1000);
    auto const buffer = scene.model.Write();
    auto const tree = MakeTree(scene.model);
    auto picker = LookAlongY();
    ASSERT_TRUE(picker.PickLines(buffer, {}, Entities{}, tree, 10));
    EXPECT_NE(picker.GetGeometryInstanceId(), 1000u);
    EXPECT_GE(picker.GetShortestDistance(), 4.999);
    ASSERT_TRUE(picker.PickEdges(buffer, {}, Entities{}, tree, 10));
    EXPECT_NE(picker.GetGeometryInstanceId(), 1000u);
}

TEST(ModelPickerBox, NarrowedCandidatesComeNearestFirst) {
    // All lines at the same depth: the first in the list wins, which is the one nearest to the ray.
    PickScene scene;
    auto const line = scene.AddGraphics(MakeLine({0, 0, -0.01f}, {0, 0, 0.01f}), {0, 0, -0.01f}, {0, 0, 0.01f});
    for (int i = 0; i < 1200; ++i) scene.model.AddInstance(0, line, At(0.09 - 0.0001 * i, 0, 0));
    auto const tree = MakeTree(scene.model);
    auto picker = LookAlongY();
    ASSERT_TRUE(picker.PickLines(scene.model.Write(), {}, Entities{}, tree, 10));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 900u);  // at x = 0
    // Fewer candidates come in the order of the tree.
    ASSERT_TRUE(picker.PickLines(scene.model.Write(), {}, Entities{}, tree, 4));
    auto const order = GetLeafOrder(tree);
    auto const isWithin = [](unsigned id) { return std::abs(0.09 - 0.0001 * id) < 0.04; };
    EXPECT_EQ(picker.GetGeometryInstanceId(), *std::find_if(order.begin(), order.end(), isWithin));
}

TEST(ModelPickerBox, FilterAndLayersDropCandidatesAfterTheyAreNarrowedDown) {
    PickScene scene = MakeLinesBehindOneAcross(1000);
    scene.model.AddEntity();
    for (std::size_t i = 0; i < 1000; ++i) (*scene.model.instances)[i].entityIndex = 1;
    auto picker = LookAlongY();
    EXPECT_FALSE(picker.PickLines(scene.model.Write(), {}, Entities{EntityIndex_t{1}}, MakeTree(scene.model), 10));
}

TEST(ModelPickerBox, PickIsAsExactAThousandKilometresAway) {
    constexpr double kFar = 1e6;
    PickScene scene;
    scene.model.AddInstance(0,
                            scene.AddGraphics(MakeLine({0.05f, 0, -1}, {0.05f, 0, 1}), {0.05f, 0, -1}, {0.05f, 0, 1}),
                            At(kFar, -kFar, kFar));
    scene.model.AddInstance(0, scene.AddShape(TestSupport::MakeBox({-3, 4, -1}, {-2, 5, 1})), At(kFar, -kFar, kFar));
    auto const transform = TestSupport::MakeTranslation(2 * kFar, kFar, -kFar);
    for (bool const isPerspective : {true, false}) {
        Vertex const location{3 * kFar, -5, 0};
        auto const view = isPerspective
                              ? ViewProjection::FromPerspective(location, {0, 1, 0}, {0, 0, 1}, 1, 640, 480)
                              : ViewProjection::FromOrthogonal(location, {0, 1, 0}, {0, 0, 1}, 0.01, 640, 480);
        double x = 0;
        double y = 0;
        WorldToView(view, location + Vertex{0.05, 5, 0}, x, y);
        double const pixels = x - 320;
        auto picker = LookAlongY();
        picker.SetViewProjection(view);
        ASSERT_TRUE(
            picker.PickLines(scene.model.Write(), transform, Entities{}, MakeTree(scene.model), pixels * 1.001));
        EXPECT_NEAR(picker.GetPickedPoint().x - 3 * kFar, 0.05, 1e-6);
        EXPECT_NEAR(picker.GetShortestDistance(), 5, 1e-5);
        EXPECT_FALSE(
            picker.PickLines(scene.model.Write(), transform, Entities{}, MakeTree(scene.model), pixels * 0.999));
    }
}

TEST(ModelPickerBox, SingularTransformPicksNothingAndDoesNotFail) {
    PickScene const scene = MakeLinesBehindOneAcross(5);
    AffineTransform singular;
    singular.matrix.m.fill(0);
    EXPECT_FALSE(LookAlongY().PickLines(scene.model.Write(), singular, Entities{}, MakeTree(scene.model), 10));
    EXPECT_FALSE(LookAlongY().PickSurfaces(scene.model.Write(), singular, Entities{}, MakeTree(scene.model)));
}

TEST(ModelPickerBox, AgreesWithThePickOneByOneOnRandomModels) {
    RandomScene random(42);
    RawModel const model = MakeRandomModel(42, 150, 4);
    auto const buffer = model.Write();
    auto const tree = MakeTree(model);
    auto order = GetLeafOrder(tree);
    Entities const excluded{EntityIndex_t{3}};
    order.erase(std::remove_if(order.begin(), order.end(),
                               [&](unsigned id) {
                                   auto const& instance = (*model.instances)[id];
                                   return instance.entityIndex == 3 || instance.layerIndex == 2;
                               }),
                order.end());
    int hits = 0;
    for (int i = 0; i < 100; ++i) {
        auto const transform = TestSupport::MakeRotation(ToVertex(random.Direction()), random.Between(0, 6));
        Vertex const direction = ToVertex(random.Direction());
        Vertex const unit = direction / Length(direction);
        Vertex const location = ToVertex(random.Point(2)) - unit * 12;
        double const sizeX = i % 3 == 0 ? 300 : 640;
        auto const view = i % 2 == 0 ? ViewProjection::FromPerspective(location, unit, {0.1, 0.2, 1}, 0.8, sizeX, 480)
                                     : ViewProjection::FromOrthogonal(location, unit, {0.1, 0.2, 1}, 0.02, sizeX, 480);
        auto const planes = i % 4 == 0 ? random.Planes(1, 3) : std::vector<Plane3f>();
        bool const isLinesOnly = i % 3 == 0;
        unsigned const kinds = isLinesOnly ? 1u << 5 : 1u << 1 | 1u << 5 | 1u << 6 | 1u << 7;
        // All instances are in front of the camera, so that the pick box drops none that would be within the tolerance.
        auto const expected =
            PickEdgesOneByOne(model, buffer, transform, view, sizeX / 2, 240, planes, order, kinds, 8);
        if (!expected.isClear) continue;
        ModelPicker picker;
        picker.SetViewProjection(view);
        picker.SetPickPositionX(sizeX / 2);
        picker.SetPickPositionY(240);
        picker.SetDynamicClippingPlanes(planes);
        picker.SetDisabledLayers({L"c"});
        bool const isHit = isLinesOnly ? picker.PickLines(buffer, transform, excluded, tree, 8)
                                       : picker.PickEdges(buffer, transform, excluded, tree, 8);
        ASSERT_EQ(isHit, expected.isHit) << "pick " << i;
        if (!isHit) continue;
        ++hits;
        EXPECT_EQ(picker.GetGeometryInstanceId(), expected.instance) << "pick " << i;
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), expected.face) << "pick " << i;
        EXPECT_NEAR(picker.GetShortestDistance(), expected.t, 1e-3) << "pick " << i;
    }
    EXPECT_GT(hits, 20);
}

}  // namespace
