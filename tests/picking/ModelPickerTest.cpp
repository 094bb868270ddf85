#include "picking/EdgeScenes.h"
#include "picking/PickOracle.h"
#include "picking/PickScene.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/ModelPicker.h>
#include <Tools/QaabBuilder.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Quorlan::Tools::Picking;
using namespace Quorlan::Testing;
using Quorlan::EntityIndex_t;
using Entities = std::unordered_set<EntityIndex_t>;
using TestSupport::MakeTranslation;
using TestSupport::MakeUnitCube;

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr unsigned kNone = 0xFFFFFFFF;

ModelPicker LookAlongY(Vertex const& location) {
    ModelPicker picker;
    picker.SetViewProjection(ViewProjection::FromPerspective(location, {0, 1, 0}, {0, 0, 1}, 1, 640, 480));
    return picker;
}

/// Three unit cubes behind one another at y = 0, 2 and 4, of entities 0, 1 and 2 on layers 0, 1 and none.
struct Row {
    PickScene scene;
    RawModel& model = scene.model;

    explicit Row(std::vector<std::string> const& layers = {"Walls", "Doors"}) {
        model.AddEntity();
        model.AddEntity();
        model.layers = layers;
        auto const cube = scene.AddShape(MakeUnitCube());
        for (std::uint32_t i = 0; i < 3; ++i) model.AddInstance(i, cube, At(0, 2.0 * i, 0), 0, i < 2 ? i : kNone);
    }
};

unsigned PickRow(Row const& row, std::vector<std::wstring> const& disabled, Entities const& excluded) {
    auto picker = LookAlongY({0.5, -3, 0.5});
    picker.SetDisabledLayers(disabled);
    bool const isHit = picker.PickSurfaces(row.model.Write(), {}, excluded, MakeTree(row.model));
    EXPECT_EQ(isHit, picker.GetGeometryInstanceId() != kNone);
    return picker.GetGeometryInstanceId();
}

TEST(ModelPicker, IsBornAtTheCentreOfTheDefaultViewport) {
    ModelPicker const born;
    EXPECT_EQ(born.GetShortestDistance(), kLargest);
    EXPECT_EQ(born.GetGeometryInstanceId(), kNone);
    EXPECT_EQ(born.GetGeometryInstancePrimitiveId(), kNone);
    EXPECT_EQ(PickRow(Row(), {}, {}), 0u);  // through (320, 240)
}

TEST(ModelPicker, ResultIsThatOfTheNearestInstance) {
    Row const row;
    auto picker = LookAlongY({0.25, -3, 0.75});
    ASSERT_TRUE(picker.PickSurfaces(row.model.Write(), {}, Entities{}, MakeTree(row.model)));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 0u);
    EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), 2u);
    EXPECT_EQ(picker.GetShortestDistance(), 3);
    EXPECT_NEAR(picker.GetPickedPoint().x, 0.25, 1e-7);
    EXPECT_NEAR(picker.GetPickedPoint().z, 0.75, 1e-7);
    EXPECT_EQ(picker.GetPickedNormal().y, -1);
}

TEST(ModelPicker, FailedPickResetsIdsAndDistanceAndKeepsPointAndNormal) {
    Row const row;
    auto const buffer = row.model.Write();
    auto const tree = MakeTree(row.model);
    auto picker = LookAlongY({0.25, -3, 0.75});
    auto const fail = [&](std::vector<char> const& other, QuantizedAxisAlignedBoxTree const& otherTree,
                          Entities const& excluded) {
        ASSERT_TRUE(picker.PickSurfaces(buffer, {}, Entities{}, tree));
        EXPECT_FALSE(picker.PickSurfaces(other, {}, excluded, otherTree));
        EXPECT_EQ(picker.GetGeometryInstanceId(), kNone);
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), kNone);
        EXPECT_EQ(picker.GetShortestDistance(), kLargest);
        EXPECT_NEAR(picker.GetPickedPoint().x, 0.25, 1e-7);
        EXPECT_EQ(picker.GetPickedNormal().y, -1);
        EXPECT_FALSE(picker.PickEdges(other, {}, excluded, otherTree, 300));
        EXPECT_FALSE(picker.PickLines(other, {}, excluded, otherTree, 300));
    };
    fail({}, tree, {});
    fail({'a', 'b', 'c'}, tree, {});
    fail(std::vector<char>(7), tree, {});
    for (std::size_t byte = 4; byte < 8; ++byte) {
        auto other = buffer;
        other[byte] = static_cast<char>(other[byte] ^ 0x20);  // the other case of a letter
        fail(other, tree, {});
    }
    RawModel bare;
    bare.hasGeometry = false;
    fail(bare.Write(), tree, {});
    bare = row.model;
    bare.instances.reset();
    fail(bare.Write(), tree, {});
    fail(buffer, {}, {});  // a tree without a node
    fail(buffer, tree, {EntityIndex_t{0}, EntityIndex_t{1}, EntityIndex_t{2}});
}

