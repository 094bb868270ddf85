#include "increments/EntityPlan.h"

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"

#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using namespace Quorlan::Tools::Increments;
using Action = OwnerHistoryChangeAction;
using List = std::vector<std::pair<Action, EntityIndex_t>>;

constexpr auto kNone = std::nullopt;

EntityPlan PlanOf(std::vector<char> const& base, std::vector<char> const& increment) {
    return {EntityGuidIndex(ModelStorage::FromBuffer(base).GetModelReader()),
            EntityGuidIndex(ModelStorage::FromBuffer(increment).GetModelReader())};
}

TEST(CombineActions, FollowsTheTable) {
    std::optional<Action> const table[4][4] = {
        {Action::NOCHANGE, Action::ADDED, Action::ADDED, kNone},
        {Action::MODIFIED, Action::MODIFIED, Action::MODIFIED, Action::DELETED},
        {Action::NOCHANGE, Action::ADDED, Action::ADDED, kNone},
        {Action::MODIFIED, Action::MODIFIED, Action::MODIFIED, Action::DELETED},
    };
    for (std::uint32_t base = 0; base < 4; ++base) {
        for (std::uint32_t increment = 0; increment < 4; ++increment) {
            EXPECT_EQ(CombineActions(Action{base}, Action{increment}), table[base][increment])
                << base << " and " << increment;
        }
    }
}

TEST(CombineActions, IncrementActionOfFourAndAboveDropsTheEntity) {
    for (std::uint32_t base = 0; base < 6; ++base) {
        EXPECT_EQ(CombineActions(Action{base}, Action{4}), kNone);
        EXPECT_EQ(CombineActions(Action{base}, Action{0xFFFFFFFF}), kNone);
    }
}

TEST(CombineActions, BaseActionOfFourAndAboveIsNeitherAddedNorModified) {
    EXPECT_EQ(CombineActions(Action{4}, Action::NOCHANGE), Action::NOCHANGE);
    EXPECT_EQ(CombineActions(Action{4}, Action::MODIFIED), Action::MODIFIED);
    EXPECT_EQ(CombineActions(Action{4}, Action::ADDED), Action::ADDED);
    EXPECT_EQ(CombineActions(Action{4}, Action::DELETED), Action::DELETED);
}

TEST(EntityPlan, TakesWhatTheIncrementDoesNotNameFromTheBaseUnchanged) {
    auto const base = WriteBareModel({Action::NOCHANGE, Action::MODIFIED, Action::ADDED, Action::DELETED, Action{9}});
    EntityPlan const plan = PlanOf(base, ModelBuilder().Create());
    EXPECT_EQ(plan.fromBase, (List{{Action::NOCHANGE, EntityIndex_t{0}},
                                   {Action::MODIFIED, EntityIndex_t{1}},
                                   {Action::ADDED, EntityIndex_t{2}},
                                   {Action::DELETED, EntityIndex_t{3}},
                                   {Action{9}, EntityIndex_t{4}}}));
    EXPECT_TRUE(plan.fromIncrement.empty());
}

TEST(EntityPlan, TakesNewEntitiesOfTheIncrementWithTheirActionsUpToDeleted) {
    auto const increment =
        WriteBareModel({Action::NOCHANGE, Action::MODIFIED, Action::ADDED, Action::DELETED, Action{4}});
    EntityPlan const plan = PlanOf(ModelBuilder().Create(), increment);
    EXPECT_TRUE(plan.fromBase.empty());
    EXPECT_EQ(plan.fromIncrement, (List{{Action::NOCHANGE, EntityIndex_t{0}},
                                        {Action::MODIFIED, EntityIndex_t{1}},
                                        {Action::ADDED, EntityIndex_t{2}},
                                        {Action::DELETED, EntityIndex_t{3}}}));
}

TEST(EntityPlan, NeverTakesFromTheBaseWhatTheIncrementNames) {
    EntityPlan const plan = PlanOf(WriteBareModel({Action::NOCHANGE, Action::NOCHANGE, Action::ADDED}),
                                   WriteBareModel({Action{4}, Action::DELETED, Action::NOCHANGE}));
    EXPECT_TRUE(plan.fromBase.empty());
    EXPECT_EQ(plan.fromIncrement, (List{{Action::NOCHANGE, EntityIndex_t{2}}}));
}

}  // namespace
