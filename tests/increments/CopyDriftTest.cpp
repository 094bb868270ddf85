#include <Tools/Increments/IncrementModelBuilder.h>

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"
#include "support/RawModel.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

/// Models that are copied again and again.
namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::Increments::IncrementModelBuilder;
using Action = OwnerHistoryChangeAction;
using TestSupport::Compose;
using TestSupport::MakeRotation;
using TestSupport::MakeTranslation;

std::vector<char> Copy(std::vector<char> const& model) {
    auto const storage = ModelStorage::FromBuffer(model);
    EXPECT_FALSE(storage.HasError());
    std::vector<std::pair<Action, EntityIndex_t>> list;
    for (std::uint32_t i = 0; i < storage.GetModelReader().GetEntities().GetCount(); ++i) {
        list.emplace_back(Action::NOCHANGE, EntityIndex_t{i});
    }
    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), list);
    return builder.GetResult();
}

FacetedBRep Moved(FacetedBRep shape, AffineTransform const& transform) {
    for (Vertex& vertex : shape.vertices) vertex = TransformPoint(transform.matrix, vertex);
    return shape;
}

std::uint32_t CountDefinitions(std::vector<char> const& model) {
    return ModelStorage::FromBuffer(model).GetModelReader().GetGeometry().GetDefinitionCount();
}

/// Copies five times; the copies must be equal to the bit and say what the original says.
void ExpectNoDrift(std::vector<char> const& original) {
    auto const expected = ReadContent(original);
    std::vector<char> const first = Copy(original);
    std::vector<char> copy = first;
    for (int round = 0; round < 4; ++round) {
        copy = Copy(copy);
        EXPECT_TRUE(copy == first) << "round " << round;
    }
    auto const actual = ReadContent(copy);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_EQ(Compare(actual[i], expected[i]), "") << i;
}

TEST(CopyDrift, ModelsOfEverythingStayThemselves) {
    for (std::uint32_t revision = 0; revision < 5; ++revision) {
        ModelBuilder builder;
        SceneWriter writer(builder);
        for (std::uint32_t number = 0; number < 60; ++number) writer.AddEntity(number, revision, Action::NOCHANGE);
        ExpectNoDrift(builder.Create());
        EXPECT_LT(CountDefinitions(Copy(builder.Create())), CountDefinitions(builder.Create()) * 2 / 3)
            << "the model has copies of every kind, which are to become one shape each";
    }
}

TEST(CopyDrift, PlacementsThatAreNotUnitKeepTheirBits) {
    PlacementRecord const odd{{0.1, 1e9, -3}, {0.577350f, 0.577351f, 0.577350f}, {-3, 3, 1e-3f}};
    ModelBuilder builder;
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntityAt(MakeGuid(1), L"odd", odd);
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakeUnitCube());
    builder.GetInstanceWriter().AddInstanceAt(entity, shape, kInvalidIndex, kInvalidIndex, odd);

    auto const storage = ModelStorage::FromBuffer(Copy(Copy(builder.Create())));
    PlacementRecord placement;
    storage.GetModelReader().GetEntities().GetPlacementRecord(placement, 0);
    EXPECT_EQ(placement.origin, odd.origin);
    EXPECT_EQ(placement.xAxis, odd.xAxis);
    EXPECT_EQ(placement.yAxis, odd.yAxis);
    storage.GetModelReader().GetGeometry().GetPlacementRecord(placement, 0);
    EXPECT_EQ(placement.xAxis, odd.xAxis);
    EXPECT_EQ(placement.yAxis, odd.yAxis);
    ExpectNoDrift(builder.Create());
}

TEST(CopyDrift, PlacementsThatGiveNoFrameKeepTheirBitsToo) {
    PlacementRecord const flat{{1, 2, 3}, {0, 0, 0}, {1, 0, 0}};
    ModelBuilder builder;
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntityAt(MakeGuid(1), {}, flat);
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakeUnitCube());
    builder.GetInstanceWriter().AddInstanceAt(entity, shape, kInvalidIndex, kInvalidIndex, flat);
    auto const copy = Copy(builder.Create());
    EXPECT_TRUE(Copy(copy) == copy);
    auto const storage = ModelStorage::FromBuffer(copy);
    PlacementRecord placement;
    storage.GetModelReader().GetGeometry().GetPlacementRecord(placement, 0);
    EXPECT_EQ(placement.origin, flat.origin);
    EXPECT_EQ(placement.xAxis, flat.xAxis);
    EXPECT_EQ(placement.yAxis, flat.yAxis);
}

