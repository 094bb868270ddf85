#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"
#include "diff/DifferenceReport.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

enum class Report { Text, Markdown, Json };

struct Settings {
    std::string oldModel;
    std::string newModel;
    std::string output;
    Report report = Report::Text;
    Tolerances tolerances;
};

int RunDiff(Settings const& settings) {
    std::vector<std::string> const inputs = {settings.oldModel, settings.newModel};
    CheckOutputFile(settings.output, inputs);
    auto const oldFile = ModelFile::Load(settings.oldModel);
    auto const newFile = ModelFile::Load(settings.newModel);
    ShapeStore store;
    ModelContent const oldModel(oldFile.GetBytes(), oldFile.GetReader(), store);
    ModelContent const newModel(newFile.GetBytes(), newFile.GetReader(), store);
    auto const difference = CompareModels(oldModel, newModel, settings.tolerances);
    WriteOutputFile(settings.output, AsView(WriteIncrement(difference, newModel)), inputs);

    auto const write = settings.report == Report::Json       ? &ToJson
                       : settings.report == Report::Markdown ? &ToMarkdown
                                                             : &ToText;
    std::fputs(write(difference, oldModel, newModel).c_str(), stdout);
    return difference.changes.empty() ? kSuccess : kFindings;
}

}  // namespace

Run DeclareDiff(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    std::map<std::string, Report> const reports = {
        {"text", Report::Text}, {"md", Report::Markdown}, {"json", Report::Json}};
    app.add_option("old", settings->oldModel, "The full model as it was (.qln)")->required()->type_name("OLD");
    app.add_option("new", settings->newModel, "The full model as it is (.qln)")->required()->type_name("NEW");
    app.add_option("-o,--output", settings->output, "The increment to write (.qln)")
        ->required()
        ->type_name("INCREMENT");
    app.add_option("--report", settings->report, "How the changes are told")
        ->transform(CLI::CheckedTransformer(reports).description(""))
        ->type_name("text|md|json")
        ->default_str("text");
    app.add_option("--tolerance", settings->tolerances.position, "What lies no further apart is in the same place [m]")
        ->check(CLI::NonNegativeNumber.description(""))
        ->type_name("M")
        ->capture_default_str();
    return [settings] { return RunDiff(*settings); };
}

}  // namespace QuorlanProgram
