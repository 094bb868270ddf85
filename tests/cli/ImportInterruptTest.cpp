#include "cli/Program.h"
#include "cli/import/SmallIfc.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

/// The import runs in a process of its own. An interrupt of the program ends both, and leaves nothing behind.
namespace Quorlan::Testing {
namespace {

/// The processes whose parent is `parent`.
std::vector<int> GetChildren(int parent) {
    std::vector<int> children;
    for (auto const& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        int process = 0, itsParent = 0;
        std::string name, state;
        if (stat >> process >> name >> state >> itsParent && itsParent == parent) children.push_back(process);
    }
    return children;
}

class ImportInterrupt : public ProgramTest {
protected:
    /// So that a process that outlives the program becomes ours.
    ImportInterrupt() { prctl(PR_SET_CHILD_SUBREAPER, 1); }
    ~ImportInterrupt() override { prctl(PR_SET_CHILD_SUBREAPER, 0); }

    /// A file that takes far longer to import than a signal takes to come.
    std::string WriteManyWalls() const {
        SmallIfc file;
        for (int wall = 1; wall <= 4000; ++wall) {
            file.AddWall(wall, file.AddShape(file.AddBox(1000, 200, 100 + wall)),
                         file.AddPlacement(0, 300.0 * wall, 0));
        }
        auto const text = file.GetText();
        WriteBytes(PathOf("walls.ifc"), {text.begin(), text.end()});
        return PathOf("walls.ifc");
    }

    /// Sends the signal a little after the import has begun in its own process.
    ProgramRun Interrupt(int signal) const {
        return InterruptQuorlan({"import", PathOf("walls.ifc"), "-o", PathOf("model.qln")}, signal, [] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            auto const programs = GetChildren(getpid());
            return !programs.empty() && !GetChildren(programs.front()).empty();
        });
    }

    void ExpectNothingLeft() const {
        EXPECT_EQ(GetFiles(), std::vector<std::string>{"walls.ifc"});
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }
};

TEST_F(ImportInterrupt, EndsBothProcessesAndLeavesNothing) {
    WriteManyWalls();
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        auto const run = Interrupt(signal);
        EXPECT_EQ(run.exitCode, -signal);
        EXPECT_EQ(run.err, "quorlan: interrupted\n");
        EXPECT_EQ(run.out, "");
        ExpectNothingLeft();
    }
}

TEST_F(ImportInterrupt, AKilledProgramTakesItsImportAlong) {
    WriteManyWalls();
    EXPECT_EQ(Interrupt(SIGKILL).exitCode, -SIGKILL);
    EXPECT_GT(waitpid(-1, nullptr, 0), 0);  // what was left of it ends at once and by itself
    ExpectNothingLeft();
}

}  // namespace
}  // namespace Quorlan::Testing
