#include <Tools/PlacementBuilder.h>

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Tools::PlacementBuilder;

RawModel OneInstance(PlacementRecord const& entity, PlacementRecord const& instance) {
    RawModel model;
    model.AddInstance(model.AddEntity(entity), model.AddDefinition({0, 0, 0}, {1, 1, 1}), instance);
    return model;
}

Matrix4 Rows(std::array<double, 12> const& rows) {
    Matrix4 matrix;
    std::copy(rows.begin(), rows.end(), matrix.m.begin());
    return matrix;
}

AffineTransform Moving(double x, double y, double z) {
    AffineTransform transform;
    transform.matrix = Rows({1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z});
    return transform;
}

Matrix4 BuildOne(RawModel const& model) {
    auto const buffer = model.Write();
    PlacementBuilder builder;
    EXPECT_TRUE(builder.Build(buffer.data()));
    EXPECT_EQ(builder.getPlacements().size(), 1u);
    return builder.getPlacements().at(0);
}

TEST(PlacementBuilder, IsEmptyBeforeTheFirstBuild) { EXPECT_TRUE(PlacementBuilder().getPlacements().empty()); }

TEST(PlacementBuilder, IdentityPlacementsGiveTheIdentity) { EXPECT_EQ(BuildOne(OneInstance({}, {})).m, Matrix4().m); }

TEST(PlacementBuilder, OriginsOfEntityAndInstanceAddUp) {
    Matrix4 const matrix = BuildOne(OneInstance(At(10, 0, 0), At(1, 2, 3)));
    EXPECT_EQ(matrix.m, Rows({1, 0, 0, 11, 0, 1, 0, 2, 0, 0, 1, 3}).m);
}

TEST(PlacementBuilder, InstancePlacementIsAppliedFirst) {
    PlacementRecord const quarterTurn{{10, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
    EXPECT_EQ(BuildOne(OneInstance(quarterTurn, At(5, 0, 0))).m, Rows({0, -1, 0, 10, 1, 0, 0, 5, 0, 0, 1, 0}).m);
    EXPECT_EQ(BuildOne(OneInstance(At(5, 0, 0), quarterTurn)).m, Rows({0, -1, 0, 15, 1, 0, 0, 0, 0, 0, 1, 0}).m);
}

TEST(PlacementBuilder, MakesTheYAxisPerpendicular) {
    EXPECT_EQ(BuildOne(OneInstance({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {})).m, Matrix4().m);
}

TEST(PlacementBuilder, AxesOfAnyLengthGiveUnitAxes) {
    EXPECT_EQ(BuildOne(OneInstance({{0, 0, 0}, {2, 0, 0}, {0, 3, 0}}, {{0, 0, 0}, {0.5f, 0, 0}, {0, 7, 0}})).m,
              Matrix4().m);
}

TEST(PlacementBuilder, TransformMovesTheLastColumn) {
    auto const model = MakeRandomModel(7, 50, RandomPlacements::kAligned);
    auto const buffer = model.Write();
    PlacementBuilder plain;
    PlacementBuilder moved;
    ASSERT_TRUE(plain.Build(buffer.data()));
    ASSERT_TRUE(moved.Build(buffer.data(), Moving(0, 0, 5)));
    for (std::size_t i = 0; i < 50; ++i) {
        EXPECT_EQ(moved.getPlacements()[i](2, 3), plain.getPlacements()[i](2, 3) + 5);
        EXPECT_EQ(moved.getPlacements()[i](0, 3), plain.getPlacements()[i](0, 3));
    }
}

TEST(PlacementBuilder, TransformMayBeAnyMatrix) {
    auto const model = MakeRandomModel(8, 21);
    auto const buffer = model.Write();
    AffineTransform perspective = RandomTransform(9);
    perspective.matrix.m[12] = 0.25;
    perspective.matrix.m[15] = 2;
    PlacementBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data(), perspective));
    auto const expected = PlainPlacements(model, &perspective.matrix);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(SameBits(builder.getPlacements()[i], expected[i])) << "instance " << i;
    }
}

