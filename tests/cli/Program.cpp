#include "cli/Program.h"

#include <Quorlan/ModelBuilder.h>
#include <fcntl.h>
#include <sample/SampleBuilding.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

extern char** environ;

namespace Quorlan::Testing {
namespace {

namespace fs = std::filesystem;

std::string MakeTemporaryFile(std::string const& name) {
    auto pattern = (fs::temp_directory_path() / (name + "-XXXXXX")).string();
    int const file = mkstemp(pattern.data());
    if (file < 0) throw std::runtime_error("no temporary file");
    close(file);
    return pattern;
}

/// Reads a file and removes it.
std::string TakeText(std::string const& path) {
    auto const bytes = ReadBytes(path);
    fs::remove(path);
    return {bytes.begin(), bytes.end()};
}

FacetedBRep MakeCube() {
    FacetedBRep cube;
    for (unsigned i = 0; i < 8; ++i) cube.vertices.push_back({double(i & 1), double(i >> 1 & 1), double(i >> 2)});
    cube.faces = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {3, 2, 6, 7}, {2, 0, 4, 6}, {1, 3, 7, 5}};
    return cube;
}

AffineTransform MoveTo(double x, double y) {
    AffineTransform transform;
    transform.matrix(0, 3) = x;
    transform.matrix(1, 3) = y;
    return transform;
}

/// Runs a program, calls `meanwhile` with its process and waits for its end.
ProgramRun Run(std::string const& program, std::vector<std::string> const& arguments, std::string const& stdoutPath,
               std::function<void(pid_t)> const& meanwhile = {}) {
    auto const out = stdoutPath.empty() ? MakeTemporaryFile("quorlan-out") : stdoutPath;
    auto const err = MakeTemporaryFile("quorlan-err");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY, 0);
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (auto const& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    pid_t child = 0;
    int const failed = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::runtime_error("cannot start " + program);
    if (meanwhile) meanwhile(child);
    int status = 0;
    waitpid(child, &status, 0);
    ProgramRun run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    if (stdoutPath.empty()) run.out = TakeText(out);
    run.err = TakeText(err);
    return run;
}

}  // namespace

char const* const kNearGuid = "00000000000000000000G1";
char const* const kFarGuid = "00000000000000000000G2";

ProgramRun RunQuorlan(std::vector<std::string> const& arguments, std::string const& stdoutPath) {
    return Run(QUORLAN_PROGRAM, arguments, stdoutPath);
}

ProgramRun RunQuorlanUnder(std::string const& limits, std::vector<std::string> const& arguments) {
    std::vector<std::string> shellArguments = {"-c", limits + "; exec \"$0\" \"$@\"", QUORLAN_PROGRAM};
    shellArguments.insert(shellArguments.end(), arguments.begin(), arguments.end());
    return Run("/bin/sh", shellArguments, {});
}

ProgramRun InterruptQuorlan(std::vector<std::string> const& arguments, int signal,
                            std::function<bool()> const& isTime) {
    return Run(QUORLAN_PROGRAM, arguments, {}, [&](pid_t child) {
        siginfo_t info{};
        while (info.si_pid == 0 && !isTime())
            waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT);
        if (info.si_pid == 0) kill(child, signal);
    });
}

std::vector<char> ReadBytes(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(std::string const& path, std::vector<char> const& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::string> ProgramTest::GetFiles() const {
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ProgramTest::WriteTwoCubes(double x) const {
    ModelBuilder builder;
    auto const cube = builder.GetGeometryDefinitionBuilder().AddBRep(MakeCube());
    auto const red = builder.GetMaterialWriter().AddMaterial({{200, 40, 40, 255}, -1, false});
    auto const blue = builder.GetMaterialWriter().AddMaterial({{40, 40, 200, 255}, -1, false});
    auto const walls = builder.GetLayerWriter().AddLayer("Walls");
    auto const doors = builder.GetLayerWriter().AddLayer("Doors");
    _GUID guid{};
    guid.Data4[6] = 4;  // 22 characters of base 64, the last two of which these are
    guid.Data4[7] = 1;
    auto const near = builder.GetEntityWriter().AddEntity(guid, L"near", MoveTo(x, 0));
    guid.Data4[7] = 2;
    auto const far = builder.GetEntityWriter().AddEntity(guid, L"far, \"behind\"", MoveTo(x, 5));
    builder.GetInstanceWriter().AddInstance(near, cube, red, walls, {});
    builder.GetInstanceWriter().AddInstance(far, cube, blue, doors, {});
    auto const path = PathOf("cubes.qln");
    WriteBytes(path, builder.Create());
    return path;
}

std::string ProgramTest::WriteSample() const {
    QuorlanSample::SampleOptions options;
    options.storeys = 1;
    auto const path = PathOf("sample.qln");
    WriteBytes(path, QuorlanSample::BuildSampleBuilding(options));
    return path;
}

void ExpectFailure(ProgramRun const& run, std::vector<std::string> const& parts) {
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(run.err.rfind("quorlan: ", 0), 0u) << run.err;
    for (auto const& part : parts) EXPECT_NE(run.err.find(part), std::string::npos) << part << "\n" << run.err;
}

}  // namespace Quorlan::Testing
