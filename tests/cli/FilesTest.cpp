#include "cli/Program.h"

#include <filesystem>

/// What goes wrong with files: one clear line, exit code 1, nothing left behind, nothing overwritten.
namespace Quorlan::Testing {
namespace {

namespace fs = std::filesystem;

class Files : public ProgramTest {
protected:
    /// Calls every command that reads a model; those that write get an output in the folder.
    std::vector<ProgramRun> ReadWithEveryCommand(std::string const& path) const {
        return {RunQuorlan({"info", path}), RunQuorlan({"boxes", path}), RunQuorlan({"placements", path}),
                RunQuorlan({"pick", path, "--pixel", "1,1"}),
                RunQuorlan({"render", path, "-o", PathOf("out.png"), "--size", "4x4"})};
    }

    void ExpectEveryCommandFails(std::string const& path, std::string const& reason) const {
        auto const before = GetFiles();
        for (auto const& run : ReadWithEveryCommand(path)) ExpectFailure(run, {path, reason});
        EXPECT_EQ(GetFiles(), before);
    }
};

TEST_F(Files, AMissingInput) { ExpectEveryCommandFails(PathOf("none.qln"), "No such file"); }

TEST_F(Files, ADirectoryAsInput) {
    fs::create_directory(PathOf("folder.qln"));
    ExpectEveryCommandFails(PathOf("folder.qln"), "is a directory");
}

TEST_F(Files, AnEmptyInput) {
    WriteBytes(PathOf("empty.qln"), {});
    ExpectEveryCommandFails(PathOf("empty.qln"), "is empty");
}

TEST_F(Files, AnInputThatIsNoModel) {
    std::string const text = "ISO-10303-21;\nHEADER;\n";
    WriteBytes(PathOf("text.qln"), {text.begin(), text.end()});
    ExpectEveryCommandFails(PathOf("text.qln"), "");
}

TEST_F(Files, ATruncatedModel) {
    auto bytes = ReadBytes(WriteTwoCubes());
    bytes.resize(bytes.size() / 2);
    WriteBytes(PathOf("short.qln"), bytes);
    ExpectEveryCommandFails(PathOf("short.qln"), "");
}

TEST_F(Files, AFlippedByteInTheIdentifier) {
    auto bytes = ReadBytes(WriteTwoCubes());
    bytes[5] = static_cast<char>(bytes[5] ^ 0x20);
    WriteBytes(PathOf("flipped.qln"), bytes);
    ExpectEveryCommandFails(PathOf("flipped.qln"), "");
}

TEST_F(Files, AFlippedByteAnywhereDoesNoHarm) {
    auto const good = ReadBytes(WriteTwoCubes());
    auto const path = PathOf("flipped.qln");
    for (std::size_t i = 0; i < good.size(); i += 151) {
        auto bytes = good;
        bytes[i] = static_cast<char>(bytes[i] ^ 0x81);
        WriteBytes(path, bytes);
        auto const run = RunQuorlan({"pick", path, "--pixel", "5,5", "--size", "9x9"});
        EXPECT_TRUE(run.exitCode == 0 || run.exitCode == 1) << "byte " << i << ": " << run.exitCode << run.err;
    }
}

TEST_F(Files, AnOutputInAFolderThatIsNotThere) {
    ExpectFailure(RunQuorlan({"sample", "-o", PathOf("none/a.qln")}), {"none/a.qln", "no folder"});
}

TEST_F(Files, ADirectoryAsOutput) {
    fs::create_directory(PathOf("folder"));
    ExpectFailure(RunQuorlan({"sample", "-o", PathOf("folder")}), {"folder", "directory"});
    EXPECT_EQ(GetFiles(), std::vector<std::string>{"folder"});
}

TEST_F(Files, AFullDisk) { ExpectFailure(RunQuorlan({"sample", "-o", "/dev/full"}), {"/dev/full", "No space left"}); }

TEST_F(Files, AFolderThatCannotBeWrittenTo) {
    ExpectFailure(RunQuorlan({"sample", "-o", "/proc/a.qln"}), {"/proc/a.qln", "cannot be written"});
}

TEST_F(Files, TheInputIsNotOverwrittenByAnyOfItsNames) {
    auto const path = WriteTwoCubes();
    auto const good = ReadBytes(path);
    fs::create_symlink(path, PathOf("symbolic.png"));
    fs::create_hard_link(path, PathOf("hard.png"));
    for (auto const& output : {path, PathOf("symbolic.png"), PathOf("hard.png"), PathOf("./cubes.qln")}) {
        ExpectFailure(RunQuorlan({"render", path, "-o", output, "--size", "4x4"}), {output, "input"});
    }
    EXPECT_EQ(ReadBytes(path), good);
}

TEST_F(Files, NoCommandOverwritesAnInput) {
    auto const path = WriteTwoCubes();
    auto const other = WriteSample();
    auto const good = ReadBytes(path);
    fs::create_symlink("cubes.qln", PathOf("link.qln"));
    std::vector<std::vector<std::string>> const commands = {
        {"merge", path, other},
        {"merge", other, path},
        {"squash", path, other},
        {"squash", other, path},
        {"diff", path, other},
        {"diff", other, path},
        {"extract", path, "--entity", kNearGuid},
        {"combine", other, path},
        {"export", path},
        {"mesh", path, "--definition", "0"},
        {"render", path, "--size", "4x4"},
    };
    for (auto command : commands) {
        SCOPED_TRACE(command[0]);
        command.insert(command.end(), {"-o", PathOf("link.qln")});
        ExpectFailure(RunQuorlan(command), {"link.qln", "input"});
    }
    EXPECT_EQ(ReadBytes(path), good);
    EXPECT_EQ(GetFiles(), (std::vector<std::string>{"cubes.qln", "link.qln", "sample.qln"}));
}

TEST_F(Files, PictureAndLegendAreTwoFiles) {
    WriteBytes(PathOf("a.png"), {});
    auto const run = RunQuorlan({"render", WriteTwoCubes(), "-o", PathOf("a.png"), "--size", "4x4", "--color", "entity",
                                 "--legend", PathOf("a.png")});
    ExpectFailure(run, {"a.png"});
}

TEST_F(Files, AnOutputThatIsALinkKeepsTheLink) {
    fs::create_symlink("real.qln", PathOf("link.qln"));
    ASSERT_EQ(RunQuorlan({"sample", "--storeys", "1", "-o", PathOf("link.qln")}).exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(PathOf("link.qln")));
    EXPECT_GT(fs::file_size(PathOf("real.qln")), 1000u);
}

TEST_F(Files, AReplacedOutputKeepsItsPermissions) {
    WriteBytes(PathOf("a.qln"), {});
    fs::permissions(PathOf("a.qln"), fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_EQ(RunQuorlan({"sample", "--storeys", "1", "-o", PathOf("a.qln")}).exitCode, 0);
    EXPECT_EQ(fs::status(PathOf("a.qln")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Files, ADeviceIsWrittenToNotReplaced) {
    ASSERT_EQ(RunQuorlan({"sample", "--storeys", "1", "-o", "/dev/null"}).exitCode, 0);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace Quorlan::Testing
