#include <Tools/Increments/Merge.h>

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"
#include "support/RawModel.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

#include <map>
#include <optional>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::Increments::Merge;
using Action = OwnerHistoryChangeAction;
using Actions = std::map<_GUID, Action, GuidLess>;

constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

Actions ActionsOf(std::vector<char> const& model) {
    Actions actions;
    for (EntityContent const& entity : ReadContent(model)) {
        EXPECT_TRUE(actions.emplace(entity.guid, entity.history.changeAction).second);
    }
    return actions;
}

std::vector<char> WriteScene(std::uint32_t first, std::uint32_t end, std::uint32_t revision, Action action) {
    ModelBuilder builder;
    SceneWriter writer(builder);
    for (std::uint32_t number = first; number < end; ++number) writer.AddEntity(number, revision, action);
    return builder.Create();
}

/// A model of entity 0 with this action; of nothing for kAbsent.
std::vector<char> WriteSide(std::uint32_t action) {
    return action == kAbsent ? ModelBuilder().Create() : WriteBareModel({Action{action}});
}

TEST(Merge, StartsWithoutResultAndWithoutError) {
    Merge merge;
    EXPECT_TRUE(merge.GetResult().empty());
    EXPECT_EQ(merge.GetError(), "");
}

TEST(Merge, EmptyFullModelTakesTheIncrementButWhatItDeletes) {
    Merge merge;
    ASSERT_TRUE(merge.Build({}, WriteBareModel({Action::NOCHANGE, Action::MODIFIED, Action::ADDED, Action::DELETED})));
    EXPECT_EQ(
        ActionsOf(merge.GetResult()),
        (Actions{{MakeGuid(0), Action::NOCHANGE}, {MakeGuid(1), Action::NOCHANGE}, {MakeGuid(2), Action::NOCHANGE}}));
}

TEST(Merge, EveryPairOfActionsGivesWhatTheRulesSay) {
    for (std::uint32_t const base : {0u, 1u, 2u, 3u, 4u, 99u, kAbsent}) {
        for (std::uint32_t const increment : {0u, 1u, 2u, 3u, 4u, 99u, kAbsent}) {
            Merge merge;
            ASSERT_TRUE(merge.Build(WriteSide(base), WriteSide(increment)));
            Actions expected;
            if (increment == kAbsent && base != kAbsent) expected[MakeGuid(0)] = Action{base};
            if (increment < 3) expected[MakeGuid(0)] = Action::NOCHANGE;
            EXPECT_EQ(ActionsOf(merge.GetResult()), expected) << base << " and " << increment;
        }
    }
}

TEST(Merge, NothingOfTheIncrementSideCarriesAnActionButNoChange) {
    Merge merge;
    ASSERT_TRUE(merge.Build(WriteBareModel({Action::DELETED, Action::MODIFIED, Action::ADDED}),
                            WriteBareModel({Action::MODIFIED, Action::NOCHANGE})));
    EXPECT_EQ(
        ActionsOf(merge.GetResult()),
        (Actions{{MakeGuid(0), Action::NOCHANGE}, {MakeGuid(1), Action::NOCHANGE}, {MakeGuid(2), Action::ADDED}}));
}

TEST(Merge, IncrementSuppliesTheContentOfWhatBothName) {
    auto const base = WriteScene(0, 20, 0, Action::NOCHANGE);
    auto const increment = WriteScene(5, 10, 1, Action::MODIFIED);
    Merge merge;
    ASSERT_TRUE(merge.Build(base, increment));
    auto const result = ReadContent(merge.GetResult());
    auto const before = ReadContent(base);
    auto const changed = ReadContent(increment);
    ASSERT_EQ(result.size(), 20u);
    for (std::uint32_t i = 0; i < 20; ++i) {
        // The base's entities come first, each model's in its own order.
        EntityContent const& expected = i < 5 ? before[i] : i < 15 ? before[i + 5] : changed[i - 15];
        EXPECT_EQ(Compare(result[i], expected), "") << i;
    }
}

