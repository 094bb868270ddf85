#include <Tools/BoundingBoxBuilder.h>

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using GeometryObjectLib::Vertex;
using Tools::BoundingBoxBuilder;

void ExpectBox(AxisAlignedBox3 const& box, Vertex const& center, Vertex const& half) {
    EXPECT_TRUE(SameBits(box, AxisAlignedBox3{center, half}))
        << box.center.x << " " << box.center.y << " " << box.center.z << ", half " << box.halfExtent.x << " "
        << box.halfExtent.y << " " << box.halfExtent.z;
}

RawModel UnitBoxModel(PlacementRecord const& entity = {}) {
    RawModel model;
    model.AddInstance(model.AddEntity(entity), model.AddDefinition({0, 0, 0}, {1, 1, 1}));
    return model;
}

void ExpectPlainBoxes(RawModel const& model, AffineTransform const& transform) {
    auto const buffer = model.Write();
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(transform, buffer.data()));
    auto const expected = PlainBoxes(model, transform);
    ASSERT_EQ(builder.getBoundingBoxes().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_TRUE(SameBits(builder.getBoundingBoxes()[i], expected[i])) << "instance " << i;
    }
}

TEST(BoundingBoxBuilder, IsEmptyBeforeTheFirstBuild) { EXPECT_TRUE(BoundingBoxBuilder().getBoundingBoxes().empty()); }

TEST(BoundingBoxBuilder, OneUnitBoxGivesItsCentreAndHalfSizes) {
    auto const buffer = UnitBoxModel().Write();
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    ASSERT_EQ(builder.getBoundingBoxes().size(), 1u);
    ExpectBox(builder.getBoundingBoxes()[0], {0.5, 0.5, 0.5}, {0.5, 0.5, 0.5});
}

TEST(BoundingBoxBuilder, EntityPlacementMovesTheBox) {
    auto const buffer = UnitBoxModel(At(10, 0, 0)).Write();
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    ExpectBox(builder.getBoundingBoxes()[0], {10.5, 0.5, 0.5}, {0.5, 0.5, 0.5});
}

