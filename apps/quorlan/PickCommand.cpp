#include "Camera.h"
#include "Command.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Options.h"
#include "PickScene.h"
#include "PickedEdge.h"

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
    bool edges = false;
    bool lines = false;
    double tolerance = kDefaultTolerance;
    std::string format = "text";
};

Json ToJson(Vertex const& v) { return Json::array({v.x, v.y, v.z}); }

/// Whose shape was hit.
Json DescribeOwner(ModelFile const& model, std::uint32_t instanceIndex) {
    auto const& geometry = model.GetReader().GetGeometry();
    Quorlan::InstanceRecord instance;
    geometry.GetInstance(instance, instanceIndex);
    auto const label = LabelOf(model.GetReader().GetEntities(), instance.entityIndex);
    std::string layer;
    if (instance.layerIndex < geometry.GetExtraContentCount()) geometry.GetLayerName(layer, instance.layerIndex);
    return {{"guid", label.guid},
            {"name", label.name},
            {"layer", layer},
            {"entity", instance.entityIndex},
            {"instance", instanceIndex}};
}

Json Describe(ModelFile const& model, SurfaceHit const& hit) {
    auto answer = DescribeOwner(model, hit.instance);
    answer["face"] = hit.face;
    answer["point"] = ToJson(hit.point);
    answer["normal"] = ToJson(hit.normal);
    answer["distance"] = hit.distance;
    return answer;
}

Json Describe(ModelFile const& model, EdgeHit const& hit) {
    auto const edge = PickedEdge::Find(model.GetReader(), hit);
    auto answer = DescribeOwner(model, hit.instance);
    answer["kind"] = edge.GetKindName();
    answer[edge.GetKind() == PickedEdge::Kind::Edge ? "face" : "segment"] = hit.primitive;
    answer["point"] = ToJson(hit.point);
    answer["distance"] = hit.distance;
    answer["pixels"] = hit.pixels;
    return answer;
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

/// What stands at the pixel; null for nothing.
Json PickAt(Settings const& settings, ModelFile const& model) {
    PickScene const scene(model, settings.visibility);
    PickScene::Picker picker(scene, settings.camera.MakeView(scene.GetBoxes()));
    auto const [x, y] = settings.pixel;
    if (settings.edges || settings.lines) {
        auto const kind = settings.lines ? EdgeKind::Lines : EdgeKind::All;
        auto const hit = picker.PickEdge(x, y, kind, settings.tolerance);
        return hit ? Describe(model, *hit) : Json(nullptr);
    }
    auto const hit = picker.Pick(x, y);
    return hit ? Describe(model, *hit) : Json(nullptr);
}

int RunPick(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    auto const answer = PickAt(settings, model);
    if (settings.format == "json") {
        fmt::print("{}\n", answer.dump(1, ' ', false, Json::error_handler_t::replace));
    } else if (answer.is_null()) {
        fmt::print("nothing there\n");
    } else {
        PrintText(answer);
    }
    return answer.is_null() ? kFindings : kSuccess;
}

}  // namespace

Run DeclarePick(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    AddNumbers(app, "--pixel", settings->pixel, "X,Y", "Where to pick, from the top left corner; centres lie at halves")
        ->required();
    auto* const edges = app.add_flag("--edges", settings->edges, "Find the nearest edge, line or arc");
    app.add_flag("--lines", settings->lines, "Find the nearest line or arc of line graphics")->excludes(edges);
    auto* const tolerance =
        app.add_option("--tolerance", settings->tolerance, "With --edges or --lines: how far they may lie [pixels]")
            ->type_name("PX")
            ->check(CLI::PositiveNumber.description(""))
            ->capture_default_str();
    settings->camera.Declare(app);
    settings->visibility.Declare(app);
    app.add_option("--format", settings->format, "How the answer is written")
        ->check(CLI::IsMember({"text", "json"}).description(""))
        ->type_name("text|json")
        ->capture_default_str();
    return [settings, tolerance] {
        if (tolerance->count() > 0 && !settings->edges && !settings->lines) {
            throw CLI::ValidationError("--tolerance", "goes with --edges or --lines only");
        }
        return RunPick(*settings);
    };
}

}  // namespace QuorlanProgram
