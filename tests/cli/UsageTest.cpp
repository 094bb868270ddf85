#include "cli/Program.h"

#include <regex>

namespace Quorlan::Testing {
namespace {

std::vector<std::string> const kCommands = {
    "sample", "import", "info",   "validate", "boxes",  "placements", "quantities", "lod",     "lines", "mesh",
    "export", "pick",   "render", "merge",    "squash", "extract",    "combine",    "resolve", "guid",  "diff"};

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

TEST(Usage, TheCommandReferenceIsWhatTheProgramWrites) {
    auto const bytes = ReadBytes(QUORLAN_COMMAND_REFERENCE);
    auto const written = RunQuorlan({"reference"});
    EXPECT_EQ(written.exitCode, 0) << written.err;
    EXPECT_TRUE(std::string(bytes.begin(), bytes.end()) == written.out)
        << "the program has changed: quorlan reference >docs/commands.md (texts: apps/quorlan/reference)";
}

TEST(Usage, ReferencePageAndCompletionNameEveryOptionOfTheHelp) {
    auto const reference = RunQuorlan({"reference"}).out;
    auto const completion = RunQuorlan({"reference", "--format", "bash"}).out;
    auto const page = std::regex_replace(RunQuorlan({"reference", "--format", "man"}).out, std::regex(R"(\\-)"), "-");
    std::regex const option("\n  (-[a-z],)?(--[a-z-]+)");
    for (auto const& command : kCommands) {
        auto const help = RunQuorlan({command, "--help"}).out;
        for (std::sregex_iterator i(help.begin(), help.end(), option), end; i != end; ++i) {
            auto const name = (*i)[2].str();
            for (auto const& text : {reference, completion, page}) {
                EXPECT_NE(text.find(name), std::string::npos) << command << " " << name;
            }
        }
        EXPECT_NE(reference.find("\n## " + command + "\n"), std::string::npos) << command;
        EXPECT_NE(page.find("\n.SS quorlan " + command), std::string::npos) << command;
        EXPECT_NE(completion.find("\n        " + command + ") "), std::string::npos) << command;
    }
}

TEST(Usage, EveryCommandHasATextOfItsOwn) {
    auto const reference = RunQuorlan({"reference"}).out;
    for (auto const& command : kCommands) {
        auto const begin = reference.find("\n## " + command + "\n");
        auto const end = reference.find("\n## ", begin + 1);
        auto const section = reference.substr(begin, end - begin);
        auto const lastTable = section.rfind(" |\n");
        EXPECT_GT(section.size() - lastTable, 20u) << section;
    }
}

TEST(Usage, TheReferenceIsNoCommandOfTheHelp) {
    EXPECT_EQ(RunQuorlan({"--help"}).out.find("\n  reference "), std::string::npos);
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
        {"reference", "--format", "html"},
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