TEST(PlacementBuilder, ParallelAxesGiveValuesThatAreNotNumbers) {
    EXPECT_TRUE(std::isnan(BuildOne(OneInstance({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {}))(0, 1)));
}

TEST(PlacementBuilder, ModelWithoutInstancesSucceedsWithNoMatrices) {
    PlacementBuilder builder;
    auto const good = OneInstance({}, {}).Write();
    ASSERT_TRUE(builder.Build(good.data()));
    auto const empty = RawModel().Write();
    EXPECT_TRUE(builder.Build(empty.data()));
    EXPECT_TRUE(builder.getPlacements().empty());

    RawModel withoutVectors;
    withoutVectors.placements = std::nullopt;
    withoutVectors.instances = std::nullopt;
    auto const sparse = withoutVectors.Write();
    EXPECT_TRUE(builder.Build(sparse.data(), Moving(1, 0, 0)));
    EXPECT_TRUE(builder.getPlacements().empty());
}

TEST(PlacementBuilder, DefinitionsAreNotNeeded) {
    RawModel model = OneInstance({}, At(1, 2, 3));
    model.definitions = std::nullopt;
    (*model.instances)[0].definitionIndex = 9;
    EXPECT_EQ(BuildOne(model)(1, 3), 2);
}

TEST(PlacementBuilder, FailedBuildKeepsTheEarlierMatrices) {
    PlacementBuilder builder;
    auto const good = OneInstance({}, At(1, 2, 3)).Write();
    ASSERT_TRUE(builder.Build(good.data()));

    RawModel wrongIdentifier;
    wrongIdentifier.identifier = "QLN7";
    RawModel withoutEntities;
    withoutEntities.hasEntities = false;
    RawModel withoutRecords;
    withoutRecords.entities = std::nullopt;
    RawModel withoutGeometry;
    withoutGeometry.hasGeometry = false;
    for (RawModel const& model : {wrongIdentifier, withoutEntities, withoutRecords, withoutGeometry}) {
        auto const buffer = model.Write();
        EXPECT_FALSE(builder.Build(buffer.data()));
        EXPECT_FALSE(builder.Build(buffer.data(), Moving(1, 0, 0)));
        ASSERT_EQ(builder.getPlacements().size(), 1u);
        EXPECT_EQ(builder.getPlacements()[0](2, 3), 3);
    }
}

TEST(PlacementBuilder, MatricesCanBeMovedOutAndTheToolBuiltAgain) {
    auto const buffer = OneInstance({}, At(1, 2, 3)).Write();
    PlacementBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    auto const taken = std::move(builder.getPlacements());
    EXPECT_EQ(taken.size(), 1u);
    ASSERT_TRUE(builder.Build(buffer.data()));
    EXPECT_EQ(builder.getPlacements().size(), 1u);
}

TEST(PlacementBuilder, RebuildingReplacesAllMatrices) {
    PlacementBuilder builder;
    for (std::uint32_t const count : {700u, 3u, 300u, 699u, 700u}) {
        auto const model = MakeRandomModel(count, count);
        auto const buffer = model.Write();
        ASSERT_TRUE(builder.Build(buffer.data()));
        auto const expected = PlainPlacements(model);
        ASSERT_EQ(builder.getPlacements().size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(SameBits(builder.getPlacements()[i], expected[i])) << "instance " << i << " of " << count;
        }
    }
}

TEST(PlacementBuilder, GivesTheBitsOfThePlainComputation) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kRotated, RandomPlacements::kMixed}) {
        for (std::uint32_t const count : {1u, 2u, 3u, 4u, 5u, 127u, 128u, 129u, 1000u}) {
            SCOPED_TRACE(count);
            auto const model = MakeRandomModel(count + 40, count, style);
            auto const buffer = model.Write();
            AffineTransform const transform = RandomTransform(count);
            PlacementBuilder plain;
            PlacementBuilder moved;
            ASSERT_TRUE(plain.Build(buffer.data()));
            ASSERT_TRUE(moved.Build(buffer.data(), transform));
            auto const expected = PlainPlacements(model);
            auto const expectedMoved = PlainPlacements(model, &transform.matrix);
            ASSERT_EQ(plain.getPlacements().size(), count);
            for (std::uint32_t i = 0; i < count; ++i) {
                ASSERT_TRUE(SameBits(plain.getPlacements()[i], expected[i])) << "instance " << i;
                ASSERT_TRUE(SameBits(moved.getPlacements()[i], expectedMoved[i])) << "instance " << i;
            }
        }
    }
}

}  // namespace
