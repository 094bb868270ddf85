#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"

#include <Quorlan/ModelBuilder.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

#include <gtest/gtest.h>

#include <map>
#include <random>

/// Random histories of edits, followed by a map from GUID to content.
namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::Increments::Merge;
using Quorlan::Tools::Increments::Squash;
using Action = OwnerHistoryChangeAction;

struct State {
    EntityContent content;
    Action action{};
};
using Reference = std::map<_GUID, State, GuidLess>;

Reference ToReference(std::vector<char> const& model) {
    Reference reference;
    for (EntityContent& entity : ReadContent(model)) {
        Action const action = entity.history.changeAction;
        _GUID const guid = entity.guid;
        EXPECT_TRUE(reference.emplace(guid, State{std::move(entity), action}).second);
    }
    return reference;
}

void ExpectEqual(Reference const& actual, Reference const& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (auto const& [guid, state] : expected) {
        auto const found = actual.find(guid);
        ASSERT_NE(found, actual.end());
        EXPECT_EQ(found->second.action, state.action);
        EXPECT_EQ(Compare(found->second.content, state.content), "");
    }
}

/// What the merged model must be.
void ApplyMerge(Reference& full, Reference const& increment) {
    for (auto const& [guid, change] : increment) {
        full.erase(guid);
        if (change.action < Action::DELETED) full[guid] = {change.content, Action::NOCHANGE};
    }
}

/// What the squashed increment must be.
void ApplySquash(Reference& base, Reference const& increment) {
    Action const n = Action::NOCHANGE;
    Action const m = Action::MODIFIED;
    Action const a = Action::ADDED;
    Action const d = Action::DELETED;
    Action const dropped{0xFFFF};
    Action const table[4][4] = {{n, a, a, dropped}, {m, m, m, d}, {n, a, a, dropped}, {m, m, m, d}};
    for (auto const& [guid, change] : increment) {
        auto const before = base.find(guid);
        Action action = change.action;
        if (before != base.end()) {
            action = action > d
                         ? dropped
                         : table[static_cast<std::size_t>(before->second.action)][static_cast<std::size_t>(action)];
            base.erase(before);
        }
        if (action <= d) base[guid] = {change.content, action};
    }
}

/// Actions in any combination, also those that no consistent application would record.
std::vector<char> WriteArbitraryIncrement(std::mt19937& random, std::uint32_t revision) {
    ModelBuilder builder;
    SceneWriter writer(builder);
    for (std::uint32_t number = 0; number < 30; ++number) {
        if (random() % 3 == 0) writer.AddEntity(number, revision, Action{static_cast<std::uint32_t>(random() % 6)});
    }
    return builder.Create();
}

/// Adds what is absent, modifies and deletes what is there.
std::vector<char> WriteConsistentIncrement(std::mt19937& random, std::uint32_t revision, Reference const& full) {
    Tools::Increments::IncrementModelBuilder builder;
    SceneWriter writer(builder);
    std::vector<_GUID> deleted;
    for (std::uint32_t number = 0; number < 30; ++number) {
        bool const exists = full.count(MakeGuid(number)) != 0;
        switch (random() % 5) {
            case 0: writer.AddEntity(number, revision, exists ? Action::MODIFIED : Action::ADDED); break;
            case 1:
                if (exists) deleted.push_back(MakeGuid(number));
                break;
            default: break;
        }
    }
    builder.AddAsDeleted(deleted);
    return builder.GetResult();
}

TEST(IncrementHistory, MergedModelsFollowTheReferenceAtEveryStep) {
    for (std::uint32_t const seed : {1u, 2u, 3u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Merge merge;
        std::vector<char> full;
        Reference reference;
        for (std::uint32_t step = 1; step <= 15; ++step) {
            auto const increment = WriteArbitraryIncrement(random, step);
            ApplyMerge(reference, ToReference(increment));
            ASSERT_TRUE(merge.Build(full, increment));
            full = merge.GetResult();
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(ToReference(full), reference)) << "step " << step;
        }
    }
}

TEST(IncrementHistory, SquashedIncrementsFollowTheReferenceAtEveryStep) {
    for (std::uint32_t const seed : {4u, 5u, 6u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Squash squash;
        std::vector<char> all;
        Reference reference;
        for (std::uint32_t step = 1; step <= 15; ++step) {
            auto const increment = WriteArbitraryIncrement(random, step);
            ApplySquash(reference, ToReference(increment));
            ASSERT_TRUE(squash.Build(all, increment));
            all = squash.GetResult();
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(ToReference(all), reference)) << "step " << step;
        }
    }
}

TEST(IncrementHistory, MergingASquashedIncrementIsMergingBothInTurn) {
    for (std::uint32_t const seed : {7u, 8u, 9u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Merge merge;
        Squash squash;
        std::vector<char> inTurn;
        ASSERT_TRUE(merge.Build({}, WriteConsistentIncrement(random, 1, {})));
        inTurn = merge.GetResult();
        std::vector<char> const start = inTurn;
        std::vector<char> all;
        for (std::uint32_t step = 2; step <= 10; ++step) {
            auto const increment = WriteConsistentIncrement(random, step, ToReference(inTurn));
            ASSERT_TRUE(merge.Build(inTurn, increment));
            inTurn = merge.GetResult();
            ASSERT_TRUE(squash.Build(all, increment));
            all = squash.GetResult();
            ASSERT_TRUE(merge.Build(start, all));
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(ToReference(merge.GetResult()), ToReference(inTurn)))
                << "step " << step;
        }
    }
}

}  // namespace
