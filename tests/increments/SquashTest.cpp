#include <Tools/Increments/Squash.h>

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"

#include <Quorlan/ModelBuilder.h>

#include <gtest/gtest.h>

#include <optional>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::Increments::Squash;
using Action = OwnerHistoryChangeAction;
using Guids = std::vector<_GUID>;

constexpr std::uint32_t kAbsent = 0xFFFFFFFF;
constexpr auto kDropped = std::nullopt;

/// What two increments say together about one entity.
struct Outcome {
    std::optional<Action> written;
    bool isModified = false;
    bool isDeleted = false;
};

/// A model of entity 0 with this action; of nothing for kAbsent.
std::vector<char> WriteSide(std::uint32_t action) {
    return action == kAbsent ? ModelBuilder().Create() : WriteBareModel({Action{action}});
}

Outcome SquashSides(std::uint32_t base, std::uint32_t increment) {
    Squash squash;
    EXPECT_TRUE(squash.Build(WriteSide(base), WriteSide(increment)));
    auto const result = ReadContent(squash.GetResult());
    EXPECT_LE(result.size(), 1u);
    Outcome outcome{kDropped, squash.GetModified() == Guids{MakeGuid(0)}, squash.GetDeleted() == Guids{MakeGuid(0)}};
    if (!result.empty()) outcome.written = result[0].history.changeAction;
    return outcome;
}

void ExpectOutcome(std::uint32_t base, std::uint32_t increment, Outcome const& expected) {
    Outcome const actual = SquashSides(base, increment);
    EXPECT_EQ(actual.written, expected.written) << base << " and " << increment;
    EXPECT_EQ(actual.isModified, expected.isModified) << base << " and " << increment;
    EXPECT_EQ(actual.isDeleted, expected.isDeleted) << base << " and " << increment;
}

TEST(Squash, StartsWithoutResultsAndWithoutError) {
    Squash squash;
    EXPECT_TRUE(squash.GetResult().empty());
    EXPECT_TRUE(squash.GetModified().empty());
    EXPECT_TRUE(squash.GetDeleted().empty());
    EXPECT_EQ(squash.GetError(), "");
}

TEST(Squash, EveryPairOfActionsGivesTheTableAndTheLists) {
    Action const n = Action::NOCHANGE;
    Action const m = Action::MODIFIED;
    Action const a = Action::ADDED;
    Action const d = Action::DELETED;
    Outcome const table[4][4] = {
        {{n}, {a, true}, {a}, {kDropped}},
        {{m}, {m, true}, {m, true}, {d, false, true}},
        {{n}, {a}, {a}, {kDropped}},
        {{m}, {m, true}, {m, true}, {d, false, true}},
    };
    for (std::uint32_t base = 0; base < 4; ++base) {
        for (std::uint32_t increment = 0; increment < 4; ++increment) {
            ExpectOutcome(base, increment, table[base][increment]);
        }
    }
}

TEST(Squash, AnEntityInOnlyOneKeepsItsActionAndIsListed) {
    for (std::uint32_t action = 0; action < 4; ++action) {
        ExpectOutcome(action, kAbsent, {Action{action}, action == 1, action == 3});
        ExpectOutcome(kAbsent, action, {Action{action}, action == 1, action == 3});
    }
    ExpectOutcome(kAbsent, kAbsent, {});
}

TEST(Squash, ActionsOfFourAndAbove) {
    for (std::uint32_t const large : {4u, 99u, 0xFFFFFFFEu}) {
        ExpectOutcome(large, kAbsent, {Action{large}});
        ExpectOutcome(kAbsent, large, {kDropped});
        for (std::uint32_t base = 0; base < 5; ++base) ExpectOutcome(base, large, {kDropped});
        ExpectOutcome(large, 0, {Action::NOCHANGE});
        ExpectOutcome(large, 1, {Action::MODIFIED, true});
        ExpectOutcome(large, 2, {Action::ADDED});
        ExpectOutcome(large, 3, {Action::DELETED, false, true});
    }
}

TEST(Squash, ModifiedOverNoChangeIsWrittenAddedButListedModified) { ExpectOutcome(0, 1, {Action::ADDED, true, false}); }

TEST(Squash, DeletedOverNoChangeIsDroppedAndNotListed) { ExpectOutcome(0, 3, {kDropped, false, false}); }

TEST(Squash, AddedThenDeletedIsNowhere) { ExpectOutcome(2, 3, {kDropped, false, false}); }

TEST(Squash, DeletedThenAddedIsModified) { ExpectOutcome(3, 2, {Action::MODIFIED, true, false}); }

