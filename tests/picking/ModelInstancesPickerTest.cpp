#include "picking/EdgeScenes.h"
#include "picking/FaceWithHole.h"
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
using TestSupport::MakeTranslation;
using TestSupport::MakeUnitCube;

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr unsigned kNone = 0xFFFFFFFF;

AffineTransform MakeScale(double factor) {
    AffineTransform transform;
    for (std::size_t i = 0; i < 3; ++i) transform.matrix(i, i) = factor;
    return transform;
}

/// Looks along y from `location`, z up; the pick position is the viewport's centre.
ModelInstancesPicker LookAlongY(Vertex const& location, bool isPerspective = true) {
    ModelInstancesPicker picker;
    picker.SetViewProjection(isPerspective
                                 ? ViewProjection::FromPerspective(location, {0, 1, 0}, {0, 0, 1}, 1, 640, 480)
                                 : ViewProjection::FromOrthogonal(location, {0, 1, 0}, {0, 0, 1}, 0.01, 640, 480));
    picker.SetPickPositionX(320);
    picker.SetPickPositionY(240);
    return picker;
}

/// One unit cube, instance 0, of a definition of `kind`.
PickScene MakeCubeScene(std::uint8_t kind = 1) {
    PickScene scene;
    scene.model.AddInstance(0, scene.AddShape(MakeUnitCube(), kind));
    return scene;
}

void ExpectNear(Vertex const& actual, Vertex const& expected, double tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

void ExpectNothing(ModelInstancesPicker const& picker) {
    EXPECT_EQ(picker.GetGeometryInstanceId(), kNone);
    EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), kNone);
    EXPECT_EQ(picker.GetShortestDistance(), kLargest);
}

TEST(ModelInstancesPicker, IsBornWithoutAPick) {
    ModelInstancesPicker const picker;
    EXPECT_EQ(picker.GetShortestDistance(), 0);
    EXPECT_EQ(picker.GetGeometryInstanceId(), kNone);
    EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), kNone);
}

TEST(ModelInstancesPicker, EmptyListAndEmptyBufferPickNothing) {
    auto const buffer = MakeCubeScene().model.Write();
    auto picker = LookAlongY({0.5, -4, 0.5});
    ASSERT_TRUE(picker.PickSurfaces(buffer, {}, {0}));
    Vertex const point = picker.GetPickedPoint();
    EXPECT_FALSE(picker.PickSurfaces(buffer, {}, {}));
    ExpectNothing(picker);
    ASSERT_TRUE(picker.PickSurfaces(buffer, {}, {0}));
    EXPECT_FALSE(picker.PickSurfaces({}, {}, {0}));
    ExpectNothing(picker);
    EXPECT_FALSE(picker.PickEdges({GeometryType::FACETED_BREP}, buffer, {}, {}, 10));
    ExpectNothing(picker);
    EXPECT_FALSE(picker.PickEdges({GeometryType::FACETED_BREP}, {}, {}, {0}, 10));
    ExpectNothing(picker);
    ExpectNear(picker.GetPickedPoint(), point, 0);
}

TEST(ModelInstancesPicker, SurfaceOfEveryBRepKindIsHit) {
    for (std::uint8_t const kind : {std::uint8_t{1}, std::uint8_t{6}, std::uint8_t{7}}) {
        auto picker = LookAlongY({0.25, -4, 0.75});
        ASSERT_TRUE(picker.PickSurfaces(MakeCubeScene(kind).model.Write(), {}, {0}));
        EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), 2u);
        EXPECT_EQ(picker.GetShortestDistance(), 4);
        ExpectNear(picker.GetPickedPoint(), {0.25, 0, 0.75}, 1e-12);
        ExpectNear(picker.GetPickedNormal(), {0, -1, 0}, 1e-12);
    }
}

