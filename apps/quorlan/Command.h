#pragma once

#include <functional>
#include <stdexcept>

namespace CLI {
class App;
}

namespace QuorlanProgram {

/// What the program hands back to the shell.
enum ExitCode : int {
    kSuccess = 0,
    kFindings = 1,  ///< bad input, or a question answered with "no": nothing under the pixel, the models differ
    kWrongUsage = 2,
};

/// What a command does once its options are parsed. Returns an exit code.
using Run = std::function<int()>;

/// One command. `declare` puts its options on `app` and returns what to run; `Run` may share state with the options.
struct Command {
    char const* name;
    char const* summary;
    Run (*declare)(CLI::App& app);
};

/// Bad input or an output that cannot be written: one line for the user, which names the file, the place and the
/// reason. Ends the program with `kFindings`.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace QuorlanProgram
