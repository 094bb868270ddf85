#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"

#include <Tools/BoundingBoxBuilder.h>
#include <Tools/ConnectIdentifierResolver.h>
#include <Tools/InstancesByEntitiesBuilder.h>
#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

using Quorlan::Tools::EntityBox_t;

struct Settings {
    std::string model;
    std::string identifier;
    double tolerance = 1e-3;
};

/// The world box of every entity; of one without shapes, numbers that match nothing.
std::vector<EntityBox_t> BoxesOf(ModelFile const& model) {
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    std::vector<EntityBox_t> boxes(model.GetReader().GetEntities().GetCount(),
                                   EntityBox_t{kNone, kNone, kNone, kNone, kNone, kNone});
    Quorlan::Tools::BoundingBoxBuilder builder;
    Quorlan::Tools::InstancesByEntitiesBuilder instances;
    auto const* const buffer = model.GetBytes().data();
    if (!builder.Build(buffer) || !instances.Build(buffer)) return boxes;
    for (unsigned const entity : instances.GetEntitiesHavingInstances()) {
        auto& box = boxes[entity];
        for (unsigned const instance : instances.GetInstancesByEntities()[entity]) {
            auto const lo = builder.getBoundingBoxes()[instance].GetMin();
            auto const hi = builder.getBoundingBoxes()[instance].GetMax();
            // fmin and fmax pass over the numbers that match nothing.
            box = {std::fmin(box[0], lo.x), std::fmin(box[1], lo.y), std::fmin(box[2], lo.z),
                   std::fmax(box[3], hi.x), std::fmax(box[4], hi.y), std::fmax(box[5], hi.z)};
        }
    }
    return boxes;
}

int RunResolve(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    auto const made =
        Quorlan::Tools::CreateConnectIdentifierResolver(model.GetReader(), BoxesOf(model), settings.tolerance, 1.0);
    if (!made.resolver) throw Failure(settings.model + ": " + made.error);

    std::vector<Quorlan::EntityIndex_t> found;
    Quorlan::EntityIndex_t entity{};
    if (made.resolver->ResolveGuid(settings.identifier, entity)) {
        found.push_back(entity);
    } else {
        made.resolver->Resolve(settings.identifier, found);
    }
    for (auto const index : found) {
        auto const label = LabelOf(model.GetReader().GetEntities(), static_cast<std::uint32_t>(index));
        fmt::print("{}\t{}\t{}\n", static_cast<std::uint32_t>(index), label.guid, label.name);
    }
    return found.empty() ? kFindings : kSuccess;
}

}  // namespace

Run DeclareResolve(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("IN");
    app.add_option("identifier", settings->identifier,
                   "A GUID in either form, an identifier text, or a box or key in base64")
        ->required()
        ->type_name("TEXT");
    app.add_option("--tolerance", settings->tolerance, "How far each number of a box or key may be off [m]")
        ->check(CLI::NonNegativeNumber.description(""))
        ->type_name("M")
        ->capture_default_str();
    return [settings] { return RunResolve(*settings); };
}

}  // namespace QuorlanProgram
