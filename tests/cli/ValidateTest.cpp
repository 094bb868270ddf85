#include "cli/Program.h"
#include "support/RawModel.h"

#include <string>

/// The command that says whether a model is sound.
namespace Quorlan::Testing {
namespace {

using nlohmann::json;

class Validate : public ProgramTest {
protected:
    /// A model whose only instance names a material and a layer that are not there.
    std::string WriteBroken(std::size_t instanceCount = 1) const {
        RawModel model;
        auto const entity = model.AddEntity();
        auto const shape = model.AddDefinition({0, 0, 0}, {1, 1, 1});
        for (std::size_t i = 0; i < instanceCount; ++i) model.AddInstance(entity, shape, {}, 9, 5);
        WriteBytes(PathOf("broken model.qln"), model.Write());
        return PathOf("broken model.qln");
    }
};

TEST_F(Validate, ASoundModelGivesZero) {
    auto const path = WriteSample();
    auto const run = RunQuorlan({"validate", path});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, path + ": sound\n");
    EXPECT_EQ(run.err, "");
    auto const answer = json::parse(RunQuorlan({"validate", path, "--format", "json"}).out);
    EXPECT_EQ(answer["file"], path);
    EXPECT_EQ(answer["bytes"], ReadBytes(path).size());
    EXPECT_EQ(answer["sound"], true);
    EXPECT_EQ(answer["problems"], json::array());
    EXPECT_EQ(answer["complete"], true);
}

TEST_F(Validate, ProblemsAreNamedWithTheirPlace) {
    auto const path = WriteBroken();
    auto const run = RunQuorlan({"validate", path});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "instance 0: material index 9 of 0\ninstance 0: layer index 5 of 0\n" + path + ": 2 problems\n");
    auto const asJson = RunQuorlan({"validate", path, "--format", "json"});
    EXPECT_EQ(asJson.exitCode, 1);
    auto const answer = json::parse(asJson.out);
    EXPECT_EQ(answer["sound"], false);
    EXPECT_EQ(answer["problems"][0], "instance 0: material index 9 of 0");
    EXPECT_EQ(answer["problems"].size(), 2u);
}

TEST_F(Validate, SaysWhereItStoppedCounting) {
    auto const path = WriteBroken(200);
    auto const run = RunQuorlan({"validate", path});
    EXPECT_NE(run.out.find(": 100 problems or more\n"), std::string::npos);
    EXPECT_EQ(json::parse(RunQuorlan({"validate", path, "--format", "json"}).out)["complete"], false);
}

TEST_F(Validate, WhatIsNoModelIsAFinding) {
    WriteBytes(PathOf("text.qln"), {'h', 'e', 'l', 'l', 'o', ' ', 'y', 'o', 'u'});
    auto const run = RunQuorlan({"validate", PathOf("text.qln")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("no model buffer"), std::string::npos);
    auto const sample = ReadBytes(WriteSample());
    WriteBytes(PathOf("cut.qln"), {sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(sample.size() / 2)});
    EXPECT_NE(RunQuorlan({"validate", PathOf("cut.qln")}).out.find("damaged or truncated"), std::string::npos);
}

TEST_F(Validate, AMissingFileIsAFailure) {
    ExpectFailure(RunQuorlan({"validate", PathOf("missing.qln")}), {"missing.qln", "cannot be read"});
}

TEST_F(Validate, EveryCommandThatReadsModelsRefusesABrokenOne) {
    auto const path = WriteBroken();
    auto const out = PathOf("out");
    std::vector<std::vector<std::string>> const commands = {
        {"info", path},
        {"boxes", path},
        {"placements", path},
        {"quantities", path},
        {"lod", path},
        {"lines", path},
        {"mesh", path, "--definition", "0", "-o", out + ".obj"},
        {"export", path, "-o", out + ".glb"},
        {"pick", path, "--pixel", "1,2"},
        {"render", path, "-o", out + ".png"},
        {"diff", path, path, "-o", out + ".qln"},
        {"merge", path, path, "-o", out + ".qln"},
        {"squash", path, path, "-o", out + ".qln"},
        {"extract", path, "--entity", "0YvctVUKr0kugbFTf53O9L", "-o", out + ".qln"},
        {"combine", path, path, "-o", out + ".qln"},
        {"resolve", path, "0YvctVUKr0kugbFTf53O9L"},
    };
    for (auto const& command : commands) {
        SCOPED_TRACE(command[0]);
        ExpectFailure(RunQuorlan(command), {"broken model.qln", "instance 0: material index 9 of 0", "1 more"});
    }
    EXPECT_EQ(GetFiles(), std::vector<std::string>{"broken model.qln"});
}

}  // namespace
}  // namespace Quorlan::Testing
