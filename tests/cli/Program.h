#pragma once

#include "support/FolderTest.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

/// Running the program as a user does.
namespace Quorlan::Testing {

struct ProgramRun {
    int exitCode = 0;  ///< minus the signal's number if one ended the program
    std::string out;
    std::string err;
};

/// Runs `quorlan` with the arguments. `stdoutPath`, if not empty, is opened as its stdout in place of a capture.
ProgramRun RunQuorlan(std::vector<std::string> const& arguments, std::string const& stdoutPath = {});

/// The same in a shell after the commands `limits` ("ulimit -v 100000").
ProgramRun RunQuorlanUnder(std::string const& limits, std::vector<std::string> const& arguments);

/// The same, with a signal as soon as `isTime`, unless it has ended before.
ProgramRun InterruptQuorlan(std::vector<std::string> const& arguments, int signal, std::function<bool()> const& isTime);

std::vector<char> ReadBytes(std::string const& path);
void WriteBytes(std::string const& path, std::vector<char> const& bytes);

class ProgramTest : public FolderTest {
protected:
    std::string PathOf(std::string const& name) const { return (folder_ / name).string(); }

    /// The names of all files in the folder, sorted: nothing may be left over beside the outputs.
    std::vector<std::string> GetFiles() const;

    /// Writes a model of two unit cubes: "near" at the origin on the layer "Walls", red; "far" at y = 5 on the layer
    /// "Doors", blue; all moved by `x`. Returns its path.
    std::string WriteTwoCubes(double x = 0) const;

    /// Writes the sample building of one storey. Returns its path.
    std::string WriteSample() const;
};

/// The GUIDs, in 22 characters, of the cubes of `WriteTwoCubes`.
extern char const* const kNearGuid;
extern char const* const kFarGuid;

/// Exit code 1, nothing on stdout, and one line on stderr that holds all of `parts`.
void ExpectFailure(ProgramRun const& run, std::vector<std::string> const& parts);

}  // namespace Quorlan::Testing