TEST(Merge, EntitiesWithoutGuidAreNotCopied) {
    ModelBuilder base;
    base.GetEntityWriter().AddEntityWithIdentifierText("text", {}, {});
    base.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    ModelBuilder increment;
    increment.GetEntityWriter().AddEntityWithoutIdentifier({}, {});
    Merge merge;
    ASSERT_TRUE(merge.Build(base.Create(), increment.Create()));
    auto const storage = ModelStorage::FromBuffer(merge.GetResult());
    EXPECT_EQ(storage.GetModelReader().GetEntities().GetCount(), 1u);
}

TEST(Merge, OfEqualGuidsInOneModelTheFirstCounts) {
    ModelBuilder base;
    base.GetEntityWriter().AddEntity(MakeGuid(1), L"first", {});
    base.GetEntityWriter().AddEntity(MakeGuid(1), L"second", {});
    ModelBuilder increment;
    SceneWriter writer(increment);
    writer.AddBareEntity(2, Action::DELETED);
    writer.AddBareEntity(2, Action::ADDED);
    Merge merge;
    ASSERT_TRUE(merge.Build(base.Create(), increment.Create()));
    auto const result = ReadContent(merge.GetResult());
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].text, L"first");
}

TEST(Merge, DeletingWhatTheBaseOnlyDuplicatesRemovesBoth) {
    ModelBuilder base;
    base.GetEntityWriter().AddEntity(MakeGuid(0), L"first", {});
    base.GetEntityWriter().AddEntity(MakeGuid(0), L"second", {});
    Merge merge;
    ASSERT_TRUE(merge.Build(base.Create(), WriteBareModel({Action::DELETED})));
    EXPECT_TRUE(ReadContent(merge.GetResult()).empty());
}

TEST(Merge, CorruptBaseIsNamedBeforeTheIncrementIsLookedAt) {
    Merge merge;
    EXPECT_FALSE(merge.Build({'x'}, {'x'}));
    EXPECT_EQ(merge.GetError(), "original full is invalid");
    EXPECT_FALSE(merge.Build({}, {'x'}));
    EXPECT_EQ(merge.GetError(), "increment is invalid");
    EXPECT_FALSE(merge.Build(ModelBuilder().Create(), {}));
    EXPECT_EQ(merge.GetError(), "increment is invalid");
}

TEST(Merge, FailureKeepsTheResultAndSuccessKeepsTheError) {
    Merge merge;
    ASSERT_TRUE(merge.Build({}, WriteBareModel({Action::ADDED})));
    EXPECT_FALSE(merge.Build({'x'}, {}));
    ASSERT_TRUE(merge.Build({}, WriteBareModel({Action::ADDED, Action::ADDED})));
    EXPECT_EQ(merge.GetError(), "original full is invalid");
    EXPECT_FALSE(merge.Build({}, {}));
    EXPECT_EQ(merge.GetError(), "increment is invalid");
    EXPECT_EQ(ActionsOf(merge.GetResult()).size(), 2u);
}

TEST(Merge, ResultIsHandedOverOnceAndTheToolCanBeBuiltAgain) {
    Merge merge;
    auto const increment = WriteBareModel({Action::ADDED});
    ASSERT_TRUE(merge.Build({}, increment));
    auto const first = merge.GetResult();
    EXPECT_FALSE(first.empty());
    EXPECT_TRUE(merge.GetResult().empty());
    ASSERT_TRUE(merge.Build({}, increment));
    EXPECT_EQ(merge.GetResult(), first);
}

TEST(Merge, ResultOfSparseModelsOpens) {
    RawModel base;
    base.entityKind = 0;
    base.AddEntity();
    base.definitions = std::nullopt;
    base.instances = std::nullopt;
    base.placements = std::nullopt;
    RawModel increment;
    increment.entityKind = 0;
    increment.AddEntity(At(1, 0, 0));
    increment.AddInstance(0, increment.AddBRep(RawBox({0, 0, 0}, {1, 1, 1})), {}, 5, 6);
    Merge merge;
    ASSERT_TRUE(merge.Build(base.Write(), increment.Write()));
    // Without GUIDs both entities read as the all-zero one: the increment's takes the place of the base's.
    auto const result = ReadContent(merge.GetResult());
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].instances.size(), 1u);
}

}  // namespace
