#include <Tools/InstancesByEntitiesBuilder.h>

#include "support/RandomModel.h"
#include "support/RawModel.h"

#include <gtest/gtest.h>

namespace {

using namespace Quorlan::Testing;
using Quorlan::Tools::InstancesByEntitiesBuilder;
using Indices = std::vector<unsigned int>;

RawModel ModelOf(std::uint32_t entityCount, Indices const& entityOfInstance) {
    RawModel model;
    for (std::uint32_t i = 0; i < entityCount; ++i) model.AddEntity();
    auto const definition = model.AddDefinition({0, 0, 0}, {1, 1, 1});
    for (unsigned const entity : entityOfInstance) model.AddInstance(entity, definition);
    return model;
}

TEST(InstancesByEntitiesBuilder, IsEmptyBeforeTheFirstBuild) {
    InstancesByEntitiesBuilder const builder;
    EXPECT_TRUE(builder.GetEntitiesHavingInstances().empty());
    EXPECT_TRUE(builder.GetInstancesByEntities().empty());
}

TEST(InstancesByEntitiesBuilder, ListsEntitiesByTheirFirstInstance) {
    auto const buffer = ModelOf(6, {5, 3, 5}).Write();
    InstancesByEntitiesBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    EXPECT_EQ(builder.GetEntitiesHavingInstances(), (Indices{5, 3}));
    ASSERT_EQ(builder.GetInstancesByEntities().size(), 6u);
    EXPECT_EQ(builder.GetInstancesByEntities()[5], (Indices{0, 2}));
    EXPECT_EQ(builder.GetInstancesByEntities()[3], (Indices{1}));
    EXPECT_TRUE(builder.GetInstancesByEntities()[0].empty());
}

TEST(InstancesByEntitiesBuilder, EntitiesWithoutInstancesGiveEmptyLists) {
    auto const buffer = ModelOf(4, {}).Write();
    InstancesByEntitiesBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    EXPECT_TRUE(builder.GetEntitiesHavingInstances().empty());
    EXPECT_EQ(builder.GetInstancesByEntities(), std::vector<Indices>(4));
}

TEST(InstancesByEntitiesBuilder, EmptyModelGivesTrue) {
    auto const buffer = ModelOf(0, {}).Write();
    InstancesByEntitiesBuilder builder;
    EXPECT_TRUE(builder.Build(buffer.data()));
    EXPECT_TRUE(builder.GetInstancesByEntities().empty());
}

TEST(InstancesByEntitiesBuilder, FailedBuildLeavesBothListsEmpty) {
    RawModel wrongIdentifier = ModelOf(1, {0});
    wrongIdentifier.identifier = "QLN\x08";
    RawModel withoutEntities = ModelOf(1, {0});
    withoutEntities.hasEntities = false;
    RawModel withoutRecords = ModelOf(1, {0});
    withoutRecords.entities = std::nullopt;
    RawModel withoutGeometry = ModelOf(1, {0});
    withoutGeometry.hasGeometry = false;
    RawModel withoutInstances = ModelOf(1, {0});
    withoutInstances.instances = std::nullopt;
    auto const good = ModelOf(6, {5, 3, 5}).Write();
    for (RawModel const& model :
         {wrongIdentifier, withoutEntities, withoutRecords, withoutGeometry, withoutInstances}) {
        auto const bad = model.Write();
        InstancesByEntitiesBuilder builder;
        ASSERT_TRUE(builder.Build(good.data()));
        EXPECT_FALSE(builder.Build(bad.data()));
        EXPECT_TRUE(builder.GetEntitiesHavingInstances().empty());
        EXPECT_TRUE(builder.GetInstancesByEntities().empty());
    }
}

TEST(InstancesByEntitiesBuilder, RebuildingForgetsTheEarlierModel) {
    auto const first = ModelOf(6, {5, 3, 5}).Write();
    auto const second = ModelOf(2, {1}).Write();
    InstancesByEntitiesBuilder builder;
    ASSERT_TRUE(builder.Build(first.data()));
    ASSERT_TRUE(builder.Build(second.data()));
    EXPECT_EQ(builder.GetEntitiesHavingInstances(), (Indices{1}));
    EXPECT_EQ(builder.GetInstancesByEntities(), (std::vector<Indices>{{}, {0}}));
}

TEST(InstancesByEntitiesBuilder, EveryInstanceStandsInTheListOfItsEntityOnce) {
    auto const model = MakeRandomModel(31, 500);
    auto const buffer = model.Write();
    InstancesByEntitiesBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    std::size_t listed = 0;
    for (std::size_t entity = 0; entity < builder.GetInstancesByEntities().size(); ++entity) {
        auto const& instances = builder.GetInstancesByEntities()[entity];
        for (std::size_t k = 0; k < instances.size(); ++k, ++listed) {
            EXPECT_EQ((*model.instances)[instances[k]].entityIndex, entity);
            if (k > 0) {
                EXPECT_LT(instances[k - 1], instances[k]);
            }
        }
    }
    EXPECT_EQ(listed, 500u);
}

}  // namespace