TEST(ModelPicker, RayAwayFromEveryBoxFindsNothing) {
    Row const row;
    ModelPicker picker;
    picker.SetViewProjection(ViewProjection::FromPerspective({0.5, -3, 0.5}, {0, -1, 0}, {0, 0, 1}, 1, 640, 480));
    bool isAsked = false;
    auto const filter = [&](EntityIndex_t) { return isAsked = true; };
    EXPECT_FALSE(picker.PickSurfaces(row.model.Write(), {}, filter, MakeTree(row.model)));
    EXPECT_FALSE(isAsked);
}

TEST(ModelPicker, FilterDropsTheEntitiesForWhichItIsTrue) {
    Row const row;
    EXPECT_EQ(PickRow(row, {}, {EntityIndex_t{0}}), 1u);
    EXPECT_EQ(PickRow(row, {}, {EntityIndex_t{0}, EntityIndex_t{1}}), 2u);
    EXPECT_EQ(PickRow(row, {}, {EntityIndex_t{1}}), 0u);
    EXPECT_EQ(PickRow(row, {}, {EntityIndex_t{0}, EntityIndex_t{1}, EntityIndex_t{2}}), kNone);
    auto picker = LookAlongY({0.5, -3, 0.5});
    auto const isNotLast = [](EntityIndex_t entity) { return entity != EntityIndex_t{2}; };
    ASSERT_TRUE(picker.PickSurfaces(row.model.Write(), {}, isNotLast, MakeTree(row.model)));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 2u);
}

TEST(ModelPicker, EmptyFilterThrowsAtTheFirstCandidateOnNoDisabledLayer) {
    Row const row;
    auto const buffer = row.model.Write();
    auto const tree = MakeTree(row.model);
    ModelPicker::EntityFilter const empty;
    auto picker = LookAlongY({0.5, -3, 0.5});
    EXPECT_THROW(picker.PickSurfaces(buffer, {}, empty, tree), std::bad_function_call);
    EXPECT_THROW(picker.PickEdges(buffer, {}, empty, tree, 300), std::bad_function_call);
    EXPECT_THROW(picker.PickLines(buffer, {}, empty, tree, 300), std::bad_function_call);
    EXPECT_EQ(picker.GetGeometryInstanceId(), kNone);

    Row allOnOne({"Walls"});
    for (auto& instance : *allOnOne.model.instances) instance.layerIndex = 0;
    picker.SetDisabledLayers({L"Walls"});
    EXPECT_FALSE(picker.PickSurfaces(allOnOne.model.Write(), {}, empty, tree));
    picker = LookAlongY({50, -3, 0.5});
    EXPECT_FALSE(picker.PickSurfaces(buffer, {}, empty, tree));  // no candidate
}

TEST(ModelPicker, FilterIsNotAskedAboutDisabledLayersAndOncePerCandidateOtherwise) {
    Row const row;
    std::vector<EntityIndex_t> asked;
    auto const filter = [&](EntityIndex_t entity) {
        asked.push_back(entity);
        return false;
    };
    auto picker = LookAlongY({0.5, -3, 0.5});
    picker.SetDisabledLayers({L"Doors"});
    auto const tree = MakeTree(row.model);
    ASSERT_TRUE(picker.PickSurfaces(row.model.Write(), {}, filter, tree));
    EXPECT_EQ(asked, (std::vector<EntityIndex_t>{EntityIndex_t{0}, EntityIndex_t{2}}));
}

