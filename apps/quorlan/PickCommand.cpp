#include "Camera.h"
#include "Command.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Options.h"
#include "PickScene.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <memory>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;
using Json = nlohmann::ordered_json;

struct Settings {
    std::string model;
    std::array<double, 2> pixel{};
    CameraOptions camera;
    VisibilityOptions visibility;
    std::string format = "text";
};

Json ToJson(Vertex const& v) { return Json::array({v.x, v.y, v.z}); }

Json Describe(ModelFile const& model, SurfaceHit const& hit) {
    auto const& geometry = model.GetReader().GetGeometry();
    Quorlan::InstanceRecord instance;
    geometry.GetInstance(instance, hit.instance);
    auto const label = LabelOf(model.GetReader().GetEntities(), instance.entityIndex);
    std::string layer;
    if (instance.layerIndex < geometry.GetExtraContentCount()) geometry.GetLayerName(layer, instance.layerIndex);
    return {{"guid", label.guid},
            {"name", label.name},
            {"layer", layer},
            {"entity", instance.entityIndex},
            {"instance", hit.instance},
            {"face", hit.face},
            {"point", ToJson(hit.point)},
            {"normal", ToJson(hit.normal)},
            {"distance", hit.distance}};
}

void PrintText(Json const& hit) {
    for (auto const& [name, value] : hit.items()) {
        std::string text;
        if (value.is_string()) {
            text = value.get<std::string>();
        } else if (value.is_array()) {
            text = fmt::format("{:.4f}  {:.4f}  {:.4f}", value[0].get<double>(), value[1].get<double>(),
                               value[2].get<double>());
        } else {
            text = value.is_number_float() ? fmt::format("{:.4f}", value.get<double>()) : value.dump();
        }
        fmt::print("{:<10}{}\n", name, text);
    }
}

int RunPick(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    PickScene const scene(model, settings.visibility);
    auto const view = settings.camera.MakeView(scene.GetBoxes());
    auto const hit = PickScene::Picker(scene, view).Pick(settings.pixel[0], settings.pixel[1]);
    if (settings.format == "json") {
        auto const answer = hit ? Describe(model, *hit) : Json(nullptr);
        fmt::print("{}\n", answer.dump(1, ' ', false, Json::error_handler_t::replace));
    } else if (hit) {
        PrintText(Describe(model, *hit));
    } else {
        fmt::print("nothing there\n");
    }
    return hit ? kSuccess : kFindings;
}

}  // namespace

Run DeclarePick(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    AddNumbers(app, "--pixel", settings->pixel, "X,Y", "Where to pick, from the top left corner; centres lie at halves")
        ->required();
    settings->camera.Declare(app);
    settings->visibility.Declare(app);
    app.add_option("--format", settings->format, "How the answer is written")
        ->check(CLI::IsMember({"text", "json"}).description(""))
        ->type_name("text|json")
        ->capture_default_str();
    return [settings] { return RunPick(*settings); };
}

}  // namespace QuorlanProgram
