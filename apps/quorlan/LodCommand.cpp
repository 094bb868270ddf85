#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Rows.h"

#include <Tools/LodLineBuilder.h>

#include <memory>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string model;
    RowFormat format = RowFormat::Csv;
};

int RunLod(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    Quorlan::Tools::LodLineBuilder builder;
    builder.Build(model.GetBytes().data());
    auto const lines = builder.GetLodLines();

    auto const labels = LabelsOf(model.GetReader().GetEntities());
    Rows rows(settings.format, {"instance", "entity", "guid", "name", "startX", "startY", "startZ", "endX", "endY",
                                "endZ", "radius", "material"});
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < lines.size(); ++i) {
        model.GetReader().GetGeometry().GetInstance(instance, i);
        auto const& label = labels[instance.entityIndex];
        auto const& [start, end, radius, material] = lines[i];
        rows.Add({std::uint64_t{i}, std::uint64_t{instance.entityIndex}, std::string_view(label.guid),
                  std::string_view(label.name), start.x, start.y, start.z, end.x, end.y, end.z, radius,
                  std::uint64_t{material}});
    }
    rows.Print();
    return kSuccess;
}

}  // namespace

Run DeclareLod(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    AddRowFormat(app, settings->format);
    return [settings] { return RunLod(*settings); };
}

}  // namespace QuorlanProgram