TEST(ModelPicker, DisabledLayersAreNeverPicked) {
    EXPECT_EQ(PickRow(Row(), {L"Walls"}, {}), 1u);
    EXPECT_EQ(PickRow(Row(), {L"Doors", L"Walls"}, {}), 2u);
    EXPECT_EQ(PickRow(Row({"Walls", "Walls"}), {L"Walls"}, {}), 2u);
    EXPECT_EQ(PickRow(Row(), {L"Roof"}, {}), 0u);
}

TEST(ModelPicker, LayerNamesAreComparedLetterByLetter) {
    EXPECT_EQ(PickRow(Row(), {L"walls"}, {}), 0u);
    EXPECT_EQ(PickRow(Row({"T\xC3\xBCren"}), {L"T\u00FCren"}, {}), 1u);
    EXPECT_EQ(PickRow(Row({"\xE2\x82\xAC"}), {L"\u20AC"}, {}), 1u);
}

TEST(ModelPicker, LayerNameWithAFourByteSequenceIsDisabledByTheEmptyNameOnly) {
    Row const row({"a\xF0\x9F\x98\x80"});
    EXPECT_EQ(PickRow(row, {L"a\U0001F600"}, {}), 0u);
    EXPECT_EQ(PickRow(row, {L"a"}, {}), 0u);
    EXPECT_EQ(PickRow(row, {L""}, {}), 1u);
}

TEST(ModelPicker, WithoutLayersNothingIsDisabled) {
    Row row;
    row.model.layers.reset();
    EXPECT_EQ(PickRow(row, {L"Walls", L""}, {}), 0u);
}

TEST(ModelPicker, FirstInTheTreeOfTwoEqualHitsWins) {
    PickScene scene;
    auto const cube = scene.AddShape(MakeUnitCube());
    for (int i = 0; i < 2; ++i) scene.model.AddInstance(0, cube);
    auto nodes = MakeTree(scene.model).getNodes();
    auto const tree = MakeTree(scene.model);
    auto picker = LookAlongY({0.5, -3, 0.5});
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, Entities{}, tree));
    EXPECT_EQ(picker.GetGeometryInstanceId(), GetLeafOrder(tree).front());
    std::swap(nodes[1], nodes[2]);
    QuantizedAxisAlignedBoxTree const turned(tree.getOrigin(), tree.getBvhQuantization(), nodes);
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, Entities{}, turned));
    EXPECT_EQ(picker.GetGeometryInstanceId(), GetLeafOrder(tree).back());
}

TEST(ModelPicker, FlatModelIsPicked) {
    PickScene scene;
    auto const tile = scene.AddShape(Square(0.5));
    for (int i = 0; i < 9; ++i) scene.model.AddInstance(0, tile, At(i % 3, i / 3, 0));
    ModelPicker picker;
    picker.SetViewProjection(ViewProjection::FromOrthogonal({2, 1, 5}, {0, 0, -1}, {0, 1, 0}, 0.01, 640, 480));
    ASSERT_TRUE(picker.PickSurfaces(scene.model.Write(), {}, Entities{}, MakeTree(scene.model)));
    EXPECT_EQ(picker.GetGeometryInstanceId(), 5u);
    EXPECT_EQ(picker.GetShortestDistance(), 5);
}

/// The instances that no filter and no disabled layer drops.
std::vector<unsigned> GetPickable(RawModel const& model, Entities const& excluded,
                                  std::vector<unsigned> const& layers) {
    std::vector<unsigned> pickable;
    for (unsigned i = 0; i < model.instances->size(); ++i) {
        auto const& instance = (*model.instances)[i];
        bool const isDisabled = std::count(layers.begin(), layers.end(), instance.layerIndex) != 0;
        if (!isDisabled && excluded.count(EntityIndex_t{instance.entityIndex}) == 0) pickable.push_back(i);
    }
    return pickable;
}

/// Moves the whole model by moving its entities.
void Move(RawModel& model, Vertex const& by) {
    for (auto& entity : *model.entities) {
        entity.origin = {entity.origin[0] + by.x, entity.origin[1] + by.y, entity.origin[2] + by.z};
    }
}

