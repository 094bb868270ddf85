#include "ChangeActions.h"
#include "Commands.h"
#include "GuidText.h"
#include "ModelFile.h"
#include "OutputFile.h"

#include <Tools/Increments/IncrementModelBuilder.h>
#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string model;
    std::vector<std::string> entities;
    std::string output;
};

using Selection = std::vector<std::pair<Quorlan::OwnerHistoryChangeAction, Quorlan::EntityIndex_t>>;

/// The entities asked for, in the order of the model; of equal GUIDs the first.
Selection Select(Settings const& settings, Quorlan::IModelReader const& reader) {
    std::map<_GUID, bool, GuidLess> wanted;
    for (auto const& text : settings.entities) wanted[RequireGuid(text)] = false;

    auto const actions = ChangeActionsOf(reader);
    auto const& entities = reader.GetEntities();
    Selection selection;
    Quorlan::EntityIdentifier identifier;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        if (entities.GetIdentifier(identifier, i).kind != 0) continue;
        _GUID guid;
        entities.GetGuid(guid, identifier.reference);
        auto const entry = wanted.find(guid);
        if (entry == wanted.end() || entry->second) continue;
        entry->second = true;
        selection.emplace_back(actions[i], Quorlan::EntityIndex_t{i});
    }
    for (auto const& text : settings.entities) {
        if (!wanted[RequireGuid(text)]) throw Failure(settings.model + ": there is no entity " + text);
    }
    return selection;
}

int RunExtract(Settings const& settings) {
    CheckOutputFile(settings.output, {settings.model});
    auto const model = ModelFile::Load(settings.model);
    auto const selection = Select(settings, model.GetReader());
    Quorlan::Tools::Increments::IncrementModelBuilder builder;
    builder.Add(model.GetReader(), selection);
    WriteOutputFile(settings.output, AsView(builder.GetResult()), {settings.model});
    fmt::print("{} of {} entities\n", selection.size(), model.GetReader().GetEntities().GetCount());
    return kSuccess;
}

}  // namespace

Run DeclareExtract(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("IN");
    app.add_option("--entity", settings->entities, "The entities to take")->required()->type_name("GUID...");
    app.add_option("-o,--output", settings->output, "The model to write (.qln)")->required()->type_name("OUT");
    return [settings] { return RunExtract(*settings); };
}

}  // namespace QuorlanProgram