TEST(ModelInstancesPicker, DefinitionThatIsNoBRepIsNeverHit) {
    PickScene scene = MakeCubeScene();
    for (int const kind : {0, 2, 3, 4, 5, 8, 15, 16}) {
        (*scene.model.definitions)[0].kind = static_cast<std::uint8_t>(kind);
        auto picker = LookAlongY({0.5, -4, 0.5});
        EXPECT_FALSE(picker.PickSurfaces(scene.model.Write(), {}, {0})) << kind;
        ExpectNothing(picker);
    }
}

TEST(ModelInstancesPicker, IdentifierIsNotTested) {
    PickScene scene = MakeCubeScene();
    scene.model.identifier = "none";
    EXPECT_TRUE(LookAlongY({0.5, -4, 0.5}).PickSurfaces(scene.model.Write(), {}, {0}));
}

TEST(ModelInstancesPicker, MissKeepsPointAndNormal) {
    auto const buffer = MakeCubeScene().model.Write();
    auto picker = LookAlongY({0.5, -4, 0.5});
    ASSERT_TRUE(picker.PickSurfaces(buffer, {}, {0}));
    picker.SetPickPositionX(0);
    EXPECT_FALSE(picker.PickSurfaces(buffer, {}, {0}));
    ExpectNothing(picker);
    ExpectNear(picker.GetPickedPoint(), {0.5, 0, 0.5}, 1e-12);
    ExpectNear(picker.GetPickedNormal(), {0, -1, 0}, 1e-12);
}

TEST(ModelInstancesPicker, FaceTurnedAwayIsHitBehindTheCameraWhereTheMaterialIsTwoSided) {
    PickScene scene;
    FacetedBRep const square = Square(1);
    // Faces up; seen from above by a camera that looks up.
    auto const shape = scene.AddShape(square);
    for (int const flag : {0, 1, 2, 255}) {
        scene.model.materials = {{9}, {static_cast<std::uint8_t>(flag)}};
        scene.model.instances->clear();
        scene.model.AddInstance(0, shape, {}, 1);
        ModelInstancesPicker picker;
        picker.SetViewProjection(ViewProjection::FromPerspective({0, 0, 3}, {0, 0, 1}, {0, 1, 0}, 1, 640, 480));
        picker.SetPickPositionX(320);
        picker.SetPickPositionY(240);
        EXPECT_EQ(picker.PickSurfaces(scene.model.Write(), {}, {0}), flag == 1) << flag;
        if (flag == 1) {
            EXPECT_EQ(picker.GetShortestDistance(), -3);
        }
    }
}

TEST(ModelInstancesPicker, NoMaterialAndNoMaterialsAreSingleSided) {
    PickScene scene;
    scene.model.AddInstance(0, scene.AddShape(Square(1)));
    scene.model.AddInstance(0, 0, {}, 0);
    ModelInstancesPicker picker;
    picker.SetViewProjection(ViewProjection::FromPerspective({0, 0, 3}, {0, 0, 1}, {0, 1, 0}, 1, 640, 480));
    picker.SetPickPositionX(320);
    picker.SetPickPositionY(240);
    EXPECT_FALSE(picker.PickSurfaces(scene.model.Write(), {}, {0, 1}));
}

TEST(ModelInstancesPicker, FirstOfTwoEqualHitsWins) {
    PickScene scene = MakeCubeScene();
    scene.model.AddInstance(0, 0);
    auto picker = LookAlongY({0.5, -4, 0.5});
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, {0, 1}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, {1, 0}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 1u);
}

TEST(ModelInstancesPicker, NearestInstanceWinsInAnyOrder) {
    PickScene scene = MakeCubeScene();
    scene.model.AddInstance(0, 0, At(0, -2, 0));
    scene.model.AddInstance(0, 0, At(0, 2, 0));
    auto picker = LookAlongY({0.5, -4, 0.5});
    for (auto const& order : {std::vector<unsigned>{0, 1, 2}, {2, 1, 0}, {1, 2, 0}}) {
        ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, order));
        EXPECT_EQ(picker.GetGeometryInstanceId(), 1u);
        EXPECT_EQ(picker.GetShortestDistance(), 2);
    }
}

