// The boxes of an opened model, as against those of a raw buffer.

#include <Quorlan/ModelStorage.h>
#include <Tools/BoundingBoxBuilder.h>

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Tools::BoundingBoxBuilder;

ModelStorage Open(RawModel const& model) {
    auto storage = ModelStorage::FromBuffer(model.Write());
    EXPECT_FALSE(storage.HasError());
    return storage;
}

Vector3f Narrow(Vertex const& v) { return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)}; }

/// What the reader says of instance i, taken step by step.
AxisAlignedBox3 PlainBox(IModelReader const& reader, std::uint32_t i, AffineTransform const& transform) {
    InstanceRecord instance;
    reader.GetGeometry().GetInstance(instance, i);
    DefinitionBounds bounds;
    reader.GetGeometry().GetDefinitionBounds(bounds, instance.definitionIndex);
    AffineTransform placement;
    reader.GetGeometry().GetPlacement(placement, instance.placementIndex);
    EntityIdentifier entity;
    reader.GetEntities().GetIdentifier(entity, instance.entityIndex);
    auto const world =
        PlainCompose(ToPlainFrame(transform), PlainCompose(ToPlainFrame(entity.placement), ToPlainFrame(placement)));
    Vertex const center = (bounds.max + bounds.min) * 0.5;
    Vertex const half = (bounds.max - bounds.min) * 0.5;
    return PlainTransformBox(world, Narrow(center - half), Narrow(center + half));
}

TEST(BoundingBoxBuilderOnReader, UnitBoxOnAnEntityTenAway) {
    RawModel model;
    model.AddInstance(model.AddEntity(At(10, 0, 0)), model.AddDefinition({0, 0, 0}, {1, 1, 1}));
    auto const storage = Open(model);
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(storage.GetModelReader()));
    ASSERT_EQ(builder.getBoundingBoxes().size(), 1u);
    EXPECT_TRUE(SameBits(builder.getBoundingBoxes()[0], AxisAlignedBox3{{10.5, 0.5, 0.5}, {0.5, 0.5, 0.5}}));
}

TEST(BoundingBoxBuilderOnReader, GivesTheBitsOfThePlainComputation) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kMixed}) {
        auto const storage = Open(MakeRandomModel(21, 300, style));
        auto const transform = RandomTransform(22);
        BoundingBoxBuilder builder;
        ASSERT_TRUE(builder.Build(transform, storage.GetModelReader()));
        ASSERT_EQ(builder.getBoundingBoxes().size(), 300u);
        for (std::uint32_t i = 0; i < 300; ++i) {
            auto const expected = PlainBox(storage.GetModelReader(), i, transform);
            ASSERT_TRUE(SameBits(builder.getBoundingBoxes()[i], expected)) << "instance " << i;
        }
    }
}

TEST(BoundingBoxBuilderOnReader, AgreesWithTheBufferOnAlignedPlacements) {
    auto const model = MakeRandomModel(23, 100, RandomPlacements::kAligned);
    auto const storage = Open(model);
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(storage.GetModelReader()));
    auto const boxes = PlainBoxes(model);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        EXPECT_NEAR(builder.getBoundingBoxes()[i].center.x, boxes[i].center.x, 1e-5);
        EXPECT_NEAR(builder.getBoundingBoxes()[i].halfExtent.z, boxes[i].halfExtent.z, 1e-5);
    }
}

TEST(BoundingBoxBuilderOnReader, ModelWithoutInstancesFailsAndKeepsTheEarlierBoxes) {
    auto const full = Open(MakeRandomModel(24, 5));
    auto const empty = Open(RawModel());
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(full.GetModelReader()));
    EXPECT_FALSE(builder.Build(empty.GetModelReader()));
    EXPECT_EQ(builder.getBoundingBoxes().size(), 5u);
}

}  // namespace
