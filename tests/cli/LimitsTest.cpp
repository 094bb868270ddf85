#include "cli/Program.h"
#include "support/Sanitizers.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>

/// What the system may refuse or end at any time: space, memory, pipes, the program itself. One clear line, nothing
/// half-written.
namespace Quorlan::Testing {
namespace {

namespace fs = std::filesystem;
using TestSupport::kHasSanitizer;

constexpr char kLittleMemory[] = "ulimit -v 400000";  ///< [KiB] four times what the program takes to start

class Limits : public ProgramTest {
protected:
    bool HasTemporary() const {
        for (auto const& name : GetFiles()) {
            if (name.find(".part") != std::string::npos) return true;
        }
        return false;
    }

    /// Ends the command as soon as its output is being written. RETURNS whether that came in time.
    bool InterruptWhileWriting(std::vector<std::string> const& command, int signal) const {
        auto const run = InterruptQuorlan(command, signal, [&] { return HasTemporary(); });
        EXPECT_FALSE(HasTemporary());
        if (run.exitCode == 0) return false;
        EXPECT_EQ(run.exitCode, -signal);
        EXPECT_EQ(run.err, "quorlan: interrupted\n");
        EXPECT_EQ(run.out, "");
        return true;
    }
};

TEST_F(Limits, AFileThatMayNotGrowLeavesNothing) {
    auto const run = RunQuorlanUnder("ulimit -f 16", {"sample", "-o", PathOf("a.qln")});
    ExpectFailure(run, {"a.qln", "File too large"});
    EXPECT_EQ(GetFiles(), std::vector<std::string>{});
}

TEST_F(Limits, AFileThatMayNotGrowKeepsTheEarlierOutput) {
    WriteBytes(PathOf("a.qln"), {'o', 'l', 'd'});
    ExpectFailure(RunQuorlanUnder("ulimit -f 16", {"sample", "-o", PathOf("a.qln")}), {"a.qln"});
    EXPECT_EQ(ReadBytes(PathOf("a.qln")), (std::vector<char>{'o', 'l', 'd'}));
    EXPECT_EQ(GetFiles(), std::vector<std::string>{"a.qln"});
}

TEST_F(Limits, AClosedPipeIsAFailureInOneLine) {
    auto const onClosedPipe = "(sleep 0.2; \"$0\" \"$@\"; echo \"exit $?\" >&2) | :; exit 0";
    auto const run = RunQuorlanUnder(onClosedPipe, {"boxes", WriteSample()});
    EXPECT_EQ(run.err, "quorlan: stdout: Broken pipe\nexit 1\n");
}

TEST_F(Limits, AFullDiskBehindStdoutIsAFailureInOneLine) {
    auto const run = RunQuorlan({"boxes", WriteTwoCubes()}, "/dev/full");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "quorlan: stdout: No space left on device\n");
}

TEST_F(Limits, AnInterruptLeavesAllOrNothing) {
    auto const output = PathOf("a.qln");
    std::vector<std::string> const command = {"sample", "--storeys", kHasSanitizer ? "6" : "100", "-o", output};
    ASSERT_EQ(RunQuorlan(command).exitCode, 0);
    auto const whole = ReadBytes(output);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        bool isHit = false;
        for (int attempt = 0; attempt < 40 && !isHit; ++attempt) {
            fs::remove(output);
            bool const isEnded = InterruptWhileWriting(command, signal);
            isHit = isEnded && !fs::exists(output);
            if (!isHit) {
                EXPECT_EQ(ReadBytes(output), whole);
            }
        }
        EXPECT_TRUE(isHit) << "the signal never came while the file was being written";
    }
}

TEST_F(Limits, AnIgnoredInterruptStaysIgnored) {
    auto const run = RunQuorlanUnder("trap '' INT; kill -INT $$", {"sample", "--storeys", "1", "-o", PathOf("a.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
}

// Every word in turn becomes a huge number: as a count, an offset, an index.
TEST_F(Limits, HugeCountsTakeNoMemory) {
    if (kHasSanitizer) GTEST_SKIP() << "a sanitizer reserves more address space than the limit";
    auto const good = ReadBytes(WriteTwoCubes());
    auto const path = PathOf("huge.qln");
    std::size_t refused = 0;
    for (std::size_t at = 0; at + 4 <= good.size(); at += 36) {
        auto bytes = good;
        std::uint32_t const huge = at % 72 == 0 ? 0x7FFFFFF0 : 0x10000000;
        std::memcpy(bytes.data() + at, &huge, sizeof(huge));
        WriteBytes(path, bytes);
        auto const run = RunQuorlanUnder(kLittleMemory, {"squash", path, path, "-o", PathOf("out.qln")});
        ASSERT_TRUE(run.exitCode == 0 || run.exitCode == 1) << at << ": " << run.exitCode << run.err;
        ASSERT_EQ(run.err.find("memory"), std::string::npos) << at;
        refused += run.exitCode == 1;
    }
    EXPECT_GT(refused, 5u);
}

TEST_F(Limits, TooLittleMemoryIsAFailureInOneLine) {
    if (kHasSanitizer) GTEST_SKIP() << "a sanitizer reserves more address space than the limit";
    WriteBytes(PathOf("large.qln"), {});
    fs::resize_file(PathOf("large.qln"), 800 << 20);  // a hole, not on the disk
    ExpectFailure(RunQuorlanUnder(kLittleMemory, {"info", PathOf("large.qln")}), {"not enough memory"});
}

TEST_F(Limits, PathsMayHaveSpacesAndAnyLetters) {
    auto const folder = PathOf("Häuser & Türme, 建物 'neu'");
    fs::create_directory(folder);
    auto const model = folder + "/ein Modell.qln";
    auto const picture = folder + "/ein Bild.png";
    ASSERT_EQ(RunQuorlan({"sample", "--storeys", "1", "-o", model}).exitCode, 0);
    EXPECT_EQ(RunQuorlan({"validate", model}).out, model + ": sound\n");
    EXPECT_EQ(RunQuorlan({"export", model, "-o", folder + "/größer.glb"}).exitCode, 0);
    EXPECT_EQ(RunQuorlan({"render", model, "-o", picture, "--size", "8x8"}).exitCode, 0);
    EXPECT_EQ(RunQuorlan({"squash", model, model, "-o", folder + "/zwei.qln"}).exitCode, 0);
    EXPECT_TRUE(fs::exists(folder + "/größer.glb") && fs::exists(picture) && fs::exists(folder + "/zwei.qln"));
    ExpectFailure(RunQuorlan({"info", folder + "/keins.qln"}), {folder + "/keins.qln"});
}

}  // namespace
}  // namespace Quorlan::Testing