TEST(ModelInstancesPicker, UniformScaleMultipliesTheRayParameter) {
    auto picker = LookAlongY({1, -6, 1});
    ASSERT_TRUE(picker.PickSurfaces(MakeCubeScene().model.Write(), MakeScale(3), {0}));
    EXPECT_NEAR(picker.GetShortestDistance(), 6 * 3, 1e-5);
    ExpectNear(picker.GetPickedPoint(), {1, 0, 1}, 1e-6);
    ExpectNear(picker.GetPickedNormal(), {0, -3, 0}, 1e-6);
}

TEST(ModelInstancesPicker, BoundsTakeTheRayForOneOfUnitLength) {
    // Half the size makes the local direction twice as long, so that the bound of every later instance is twice its ray
    // parameter: the nearer cube is dropped where the farther one comes first.
    PickScene scene = MakeCubeScene();
    scene.model.AddInstance(0, 0, At(0, 1.5, 0));
    auto picker = LookAlongY({0.25, -1, 0.25});
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), MakeScale(0.5), {1, 0}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 1u);
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), MakeScale(0.5), {0, 1}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
    // At full size nothing is dropped.
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, {1, 0}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
}

TEST(ModelInstancesPicker, EntityPlacementIsAppliedAfterTheInstancePlacement) {
    PickScene scene;
    auto const entity = scene.model.AddEntity({{10, 0, 0}, {0, 2, 0}, {-3, 0, 0}});  // a quarter turn, then moved
    scene.model.AddInstance(entity, scene.AddShape(MakeUnitCube()), At(5, 0, 0));
    // x 5..6 becomes y 5..6, y 0..1 becomes x 9..10.
    auto picker = LookAlongY({9.25, 0, 0.5});
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, {0}));
    ExpectNear(picker.GetPickedPoint(), {9.25, 5, 0.5}, 1e-6);
    ExpectNear(picker.GetPickedNormal(), {0, -1, 0}, 1e-6);
    EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), 5u);
}

TEST(ModelInstancesPicker, AxesThatAreNotPerpendicularAreInvertedTruly) {
    PickScene scene;
    scene.model.AddInstance(0, scene.AddShape(MakeUnitCube()), {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    auto picker = LookAlongY({0.6, -3, 0.5});
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, {0}));
    ExpectNear(picker.GetPickedPoint(), {0.6, 0, 0.5}, 1e-6);
    picker.SetViewProjection(ViewProjection::FromPerspective({1.6, 3, 0.5}, {0, -1, 0}, {0, 0, 1}, 1, 640, 480));
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, {0}));
    ExpectNear(picker.GetPickedPoint(), {1.6, std::sqrt(0.5), 0.5}, 1e-6);
}

