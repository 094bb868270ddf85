#include "cli/Program.h"

#include <regex>

namespace Quorlan::Testing {
namespace {

std::vector<std::string> const kCommands = {
    "sample", "info",   "validate", "boxes",  "placements", "quantities", "lod",     "lines", "mesh", "export",
    "pick",   "render", "merge",    "squash", "extract",    "combine",    "resolve", "guid",  "diff"};

TEST(Usage, VersionIsTheProjects) {
    auto const run = RunQuorlan({"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "quorlan " QUORLAN_VERSION "\n");
}

TEST(Usage, HelpNamesEveryCommandAndEveryCommandHasHelp) {
    auto const help = RunQuorlan({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (auto const& command : kCommands) {
        EXPECT_NE(help.out.find("\n  " + command + " "), std::string::npos) << command;
        auto const run = RunQuorlan({command, "--help"});
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_NE(run.out.find("Usage: quorlan " + command), std::string::npos) << run.out;
        EXPECT_EQ(run.err, "");
    }
}

TEST(Usage, TheCommandReferenceNamesEveryOption) {
    auto const bytes = ReadBytes(QUORLAN_COMMAND_REFERENCE);
    std::string const reference(bytes.begin(), bytes.end());
    std::regex const option("--[a-z][a-z-]*");
    for (auto const& command : kCommands) {
        EXPECT_NE(reference.find("quorlan " + command + " "), std::string::npos) << command;
        auto const help = RunQuorlan({command, "--help"}).out;
        for (std::sregex_iterator i(help.begin(), help.end(), option), end; i != end; ++i) {
            EXPECT_NE(reference.find(i->str()), std::string::npos) << command << " " << i->str();
        }
    }
}

TEST(Usage, WrongUsageGivesTheReasonAndTheUsage) {
    std::vector<std::vector<std::string>> const wrong = {
        {},
        {"bogus"},
        {"--bogus"},
        {"info"},
        {"info", "a.qln", "b.qln"},
        {"info", "a.qln", "--format", "xml"},
        {"boxes", "a.qln", "--format", "text"},
        {"sample"},
        {"sample", "-o", "a.qln", "--storeys", "0"},
        {"sample", "-o", "a.qln", "--storeys", "1001"},
        {"sample", "-o", "a.qln", "--storeys", "two"},
        {"sample", "-o", "a.qln", "--origin", "1,2"},
        {"sample", "-o", "a.qln", "--origin", "1,2,x"},
        {"sample", "-o", "a.qln", "--origin", "1,2,3,4"},
        {"sample", "-o", "a.qln", "--origin", "1,2,nan"},
        {"pick", "a.qln"},
        {"pick", "a.qln", "--pixel", "1"},
        {"pick", "a.qln", "--pixel", "1,2", "--size", "0x10"},
        {"pick", "a.qln", "--pixel", "1,2", "--size", "10x1.5"},
        {"pick", "a.qln", "--pixel", "1,2", "--view", "side"},
        {"pick", "a.qln", "--pixel", "1,2", "--eye", "1,2,3"},
        {"pick", "a.qln", "--pixel", "1,2", "--fov", "180"},
        {"pick", "a.qln", "--pixel", "1,2", "--fov", "60", "--ortho", "1"},
        {"pick", "a.qln", "--pixel", "1,2", "--ortho", "0"},
        {"pick", "a.qln", "--pixel", "1,2", "--view", "top", "--eye", "1,2,3", "--target", "0,0,0"},
        {"pick", "a.qln", "--pixel", "1,2", "--clip", "1,2,3"},
        {"pick", "a.qln", "--pixel", "1,2", "--edges", "--lines"},
        {"pick", "a.qln", "--pixel", "1,2", "--edges", "--tolerance", "0"},
        {"pick", "a.qln", "--pixel", "1,2", "--tolerance", "5"},
        {"render", "a.qln"},
        {"render", "a.qln", "-o", "a.png", "--snap", "1"},
        {"render", "a.qln", "-o", "a.png", "--samples", "0"},
        {"render", "a.qln", "-o", "a.png", "--samples", "257"},
        {"render", "a.qln", "-o", "a.png", "--picked", "--samples", "4"},
        {"render", "a.qln", "-o", "a.png", "--color", "entity", "--snap", "1,2"},
        {"render", "a.qln", "-o", "a.png", "--color", "entity", "--edges"},
        {"render", "a.qln", "-o", "a.png", "--color", "mood"},
        {"render", "a.qln", "-o", "a.png", "--legend", "a.json"},
        {"guid"},
        {"merge", "a.qln", "-o", "b.qln"},
        {"merge", "a.qln", "b.qln"},
        {"squash", "a.qln", "b.qln"},
        {"diff", "a.qln", "b.qln"},
        {"diff", "a.qln", "b.qln", "-o", "c.qln", "--report", "xml"},
        {"diff", "a.qln", "b.qln", "-o", "c.qln", "--tolerance", "-1"},
        {"extract", "a.qln", "-o", "b.qln"},
    };
    for (auto const& arguments : wrong) {
        auto const run = RunQuorlan(arguments);
        auto const call = testing::PrintToString(arguments);
        EXPECT_EQ(run.exitCode, 2) << call << run.err;
        EXPECT_EQ(run.out, "") << call;
        EXPECT_EQ(run.err.rfind("quorlan: ", 0), 0u) << call << run.err;
        EXPECT_NE(run.err.find("\nUsage: quorlan"), std::string::npos) << call << run.err;
    }
}

}  // namespace
}  // namespace Quorlan::Testing
