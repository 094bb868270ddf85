#include "Commands.h"
#include "Signals.h"
#include "reference/Manual.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

std::vector<Command> const kCommands = {
    {"sample", "Write the sample building", &DeclareSample},
    {"import", "Make a model of IFC files and meshes", &DeclareImport},
    {"info", "Say what a model holds", &DeclareInfo},
    {"validate", "Check every index and reference of a model", &DeclareValidate},
    {"boxes", "List the world boxes of all instances", &DeclareBoxes},
    {"placements", "List the world placements of all instances", &DeclarePlacements},
    {"quantities", "Bill areas, volumes and centres of gravity", &DeclareQuantities},
    {"lod", "List the level-of-detail lines of all instances", &DeclareLod},
    {"lines", "List the segments and arcs of all line graphics", &DeclareLines},
    {"mesh", "Write the render mesh of one shape", &DeclareMesh},
    {"export", "Write a model as binary glTF", &DeclareExport},
    {"pick", "Say what stands under a pixel", &DeclarePick},
    {"render", "Cast a picture of a model", &DeclareRender},
    {"diff", "Tell and write what changed between two models", &DeclareDiff},
    {"merge", "Apply an increment to a model", &DeclareMerge},
    {"squash", "Make one increment of two", &DeclareSquash},
    {"extract", "Take some entities of a model", &DeclareExtract},
    {"combine", "Make one model of several, an entity each", &DeclareCombine},
    {"resolve", "Find the entities that an identifier names", &DeclareResolve},
    {"guid", "Convert GUIDs between their two forms", &DeclareGuid},
    {"reference", "Write the command reference, the manual page or the completion of the shell", &DeclareReference},
};

/// Prints one line to stderr.
void Complain(std::string const& message) { std::fprintf(stderr, "quorlan: %s\n", message.c_str()); }

/// The line of the help that shows how the command is called.
std::string UsageOf(std::string const& help) {
    auto const begin = help.find("Usage:");
    return begin == std::string::npos ? std::string() : help.substr(begin, help.find('\n', begin) - begin);
}

int ReportUsage(CLI::App const& program, CLI::ParseError const& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return program.exit(error);  // --help
    auto const parsed = program.get_subcommands();
    auto const& name = program.get_name();
    auto const call = parsed.empty() ? name : name + " " + parsed.front()->get_name();
    Complain(error.what());
    auto const usage = UsageOf(parsed.empty() ? program.help() : parsed.front()->help(name));
    std::fprintf(stderr, "%s\nFor more: %s --help\n", usage.c_str(), call.c_str());
    return kWrongUsage;
}

/// The parser would call an unknown command a missing one.
void CheckCommandName(int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') return;
    std::string const name = argv[1];
    for (auto const& command : kCommands) {
        if (name == command.name) return;
    }
    throw CLI::ValidationError("there is no command '" + name + "'");
}

/// A full disk behind stdout shows only when the last bytes leave.
int FinishStdout(int exitCode) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return exitCode;
    Complain(std::string("stdout: ") + std::strerror(errno));
    return kFindings;
}

int Main(int argc, char** argv) {
    CLI::App program("Reads, checks, measures, pictures and writes building models (.qln).", "quorlan");
    program.set_version_flag("--version", "quorlan " QUORLAN_VERSION);
    program.require_subcommand(1);
    program.get_formatter()->column_width(34);
    program.footer(ToTerminalText(ManualTextOf("")));

    std::vector<Run> runs;
    for (auto const& command : kCommands) {
        auto& app = *program.add_subcommand(command.name, command.summary);
        app.footer(ToTerminalText(ManualTextOf(command.name)));
        runs.push_back(command.declare(app));
    }
    try {
        CheckCommandName(argc, argv);
        program.parse(argc, argv);
        for (std::size_t i = 0; i < runs.size(); ++i) {
            if (program.got_subcommand(kCommands[i].name)) return FinishStdout(runs[i]());
        }
    } catch (CLI::ParseError const& error) {
        return ReportUsage(program, error);
    }
    return kWrongUsage;
}

}  // namespace
}  // namespace QuorlanProgram

int main(int argc, char** argv) {
    QuorlanProgram::PrepareSignals();
    try {
        return QuorlanProgram::Main(argc, argv);
    } catch (std::bad_alloc const&) {
        QuorlanProgram::Complain("not enough memory");
    } catch (std::exception const& error) {
        QuorlanProgram::Complain(error.what());
    }
    return QuorlanProgram::kFindings;
}