TEST(CopyDrift, RotatedCopiesBecomeOneShapeAndStayInPlace) {
    ModelBuilder builder;
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntity(MakeGuid(1), {}, MakeTranslation(500, 0, 0));
    for (int i = 0; i < 12; ++i) {
        auto const turn = Compose(MakeTranslation(i, -i, 2 * i), MakeRotation({1, 0.1 * i, 0.3}, 0.5 * i));
        auto const shape =
            builder.GetGeometryDefinitionBuilder().AddBRep(Moved(TestSupport::MakePlateWithHole(), turn));
        builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex,
                                                MakeRotation({0, 1, 0.2 * i}, i));
    }
    ExpectNoDrift(builder.Create());
    auto const copy = ModelStorage::FromBuffer(Copy(builder.Create()));
    EXPECT_EQ(copy.GetModelReader().GetGeometry().GetDefinitionCount(), 1u);
    EXPECT_EQ(copy.GetModelReader().GetGeometry().GetInstanceCount(), 12u);
}

TEST(CopyDrift, ShapesFarFromTheirOriginAreRecentredAndStayInPlace) {
    ModelBuilder builder;
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    for (double const x : {4096.0, 8192.0, 65536.0}) {
        auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(
            Moved(TestSupport::MakeBox({0, 0, 0}, {1, 0.5, 0.25}), MakeTranslation(x, -x, 0)));
        builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex,
                                                MakeRotation({1, 1, 1}, x));
    }
    ExpectNoDrift(builder.Create());
    auto const copy = ModelStorage::FromBuffer(Copy(builder.Create()));
    DefinitionBounds bounds;
    ASSERT_EQ(copy.GetModelReader().GetGeometry().GetDefinitionCount(), 1u);
    copy.GetModelReader().GetGeometry().GetDefinitionBounds(bounds, 0);
    EXPECT_LT(Length(bounds.max), 1);
}

TEST(CopyDrift, MovedCopiesKeepTheStoredAxes) {
    PlacementRecord const odd{{1, 2, 3}, {0.3f, 0.4f, 0}, {-4, 3, 0}};
    ModelBuilder builder;
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    for (double const x : {0.0, 8.0}) {
        auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(
            Moved(TestSupport::MakeUnitCube(), MakeTranslation(x, 0, 0)));
        builder.GetInstanceWriter().AddInstanceAt(entity, shape, kInvalidIndex, kInvalidIndex, odd);
    }
    auto const copy = ModelStorage::FromBuffer(Copy(builder.Create()));
    ASSERT_EQ(copy.GetModelReader().GetGeometry().GetDefinitionCount(), 1u);
    PlacementRecord placement;
    copy.GetModelReader().GetGeometry().GetPlacementRecord(placement, 1);
    EXPECT_EQ(placement.xAxis, odd.xAxis);
    EXPECT_EQ(placement.yAxis, odd.yAxis);
    EXPECT_NEAR(placement.origin[0], 1 + 8 * 0.6, 1e-6);
    EXPECT_NEAR(placement.origin[1], 2 + 8 * 0.8, 1e-6);
    ExpectNoDrift(builder.Create());
}

TEST(CopyDrift, ModelsThatNoWriterOfOursMadeSettleAtTheFirstCopy) {
    RawModel raw;
    raw.entityKind = 0;
    raw.materials.emplace({RawMaterial{7, 3}, RawMaterial{1, -1}, RawMaterial{0, -1}});
    raw.layers.emplace({std::string("A"), std::string("A"), std::string()});
    raw.graphicsContainers.emplace({RawGraphics{}, RawGraphics{{{{{0, 0, 0}, {1, 1, 1}}}}, std::nullopt}});
    raw.AddEntity(At(1, 2, 3));
    raw.AddInstance(0, raw.AddBRep(RawBox({0, 0, 0}, {1, 2, 3})), At(4, 5, 6), 0, 1);
    raw.AddInstance(0, raw.AddBRep(RawBox({1, 0, 0}, {2, 2, 3}), 7), {{}, {2, 0, 0}, {1, 1, 0}}, 1, 2);
    raw.AddInstance(0, raw.AddDefinition({}, {}, 5, 0), {}, 2, 0);
    raw.AddInstance(0, raw.AddDefinition({}, {}, 5, 1), {}, 9, 9);
    ExpectNoDrift(Copy(raw.Write()));
}

}  // namespace
