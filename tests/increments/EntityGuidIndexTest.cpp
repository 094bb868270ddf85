#include "increments/EntityGuidIndex.h"

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using namespace Quorlan::Tools::Increments;
using Action = OwnerHistoryChangeAction;

EntityGuidIndex IndexOf(ModelBuilder const& builder) {
    return EntityGuidIndex(ModelStorage::FromBuffer(builder.Create()).GetModelReader());
}

TEST(EntityGuidIndex, HashIsTheTwoHalvesFnv1aExclusiveOr) {
    _GUID const guid = MakeGuid(0xDEADBEEF);
    unsigned char bytes[16];
    std::memcpy(bytes, &guid, 16);
    std::uint64_t halves[2] = {14695981039346656037u, 14695981039346656037u};
    for (int i = 0; i < 16; ++i) {
        halves[i / 8] ^= bytes[i];
        halves[i / 8] *= 1099511628211u;
    }
    EXPECT_EQ(HashGuid(guid), halves[0] ^ halves[1]);
    EXPECT_EQ(HashGuid({}), 0u);
}

TEST(EntityGuidIndex, EmptyModelHasNoEntries) {
    EntityGuidIndex const index = IndexOf(ModelBuilder());
    EXPECT_TRUE(index.GetEntries().empty());
    EXPECT_EQ(index.Find(MakeGuid(1)), nullptr);
}

TEST(EntityGuidIndex, LastLinkOfAnEntityWins) {
    ModelBuilder builder;
    auto& histories = builder.GetOwnerHistoryWriter();
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    for (Action const action : {Action::DELETED, Action::ADDED, Action::MODIFIED}) {
        std::uint32_t const record = histories.AddOwnerHistoryRecord({0, action, 0, 0});
        histories.LinkOwnerHistory(entity, histories.AddOwnerHistory(histories.AddOwnerPart({}), record, {}));
    }
    EXPECT_EQ(IndexOf(builder).Find(MakeGuid(1))->action, Action::MODIFIED);
}

TEST(EntityGuidIndex, EntityWithoutLinkAndLinkThatLeadsNowhereCountAsNoChange) {
    ModelBuilder builder;
    builder.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntity(MakeGuid(2), {}, {});
    builder.GetOwnerHistoryWriter().LinkOwnerHistory(entity, 99);
    builder.GetOwnerHistoryWriter().LinkOwnerHistory(EntityIndex_t{99}, 0);
    EntityGuidIndex const index = IndexOf(builder);
    EXPECT_EQ(index.Find(MakeGuid(1))->action, Action::NOCHANGE);
    EXPECT_EQ(index.Find(MakeGuid(2))->action, Action::NOCHANGE);
}

TEST(EntityGuidIndex, FirstEntityOfAGuidWinsWithItsOwnAction) {
    ModelBuilder builder;
    SceneWriter writer(builder);
    writer.AddBareEntity(1, Action::ADDED);
    writer.AddBareEntity(1, Action::DELETED);
    EntityGuidIndex const index = IndexOf(builder);
    ASSERT_EQ(index.GetEntries().size(), 1u);
    EXPECT_EQ(index.GetEntries()[0].action, Action::ADDED);
    EXPECT_EQ(index.GetEntries()[0].entity, EntityIndex_t{0});
}

TEST(EntityGuidIndex, SkipsEntitiesOfOtherKindsAndKeepsTheOrderOfTheModel) {
    ModelBuilder builder;
    auto& entities = builder.GetEntityWriter();
    entities.AddEntityWithIdentifierText("text", {}, {});
    entities.AddEntity(MakeGuid(7), {}, {});
    entities.AddEntityWithGeometricKey({}, {}, {});
    entities.AddEntity(MakeGuid(3), {}, {});
    entities.AddEntityWithoutIdentifier({}, {});
    EntityGuidIndex const index = IndexOf(builder);
    ASSERT_EQ(index.GetEntries().size(), 2u);
    EXPECT_EQ(index.GetEntries()[0].entity, EntityIndex_t{1});
    EXPECT_EQ(index.GetEntries()[1].entity, EntityIndex_t{3});
}

TEST(EntityGuidIndex, GuidsWhoseHashesAllCollideAreFoundQuickly) {
    ModelBuilder builder;
    auto const makeEqualHalves = [](std::uint32_t n) {
        _GUID guid{n, 5, 6, {}};
        std::memcpy(guid.Data4, &guid, 8);
        return guid;
    };
    for (std::uint32_t n = 0; n < 50000; ++n) builder.GetEntityWriter().AddEntity(makeEqualHalves(n), {}, {});
    EntityGuidIndex const index = IndexOf(builder);
    ASSERT_EQ(index.GetEntries().size(), 50000u);
    for (std::uint32_t n = 0; n < 50000; ++n) {
        ASSERT_EQ(HashGuid(makeEqualHalves(n)), 0u);
        ASSERT_EQ(index.Find(makeEqualHalves(n))->entity, EntityIndex_t{n});
    }
    EXPECT_EQ(index.Find(makeEqualHalves(50000)), nullptr);
}

TEST(EntityGuidIndex, AgreesWithAnOrderedMapOnRandomGuids) {
    constexpr std::uint32_t kSeed = 20;
    SCOPED_TRACE("seed 20");
    std::mt19937 random(kSeed);
    ModelBuilder builder;
    std::map<_GUID, EntityIndex_t, GuidLess> expected;
    std::vector<_GUID> guids;
    for (std::uint32_t i = 0; i < 3000; ++i) {
        _GUID guid = MakeGuid(static_cast<std::uint32_t>(random() % 1000));
        if (random() % 2 == 0) guid.Data4[random() % 8] = static_cast<unsigned char>(random());
        guids.push_back(guid);
        expected.emplace(guid, builder.GetEntityWriter().AddEntity(guid, {}, {}));
    }
    EntityGuidIndex const index = IndexOf(builder);
    EXPECT_EQ(index.GetEntries().size(), expected.size());
    for (_GUID const& guid : guids) EXPECT_EQ(index.Find(guid)->entity, expected.at(guid));
    for (std::uint32_t n = 1000; n < 2000; ++n) EXPECT_EQ(index.Find(MakeGuid(n)), nullptr);
}

}  // namespace