TEST(BoundingBoxBuilder, TransformComesAfterEntityAndInstancePlacement) {
    RawModel model;
    PlacementRecord const quarterTurn{{10, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
    model.AddInstance(model.AddEntity(quarterTurn), model.AddDefinition({0, 0, 0}, {2, 1, 1}), At(5, 0, 0));
    auto const buffer = model.Write();
    AffineTransform twice;
    twice.matrix.m = {2, 0, 0, 100, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(twice, buffer.data()));
    // In the entity (5..7, 0..1, 0..1), in the model (9..10, 5..7, 0..1).
    ExpectBox(builder.getBoundingBoxes()[0], {119, 12, 1}, {1, 2, 1});
}

TEST(BoundingBoxBuilder, MirroringTransformKeepsHalfSizesPositive) {
    auto const buffer = UnitBoxModel().Write();
    AffineTransform mirror;
    mirror.matrix(0, 0) = -1;
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(mirror, buffer.data()));
    ExpectBox(builder.getBoundingBoxes()[0], {-0.5, 0.5, 0.5}, {0.5, 0.5, 0.5});
}

TEST(BoundingBoxBuilder, InstancesOfOneDefinitionGiveBoxesInInstanceOrder) {
    RawModel model;
    auto const entity = model.AddEntity();
    auto const definition = model.AddDefinition({0, 0, 0}, {1, 1, 1});
    for (double const x : {7.0, 3.0, 5.0}) model.AddInstance(entity, definition, At(x, 0, 0));
    auto const buffer = model.Write();
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    ASSERT_EQ(builder.getBoundingBoxes().size(), 3u);
    EXPECT_EQ(builder.getBoundingBoxes()[0].center.x, 7.5);
    EXPECT_EQ(builder.getBoundingBoxes()[1].center.x, 3.5);
    EXPECT_EQ(builder.getBoundingBoxes()[2].center.x, 5.5);
}

TEST(BoundingBoxBuilder, FarPositionsKeepDoublePrecision) {
    auto const buffer = UnitBoxModel(At(500000.125, -3e9, 0)).Write();
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    ExpectBox(builder.getBoundingBoxes()[0], {500000.625, -3e9 + 0.5, 0.5}, {0.5, 0.5, 0.5});
}

TEST(BoundingBoxBuilder, PlacementWithParallelAxesGivesBoxesThatAreNotNumbers) {
    auto const buffer = UnitBoxModel({{0, 0, 0}, {1, 0, 0}, {1, 0, 0}}).Write();
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    EXPECT_TRUE(std::isnan(builder.getBoundingBoxes()[0].center.x));
}

TEST(BoundingBoxBuilder, FailedBuildKeepsTheEarlierBoxes) {
    BoundingBoxBuilder builder;
    auto const good = UnitBoxModel().Write();
    ASSERT_TRUE(builder.Build(good.data()));

    RawModel withoutInstances = UnitBoxModel();
    withoutInstances.instances->clear();
    RawModel withoutInstanceVector = UnitBoxModel();
    withoutInstanceVector.instances = std::nullopt;
    RawModel wrongIdentifier = UnitBoxModel();
    wrongIdentifier.identifier = "QLn8";
    RawModel withoutEntities = UnitBoxModel();
    withoutEntities.hasEntities = false;
    RawModel withoutRecords = UnitBoxModel();
    withoutRecords.entities = std::nullopt;
    RawModel withoutGeometry = UnitBoxModel();
    withoutGeometry.hasGeometry = false;
    for (RawModel const& model :
         {withoutInstances, withoutInstanceVector, wrongIdentifier, withoutEntities, withoutRecords, withoutGeometry}) {
        auto const buffer = model.Write();
        EXPECT_FALSE(builder.Build(buffer.data()));
        ASSERT_EQ(builder.getBoundingBoxes().size(), 1u);
        ExpectBox(builder.getBoundingBoxes()[0], {0.5, 0.5, 0.5}, {0.5, 0.5, 0.5});
    }
}

TEST(BoundingBoxBuilder, RejectsEveryIdentifierThatDiffersInOneByte) {
    auto buffer = UnitBoxModel().Write();
    BoundingBoxBuilder builder;
    for (std::size_t byte = 4; byte < 8; ++byte) {
        buffer[byte] ^= 0x20;
        EXPECT_FALSE(builder.Build(buffer.data()));
        buffer[byte] ^= 0x20;
    }
    EXPECT_TRUE(builder.Build(buffer.data()));
}

TEST(BoundingBoxBuilder, RebuildingReplacesAllBoxes) {
    BoundingBoxBuilder builder;
    for (std::uint32_t const count : {2000u, 3u, 500u, 1999u, 2000u}) {
        auto const model = MakeRandomModel(count, count);
        auto const buffer = model.Write();
        ASSERT_TRUE(builder.Build(buffer.data()));
        auto const expected = PlainBoxes(model);
        ASSERT_EQ(builder.getBoundingBoxes().size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(SameBits(builder.getBoundingBoxes()[i], expected[i])) << "instance " << i << " of " << count;
        }
    }
}

TEST(BoundingBoxBuilder, GivesTheBitsOfThePlainComputation) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kRotated, RandomPlacements::kMixed}) {
        for (std::uint32_t count = 1; count < 12; ++count) {
            SCOPED_TRACE(count);
            ExpectPlainBoxes(MakeRandomModel(count, count, style), {});
        }
        for (std::uint32_t seed = 100; seed < 104; ++seed) {
            SCOPED_TRACE(seed);
            auto const model = MakeRandomModel(seed, 1000, style);
            ExpectPlainBoxes(model, {});
            ExpectPlainBoxes(model, RandomTransform(seed));
        }
    }
}

}  // namespace
