#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"

#include <Tools/Identifiers.h>
#include <Tools/Increments/Squash.h>
#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string first;
    std::string second;
    std::string output;
};

/// One line per GUID, sorted, so that equal inputs print equal texts.
void PrintGuids(char const* word, std::vector<_GUID> const& guids) {
    std::vector<std::string> lines;
    for (auto const& guid : guids) lines.push_back(Quorlan::Tools::GuidToIfcGuid(guid));
    std::sort(lines.begin(), lines.end());
    for (auto const& line : lines) fmt::print("{} {}\n", word, line);
}

int RunSquash(Settings const& settings) {
    std::vector<std::string> const inputs = {settings.first, settings.second};
    CheckOutputFile(settings.output, inputs);
    auto const first = ModelFile::Load(settings.first);
    auto const second = ModelFile::Load(settings.second);
    Quorlan::Tools::Increments::Squash squash;
    if (!squash.Build(first.GetBytes(), second.GetBytes())) throw Failure(squash.GetError());
    WriteOutputFile(settings.output, AsView(squash.GetResult()), inputs);
    PrintGuids("deleted", squash.GetDeleted());
    PrintGuids("modified", squash.GetModified());
    return kSuccess;
}

}  // namespace

Run DeclareSquash(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("first", settings->first, "The earlier increment (.qln)")->required()->type_name("FIRST");
    app.add_option("second", settings->second, "The later increment (.qln)")->required()->type_name("SECOND");
    app.add_option("-o,--output", settings->output, "The increment to write (.qln)")->required()->type_name("OUT");
    return [settings] { return RunSquash(*settings); };
}

}  // namespace QuorlanProgram