TEST(Squash, EmptyBaseGivesTheIncrementWithItsOwnActions) {
    Squash squash;
    ASSERT_TRUE(squash.Build(
        {}, WriteBareModel({Action::DELETED, Action::MODIFIED, Action::ADDED, Action{4}, Action::NOCHANGE})));
    auto const result = ReadContent(squash.GetResult());
    ASSERT_EQ(result.size(), 4u);
    EXPECT_EQ(result[0].history.changeAction, Action::DELETED);
    EXPECT_EQ(result[1].history.changeAction, Action::MODIFIED);
    EXPECT_EQ(result[2].history.changeAction, Action::ADDED);
    EXPECT_EQ(result[3].guid, MakeGuid(4));
    EXPECT_EQ(squash.GetModified(), Guids{MakeGuid(1)});
    EXPECT_EQ(squash.GetDeleted(), Guids{MakeGuid(0)});
}

TEST(Squash, ListsNameTheBasePassFirstThenTheIncrement) {
    ModelBuilder base;
    SceneWriter baseWriter(base);
    baseWriter.AddBareEntity(9, Action::MODIFIED);
    baseWriter.AddBareEntity(8, Action::DELETED);
    baseWriter.AddBareEntity(5, Action::MODIFIED);
    ModelBuilder increment;
    SceneWriter incrementWriter(increment);
    incrementWriter.AddBareEntity(3, Action::DELETED);
    incrementWriter.AddBareEntity(5, Action::MODIFIED);
    incrementWriter.AddBareEntity(1, Action::MODIFIED);
    Squash squash;
    ASSERT_TRUE(squash.Build(base.Create(), increment.Create()));
    EXPECT_EQ(squash.GetModified(), (Guids{MakeGuid(9), MakeGuid(5), MakeGuid(1)}));
    EXPECT_EQ(squash.GetDeleted(), (Guids{MakeGuid(8), MakeGuid(3)}));
}

TEST(Squash, LaterIncrementSuppliesTheContent) {
    ModelBuilder base;
    ModelBuilder increment;
    SceneWriter baseWriter(base);
    SceneWriter incrementWriter(increment);
    for (std::uint32_t number = 0; number < 10; ++number) baseWriter.AddEntity(number, 0, Action::MODIFIED);
    for (std::uint32_t number = 5; number < 15; ++number) incrementWriter.AddEntity(number, 1, Action::MODIFIED);
    auto const before = ReadContent(base.Create());
    auto const after = ReadContent(increment.Create());
    Squash squash;
    ASSERT_TRUE(squash.Build(base.Create(), increment.Create()));
    auto const result = ReadContent(squash.GetResult());
    ASSERT_EQ(result.size(), 15u);
    for (std::size_t i = 0; i < 15; ++i) EXPECT_EQ(Compare(result[i], i < 5 ? before[i] : after[i - 5]), "") << i;
}

TEST(Squash, FailureChangesNothingButTheError) {
    Squash squash;
    ASSERT_TRUE(squash.Build({}, WriteBareModel({Action::DELETED, Action::MODIFIED})));
    EXPECT_FALSE(squash.Build({'x'}, {'x'}));
    EXPECT_EQ(squash.GetError(), "base is invalid");
    EXPECT_FALSE(squash.Build({}, {}));
    EXPECT_EQ(squash.GetError(), "increment is invalid");
    EXPECT_EQ(ReadContent(squash.GetResult()).size(), 2u);
    EXPECT_EQ(squash.GetModified(), Guids{MakeGuid(1)});
    EXPECT_EQ(squash.GetDeleted(), Guids{MakeGuid(0)});
}

TEST(Squash, SuccessReplacesTheListsAndKeepsTheError) {
    Squash squash;
    EXPECT_FALSE(squash.Build({'x'}, {}));
    ASSERT_TRUE(squash.Build({}, WriteBareModel({Action::DELETED, Action::MODIFIED})));
    ASSERT_TRUE(squash.Build({}, WriteBareModel({Action::NOCHANGE, Action::DELETED})));
    EXPECT_EQ(squash.GetError(), "base is invalid");
    EXPECT_TRUE(squash.GetModified().empty());
    EXPECT_EQ(squash.GetDeleted(), Guids{MakeGuid(1)});
}

TEST(Squash, EachResultIsHandedOverOnce) {
    Squash squash;
    ASSERT_TRUE(squash.Build({}, WriteBareModel({Action::DELETED, Action::MODIFIED})));
    EXPECT_EQ(squash.GetDeleted().size(), 1u);
    EXPECT_TRUE(squash.GetDeleted().empty());
    EXPECT_EQ(squash.GetModified().size(), 1u);
    EXPECT_TRUE(squash.GetModified().empty());
    EXPECT_FALSE(squash.GetResult().empty());
    EXPECT_TRUE(squash.GetResult().empty());
}

}  // namespace
