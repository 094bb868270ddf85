#include "cli/Program.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/Identifiers.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <gmock/gmock.h>

/// The commands guid, merge, squash and extract.
namespace Quorlan::Testing {
namespace {

using ::testing::HasSubstr;
using Tools::Increments::IncrementModelBuilder;

_GUID GuidOf(char const* text) {
    _GUID guid{};
    EXPECT_TRUE(Tools::IfcGuidToGuid(text, guid));
    return guid;
}

std::vector<std::string> GuidsOf(std::string const& path) {
    auto const storage = ModelStorage::FromBuffer(ReadBytes(path));
    EXPECT_FALSE(storage.HasError());
    auto const& entities = storage.GetModelReader().GetEntities();
    std::vector<std::string> guids(entities.GetCount());
    EntityIdentifier identifier;
    for (std::uint32_t i = 0; i < guids.size(); ++i) {
        entities.GetGuidText(guids[i], entities.GetIdentifier(identifier, i).reference);
    }
    return guids;
}

class Changes : public ProgramTest {
protected:
    std::string WriteDeletion(std::string const& name, char const* guid) const {
        IncrementModelBuilder builder;
        builder.AddAsDeleted({GuidOf(guid)});
        WriteBytes(PathOf(name), builder.GetResult());
        return PathOf(name);
    }

    /// An increment that says `action` of the first of the two cubes.
    std::string WriteChange(std::string const& name, OwnerHistoryChangeAction action) const {
        auto const storage = ModelStorage::FromBuffer(ReadBytes(WriteTwoCubes()));
        IncrementModelBuilder builder;
        builder.Add(storage.GetModelReader(), {{action, EntityIndex_t{0}}});
        WriteBytes(PathOf(name), builder.GetResult());
        return PathOf(name);
    }
};

TEST_F(Changes, GuidGivesTheOtherForm) {
    auto const run = RunQuorlan({"guid", "00000000000000000000G1", "00000000-0000-0000-0000-000000000402",
                                 "{FFFFFFFF-0000-0000-0000-000000000000}"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "00000000-0000-0000-0000-000000000401\n00000000000000000000G2\n3$$$$$0000000000000000\n");
}

TEST_F(Changes, GuidRefusesWhatIsNone) {
    for (std::string const text : {"", "00000000000000000000G", "00000000000000000000G-", "4000000000000000000000",
                                   "00000000-0000-0000-0000-00000000040", "00000000-0000-0000-0000-00000000040x",
                                   "00000000x0000-0000-0000-000000000402"}) {
        ExpectFailure(RunQuorlan({"guid", "00000000000000000000G1", text}), {"'" + text + "'", "no GUID"});
    }
}

TEST_F(Changes, MergeDropsWhatTheIncrementDeletes) {
    auto const run = RunQuorlan({"merge", WriteTwoCubes(), WriteDeletion("i.qln", kNearGuid), "-o", PathOf("out.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(GuidsOf(PathOf("out.qln")), std::vector<std::string>{kFarGuid});
}

TEST_F(Changes, MergeRefusesItsInputsAsOutput) {
    auto const full = WriteTwoCubes();
    auto const increment = WriteDeletion("i.qln", kNearGuid);
    ExpectFailure(RunQuorlan({"merge", full, increment, "-o", full}), {"input"});
    ExpectFailure(RunQuorlan({"merge", full, increment, "-o", increment}), {"input"});
}

TEST_F(Changes, SquashPrintsWhatTheTwoIncrementsDeleteAndModify) {
    auto const first = WriteChange("first.qln", OwnerHistoryChangeAction::MODIFIED);
    auto const second = WriteDeletion("second.qln", kFarGuid);
    auto const run = RunQuorlan({"squash", first, second, "-o", PathOf("both.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, std::string("deleted ") + kFarGuid + "\nmodified " + kNearGuid + "\n");
    EXPECT_EQ(GuidsOf(PathOf("both.qln")), (std::vector<std::string>{kNearGuid, kFarGuid}));
}

TEST_F(Changes, SquashOfAddedAndDeletedIsEmpty) {
    auto const first = WriteChange("first.qln", OwnerHistoryChangeAction::ADDED);
    auto const run = RunQuorlan({"squash", first, WriteDeletion("second.qln", kNearGuid), "-o", PathOf("both.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(GuidsOf(PathOf("both.qln")).empty());
}

TEST_F(Changes, ExtractTakesEntitiesWithAllTheyHave) {
    auto const model = WriteTwoCubes(2);
    auto const run =
        RunQuorlan({"extract", model, "--entity", "00000000-0000-0000-0000-000000000402", "-o", PathOf("far.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "1 of 2 entities\n");
    EXPECT_EQ(GuidsOf(PathOf("far.qln")), std::vector<std::string>{kFarGuid});
    auto const boxes = nlohmann::json::parse(RunQuorlan({"boxes", PathOf("far.qln"), "--format", "json"}).out);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0]["minX"], 2);
    EXPECT_EQ(boxes[0]["minY"], 5);
    auto const layers = RunQuorlan({"quantities", PathOf("far.qln"), "--by", "layer"}).out;
    EXPECT_THAT(layers, HasSubstr("Doors"));
}

TEST_F(Changes, ExtractKeepsTheOrderOfTheModelAndTakesEachEntityOnce) {
    auto const run =
        RunQuorlan({"extract", WriteTwoCubes(), "--entity", kFarGuid, kNearGuid, kFarGuid, "-o", PathOf("both.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(GuidsOf(PathOf("both.qln")), (std::vector<std::string>{kNearGuid, kFarGuid}));
}

TEST_F(Changes, ExtractOfAnEntityThatIsNotThereIsAnError) {
    auto const model = WriteTwoCubes();
    ExpectFailure(RunQuorlan({"extract", model, "--entity", "0000000000000000000000", "-o", PathOf("out.qln")}),
                  {"cubes.qln", "no entity 0000000000000000000000"});
    ExpectFailure(RunQuorlan({"extract", model, "--entity", "near", "-o", PathOf("out.qln")}), {"'near'", "no GUID"});
    EXPECT_EQ(GetFiles(), std::vector<std::string>{"cubes.qln"});
}

}  // namespace
}  // namespace Quorlan::Testing