/// Random pixels against the pick in world space over all instances.
void ExpectAgreement(std::uint32_t seed, Vertex const& shift, double slack) {
    RandomScene random(seed);
    RawModel model = MakeRandomModel(seed, 150, 4);
    Move(model, shift);
    auto const buffer = model.Write();
    Quorlan::Tools::QaabBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    QuantizedAxisAlignedBoxTree const tree(builder.getOrigin(), builder.getBvhQuantization(), builder.getNodes());
    Entities const excluded{EntityIndex_t{2}, EntityIndex_t{7}};
    auto const pickable = GetPickable(model, excluded, {1});
    int hits = 0;
    for (int i = 0; i < 2500; ++i) {
        AffineTransform transform =
            TestSupport::MakeRotation(ToVertex(random.Direction()), i % 2 == 0 ? 0 : random.Between(0, 6));
        double const scale = i % 3 == 0 ? 2 : 1;
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t row = 0; row < 3; ++row) transform.matrix(row, k) *= scale;
        }
        Vertex const direction = ToVertex(random.Direction());
        Vertex const unit = direction / Length(direction);
        Vertex const location = TransformPoint(transform.matrix, shift) + ToVertex(random.Point(3)) - unit * 20;
        auto const view = i % 2 == 0 ? ViewProjection::FromPerspective(location, unit, {0.1, 0.2, 1}, 0.5, 640, 480)
                                     : ViewProjection::FromOrthogonal(location, unit, {0.1, 0.2, 1}, 0.01, 640, 480);
        auto const planes = i % 4 == 0 && shift.x == 0 ? random.Planes(2, 4) : std::vector<Plane3f>();
        double const x = random.Between(100, 540);
        double const y = random.Between(100, 380);
        auto const expected = PickSurfacesInWorld(model, transform, view, x, y, planes, pickable, slack);
        if (!expected.isClear) continue;
        ModelPicker picker;
        picker.SetViewProjection(view);
        picker.SetPickPositionX(x);
        picker.SetPickPositionY(y);
        picker.SetDynamicClippingPlanes(planes);
        picker.SetDisabledLayers({L"b"});
        ASSERT_EQ(picker.PickSurfaces(buffer, transform, excluded, tree), expected.isHit) << "pick " << i;
        if (!expected.isHit) continue;
        ++hits;
        EXPECT_EQ(picker.GetGeometryInstanceId(), expected.instance) << "pick " << i;
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), expected.face) << "pick " << i;
        EXPECT_NEAR(picker.GetShortestDistance(), expected.t * scale, slack * scale) << "pick " << i;
        EXPECT_LT(Length(picker.GetPickedPoint() - expected.point), slack) << "pick " << i;
    }
    EXPECT_GT(hits, 600);
}

TEST(ModelPicker, AgreesWithThePickInWorldSpaceOnRandomModels) { ExpectAgreement(8, {}, 2e-4); }

TEST(ModelPicker, AgreesWithThePickInWorldSpaceAThousandKilometresAway) { ExpectAgreement(9, {1e6, -7e5, 4e5}, 2e-4); }

TEST(ModelPicker, GivesTheBitsOfThePickOverAllInstancesInTheOrderOfTheTree) {
    RandomScene random(5);
    RawModel const model = MakeRandomModel(5, 200, 4);
    auto const buffer = model.Write();
    auto const tree = MakeTree(model);
    auto const all = GetLeafOrder(tree);
    int hits = 0;
    for (int i = 0; i < 400; ++i) {
        Vertex const direction = ToVertex(random.Direction());
        auto const view = ViewProjection::FromPerspective(direction * -12.0, direction / Length(direction),
                                                          {0.1, 0.2, 1}, 0.5, 640, 480);
        ModelPicker picker;
        ModelInstancesPicker overAll;
        picker.SetViewProjection(view);
        overAll.SetViewProjection(view);
        picker.SetPickPositionX(100 + i % 400);
        overAll.SetPickPositionX(100 + i % 400);
        picker.SetPickPositionY(60 + i % 300);
        overAll.SetPickPositionY(60 + i % 300);
        bool const isHit = overAll.PickSurfaces(buffer, {}, all);
        ASSERT_EQ(picker.PickSurfaces(buffer, {}, Entities{}, tree), isHit);
        EXPECT_EQ(picker.GetGeometryInstanceId(), overAll.GetGeometryInstanceId());
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), overAll.GetGeometryInstancePrimitiveId());
        EXPECT_EQ(picker.GetShortestDistance(), overAll.GetShortestDistance());
        hits += isHit ? 1 : 0;
    }
    EXPECT_GT(hits, 100);
}

}  // namespace
