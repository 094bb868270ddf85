#include "Command.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Rows.h"

#include <Tools/PlacementBuilder.h>

#include <memory>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string model;
    RowFormat format = RowFormat::Csv;
};

int RunPlacements(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    Quorlan::Tools::PlacementBuilder builder;
    if (!builder.Build(model.GetBytes().data())) throw Failure(model.GetPath() + ": its placements cannot be read");

    auto const labels = LabelsOf(model.GetReader().GetEntities());
    auto const& geometry = model.GetReader().GetGeometry();
    Rows rows(settings.format, {"instance", "entity", "guid", "name", "xAxisX", "xAxisY", "xAxisZ", "yAxisX", "yAxisY",
                                "yAxisZ", "zAxisX", "zAxisY", "zAxisZ", "originX", "originY", "originZ"});
    Quorlan::InstanceRecord instance;
    auto const& placements = builder.getPlacements();
    for (std::uint32_t i = 0; i < placements.size(); ++i) {
        geometry.GetInstance(instance, i);
        auto const& label = labels[instance.entityIndex];
        std::vector<Rows::Cell> cells{std::uint64_t{i}, std::uint64_t{instance.entityIndex},
                                      std::string_view(label.guid), std::string_view(label.name)};
        for (std::size_t column = 0; column < 4; ++column) {
            auto const axis = placements[i].GetColumn(column);
            cells.insert(cells.end(), {axis.x, axis.y, axis.z});
        }
        rows.Add(cells);
    }
    rows.Print();
    return kSuccess;
}

}  // namespace

Run DeclarePlacements(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    AddRowFormat(app, settings->format);
    return [settings] { return RunPlacements(*settings); };
}

}  // namespace QuorlanProgram
