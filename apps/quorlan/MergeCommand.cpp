#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"
#include "diff/ModelComparison.h"

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
    bool verify = false;
};

/// Holds the merged model against what the two models say. THROWS Failure with the first problem.
void Verify(ModelFile const& full, ModelFile const& increment, std::vector<char> const& merged,
            Quorlan::IModelReader const& reader) {
    ShapeStore store;
    ModelContent const base(full.GetBytes(), full.GetReader(), store);
    ModelContent const changes(increment.GetBytes(), increment.GetReader(), store);
    ModelContent const result(merged, reader, store);
    auto const problems = CheckMerge(base, changes, result, {});
    if (problems.empty()) {
        fmt::print("verified: {} entities are what the two models say\n", result.GetEntities().size());
        return;
    }
    auto const more = problems.size() > 1 ? fmt::format(" (and {} more)", problems.size() - 1) : std::string();
    throw Failure(fmt::format("{}: merged with {}: {}{}", full.GetPath(), increment.GetPath(), problems.front(), more));
}

int RunMerge(Settings const& settings) {
    std::vector<std::string> const inputs = {settings.full, settings.increment};
    CheckOutputFile(settings.output, inputs);
    auto const full = ModelFile::Load(settings.full);
    auto const increment = ModelFile::Load(settings.increment);
    Quorlan::Tools::Increments::Merge merge;
    if (!merge.Build(full.GetBytes(), increment.GetBytes())) throw Failure(merge.GetError());
    auto const merged = merge.GetResult();
    auto const storage = Quorlan::ModelStorage::FromBuffer(merged);
    if (settings.verify) Verify(full, increment, merged, storage.GetModelReader());
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
    app.add_flag("--verify", settings->verify, "Hold the merged model against the two before it is written");
    return [settings] { return RunMerge(*settings); };
}

}  // namespace QuorlanProgram