TEST(ModelInstancesPicker, ClippingPlanesAreInWorldSpace) {
    PickScene scene = MakeCubeScene();
    scene.model.AddInstance(0, 0, {{0, 5, 0}, {0, 0, 1}, {1, 0, 0}});  // turned, behind the first
    auto const buffer = scene.model.Write();
    AffineTransform const transform = TestSupport::Compose(MakeTranslation(100, 200, 300), MakeScale(2));
    auto picker = LookAlongY({101, 190, 301});
    ASSERT_TRUE(picker.PickSurfaces(buffer, transform, {0, 1}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
    picker.SetDynamicClippingPlanes({{{0, -1, 0}, -205}});  // cuts away y < 205
    ASSERT_TRUE(picker.PickSurfaces(buffer, transform, {0, 1}));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 1u);
    ExpectNear(picker.GetPickedPoint(), {101, 210, 301}, 1e-4);
    picker.SetDynamicClippingPlanes({{{0, -1, 0}, -205}, {{0, 1, 0}, 209}});
    EXPECT_FALSE(picker.PickSurfaces(buffer, transform, {0, 1}));
}

TEST(ModelInstancesPicker, PickIsAsExactAThousandKilometresAway) {
    constexpr double kFar = 1e6;
    PickScene scene;
    auto const cube = scene.AddShape(MakeUnitCube());
    auto const entity = scene.model.AddEntity({{kFar, -kFar, kFar}, {0.6f, 0.8f, 0}, {-0.8f, 0.6f, 0}});
    scene.model.AddInstance(0, cube, {{0, 0, 0}, {0.6f, 0.8f, 0}, {-0.8f, 0.6f, 0}});
    scene.model.AddInstance(entity, cube);
    AffineTransform const away = MakeTranslation(kFar, kFar, -kFar);
    struct Case {
        AffineTransform transform;
        unsigned instance;
        Vertex shift;
    };
    for (auto const& [transform, instance, shift] :
         {Case{{}, 0, {}}, Case{{}, 1, {kFar, -kFar, kFar}}, Case{away, 0, {kFar, kFar, -kFar}}}) {
        auto picker = LookAlongY(Vertex{0.01, -3, 0.3} + shift);
        ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), transform, {instance}));
        ExpectNear(picker.GetPickedPoint() - shift, {0.01, 0.0133333, 0.3}, 2e-6);
        EXPECT_NEAR(picker.GetShortestDistance(), 3.0133333, 2e-6);
    }
}

TEST(ModelInstancesPicker, SurfacesAgreeWithThePickInWorldSpaceOnRandomModels) {
    std::uint32_t const seed = 20240611;
    RecordProperty("seed", static_cast<int>(seed));
    RandomScene random(seed);
    RawModel const model = MakeRandomModel(seed, 80, 3);
    auto const buffer = model.Write();
    std::vector<unsigned> all(model.instances->size());
    std::iota(all.begin(), all.end(), 0);
    int hits = 0;
    int clear = 0;
    for (int i = 0; i < 2500; ++i) {
        AffineTransform const transform =
            TestSupport::Compose(TestSupport::MakeRotation(ToVertex(random.Direction()), random.Between(0, 6)),
                                 MakeScale(i % 3 == 0 ? 2.5 : 1));
        Vertex const direction = ToVertex(random.Direction());
        Vertex const unit = direction / Length(direction);
        Vertex const location = ToVertex(random.Point(3)) - unit * 10;
        double const sizeX = i % 5 == 0 ? 400 : 640;
        auto const view = i % 2 == 0 ? ViewProjection::FromPerspective(location, unit, {0.1, 0.2, 1}, 1, sizeX, 480)
                                     : ViewProjection::FromOrthogonal(location, unit, {0.1, 0.2, 1}, 0.02, sizeX, 480);
        auto const planes = random.Planes(2, 4);
        double const x = random.Between(0, static_cast<float>(sizeX));
        double const y = random.Between(0, 480);
        auto const expected = PickSurfacesInWorld(model, transform, view, x, y, planes, all, 2e-4);
        if (!expected.isClear) continue;
        ++clear;
        ModelInstancesPicker picker;
        picker.SetViewProjection(view);
        picker.SetPickPositionX(x);
        picker.SetPickPositionY(y);
        picker.SetDynamicClippingPlanes(planes);
        ASSERT_EQ(picker.PickSurfaces(buffer, transform, all), expected.isHit) << "pick " << i;
        if (!expected.isHit) continue;
        ++hits;
        double const scale = Length(transform.matrix.GetColumn(0));
        EXPECT_EQ(picker.GetGeometryInstanceId(), expected.instance) << "pick " << i;
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), expected.face) << "pick " << i;
        EXPECT_NEAR(picker.GetShortestDistance(), expected.t * scale, 2e-4 * scale) << "pick " << i;
        ExpectNear(picker.GetPickedPoint(), expected.point, 2e-4);
        ExpectNear(picker.GetPickedNormal(), expected.normal * scale, 1e-5);
    }
    EXPECT_GT(clear, 1900);
    EXPECT_GT(hits, 200);
}

}  // namespace
