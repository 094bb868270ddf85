#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Signals.h"

#include <CLI/CLI.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#ifdef QUORLAN_HAS_IFC
#include "IfcImport.h"
#endif

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string input;
    std::string output;
    std::string report;
    bool takesOpenings = false;
};

#ifdef QUORLAN_HAS_IFC

constexpr std::uint64_t kProgressSteps = 1000;

Import::ImportResult ImportWithProgress(std::vector<char> const& text, bool takesOpenings) {
    Progress progress(kProgressSteps);
    Import::ImportOptions options;
    options.takesOpenings = takesOpenings;
    options.writesRecord = true;
    options.progress = [&](double share) { progress.Report(static_cast<std::uint64_t>(share * kProgressSteps)); };
    return Import::ImportIfc(AsView(text), options);
}

int ImportHere(Settings const& settings) {
    auto const text = ReadFile(settings.input);
    auto const result = ImportWithProgress(text, settings.takesOpenings);
    if (!result.error.empty()) throw Failure(settings.input + ": " + result.error);
    WriteOutputFile(settings.output, AsView(result.model), {settings.input});
    if (settings.report == "text") std::fputs(Import::ToText(result.report).c_str(), stdout);
    if (settings.report == "json") std::fputs(Import::ToJson(result.report).c_str(), stdout);
    return kSuccess;
}

/// Runs the import in a process of its own: whatever a broken file does to the IFC library behind it, the user gets one
/// line and no output.
int RunImport(Settings const& settings) {
    CheckOutputFile(settings.output, {settings.input});
    auto const child = fork();
    if (child < 0) return ImportHere(settings);
    if (child == 0) {
        LeaveInterruptsToTheParent();
        int code = kFindings;
        try {
            code = ImportHere(settings);
        } catch (std::bad_alloc const&) {
            std::fprintf(stderr, "quorlan: %s: not enough memory\n", settings.input.c_str());
        } catch (std::exception const& error) {
            std::fprintf(stderr, "quorlan: %s\n", error.what());
        }
        if (std::fflush(stdout) != 0) {
            std::fprintf(stderr, "quorlan: stdout: %s\n", std::strerror(errno));
            code = kFindings;
        }
        _exit(code);
    }
    int status = 0;
    if (waitpid(child, &status, 0) == child && WIFEXITED(status)) return WEXITSTATUS(status);
    throw Failure(settings.input + ": the IFC library broke down over this file");
}

#else

int RunImport(Settings const&) { throw Failure("this program was built without the import of IFC files"); }

#endif

}  // namespace

Run DeclareImport(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("input", settings->input, "The building to read (.ifc: IFC2x3, IFC4)")->required()->type_name("IN");
    app.add_option("-o,--output", settings->output, "The model to write (.qln)")->required()->type_name("OUT");
    app.add_flag("--openings", settings->takesOpenings,
                 "Import openings as entities too, on the layer IfcOpeningElement");
    app.add_option("--report", settings->report, "Print what was read and what was not")
        ->check(CLI::IsMember({"text", "json"}))
        ->type_name("text|json");
    return [settings] { return RunImport(*settings); };
}

}  // namespace QuorlanProgram
