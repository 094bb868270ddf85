#include "ChangeActions.h"
#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"

#include <Tools/Increments/Merge.h>
#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string full;
    std::string increment;
    std::string output;
};

int RunMerge(Settings const& settings) {
    std::vector<std::string> const inputs = {settings.full, settings.increment};
    CheckOutputFile(settings.output, inputs);
    auto const full = ModelFile::Load(settings.full);
    auto const increment = ModelFile::Load(settings.increment);
    Quorlan::Tools::Increments::Merge merge;
    if (!merge.Build(full.GetBytes(), increment.GetBytes())) throw Failure(merge.GetError());
    auto const merged = merge.GetResult();
    auto const storage = Quorlan::ModelStorage::FromBuffer(merged);
    WriteOutputFile(settings.output, AsView(merged), inputs);
    fmt::print("{} entities, {} before\n", storage.GetModelReader().GetEntities().GetCount(),
               full.GetReader().GetEntities().GetCount());
    return kSuccess;
}

}  // namespace

Run DeclareMerge(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("full", settings->full, "The full model (.qln)")->required()->type_name("FULL");
    app.add_option("increment", settings->increment, "What changes in it (.qln)")->required()->type_name("INCREMENT");
    app.add_option("-o,--output", settings->output, "The full model to write (.qln)")->required()->type_name("OUT");
    return [settings] { return RunMerge(*settings); };
}

}  // namespace QuorlanProgram
