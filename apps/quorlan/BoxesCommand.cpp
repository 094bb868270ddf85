#include "Command.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Rows.h"

#include <Tools/BoundingBoxBuilder.h>

#include <memory>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string model;
    RowFormat format = RowFormat::Csv;
};

int RunBoxes(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    Quorlan::Tools::BoundingBoxBuilder builder;
    builder.Build(model.GetBytes().data());  // false for a model without instances, which has no rows

    auto const labels = LabelsOf(model.GetReader().GetEntities());
    auto const& geometry = model.GetReader().GetGeometry();
    Rows rows(settings.format, {"instance", "entity", "guid", "name", "minX", "minY", "minZ", "maxX", "maxY", "maxZ"});
    Quorlan::InstanceRecord instance;
    auto const& boxes = builder.getBoundingBoxes();
    for (std::uint32_t i = 0; i < boxes.size(); ++i) {
        geometry.GetInstance(instance, i);
        auto const& label = labels[instance.entityIndex];
        auto const lo = boxes[i].GetMin(), hi = boxes[i].GetMax();
        rows.Add({std::uint64_t{i}, std::uint64_t{instance.entityIndex}, std::string_view(label.guid),
                  std::string_view(label.name), lo.x, lo.y, lo.z, hi.x, hi.y, hi.z});
    }
    rows.Print();
    return kSuccess;
}

}  // namespace

Run DeclareBoxes(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    AddRowFormat(app, settings->format);
    return [settings] { return RunBoxes(*settings); };
}

}  // namespace QuorlanProgram
