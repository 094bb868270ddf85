#include "Camera.h"
#include "Command.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Options.h"
#include "OutputFile.h"
#include "PickScene.h"
#include "PickedEdge.h"
#include "Png.h"
#include "render/MeshRenderer.h"
#include "render/Overlay.h"
#include "render/Renderer.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace QuorlanProgram {
namespace {

using Quorlan::Tools::Picking::ViewProjection;

constexpr Rgba kSnapColor{230, 40, 20, 255};
constexpr Rgba kSnapHalo{255, 255, 255, 200};
constexpr std::uint32_t kDefaultSamples = 8;
constexpr double kSnapRadius = 7;  ///< [pixels]

struct Settings {
    std::string model;
    std::string output;
    std::string legend;
    ColorMode mode = ColorMode::Material;
    bool shadows = false;
    bool edges = false;
    bool picked = false;
    std::uint32_t samples = kDefaultSamples;
    std::optional<std::array<double, 2>> snap;
    CameraOptions camera;
    VisibilityOptions visibility;
};

/// The entities that are seen, each with its colour and the number of its pixels.
std::string MakeLegend(Quorlan::IModelReader const& reader, Picture const& picture, std::vector<Rgba> const& colors) {
    std::map<std::uint32_t, std::uint64_t> pixels;
    Quorlan::InstanceRecord instance;
    for (auto const seen : picture.instances) {
        if (seen == Quorlan::kInvalidIndex) continue;
        reader.GetGeometry().GetInstance(instance, seen);
        ++pixels[instance.entityIndex];
    }
    auto legend = nlohmann::ordered_json::array();
    for (auto const& [entity, count] : pixels) {
        auto const label = LabelOf(reader.GetEntities(), entity);
        legend.push_back({{"color", ToHex(colors[entity])},
                          {"guid", label.guid},
                          {"name", label.name},
                          {"entity", entity},
                          {"pixels", count}});
    }
    return legend.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

/// Marks what an edge pick finds at `pixel`. RETURNS false if that is nothing.
bool MarkSnap(Picture& picture, PickScene const& scene, ViewProjection const& view, Quorlan::IModelReader const& reader,
              std::array<double, 2> const& pixel) {
    auto const hit = PickScene::Picker(scene, view).PickEdge(pixel[0], pixel[1], EdgeKind::All, kDefaultTolerance);
    if (!hit) return false;
    auto const path = PickedEdge::Find(reader, *hit).GetPath();
    Overlay overlay(picture, view);
    overlay.DrawPath(path, kSnapHalo, 5);
    overlay.DrawRing(hit->point, kSnapRadius, kSnapHalo, 5);
    overlay.DrawPath(path, kSnapColor, 2.5);
    overlay.DrawRing(hit->point, kSnapRadius, kSnapColor, 2.5);
    return true;
}

Picture MakePicture(Settings const& settings, ModelFile const& model, PickScene const& scene,
                    ViewProjection const& view, std::vector<Rgba> const& entityColors) {
    auto surfaces = SurfacesOf(model.GetReader(), settings.mode, entityColors);
    if (!settings.picked && CanRenderMeshes()) {
        MeshPictureOptions const options{settings.mode, settings.samples, settings.edges,
                                         settings.visibility.clippingPlanes};
        return RenderMeshes(model, scene, surfaces, view, options);
    }
    if (!settings.picked) fmt::print(stderr, "built without Embree: the picture is what the pickers see\n");
    Renderer renderer(scene, view);
    renderer.SetSurfaces(std::move(surfaces));
    renderer.SetShading(settings.mode != ColorMode::Entity);
    renderer.SetEdges(settings.edges);
    renderer.SetShadows(settings.shadows);
    renderer.SetNormalColors(settings.mode == ColorMode::Normal);
    return renderer.Render();
}

int RunRender(Settings const& settings) {
    CheckOutputFile(settings.output, {settings.model});
    if (!settings.legend.empty()) CheckOutputFile(settings.legend, {settings.model, settings.output});
    auto const model = ModelFile::Load(settings.model);
    PickScene const scene(model, settings.visibility);
    if (!scene.GetBounds()) throw Failure(model.GetPath() + ": has no instances to picture");

    auto const isEntityMode = settings.mode == ColorMode::Entity;
    auto const entityColors = MakeDistinctColors(isEntityMode ? model.GetReader().GetEntities().GetCount() : 0);
    auto const view = settings.camera.MakeView(scene.GetBoxes());
    auto picture = MakePicture(settings, model, scene, view, entityColors);
    auto const isSnapped = !settings.snap || MarkSnap(picture, scene, view, model.GetReader(), *settings.snap);

    auto const png = EncodePng({picture.width, picture.height, 4, picture.pixels.front().data()});
    WriteOutputFile(settings.output, AsView(png), {settings.model});
    if (!settings.legend.empty()) {
        WriteOutputFile(settings.legend, MakeLegend(model.GetReader(), picture, entityColors),
                        {settings.model, settings.output});
    }
    fmt::print(stderr, "{} x {} pixels, {} rays in {:.2f} s, {:.0f} rays/s\n", picture.width, picture.height,
               picture.rayCount, picture.seconds, static_cast<double>(picture.rayCount) / picture.seconds);
    if (!isSnapped) fmt::print(stderr, "no edge at the pixel of --snap\n");
    return isSnapped ? kSuccess : kFindings;
}

/// Options that would undo each other. THROWS CLI::ValidationError
void CheckCombination(Settings const& settings) {
    auto const isEntityMode = settings.mode == ColorMode::Entity;
    if (!settings.legend.empty() && !isEntityMode) {
        throw CLI::ValidationError("--legend", "goes with --color entity only");
    }
    if (isEntityMode && (settings.edges || settings.snap || settings.shadows)) {
        throw CLI::ValidationError("--color entity", "is plain: no --edges, --snap or --shadows");
    }
}

}  // namespace

Run DeclareRender(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    std::map<std::string, ColorMode> const modes = {{"material", ColorMode::Material},
                                                    {"entity", ColorMode::Entity},
                                                    {"layer", ColorMode::Layer},
                                                    {"normal", ColorMode::Normal}};
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    app.add_option("-o,--output", settings->output, "The picture to write (.png)")->required()->type_name("OUT");
    app.add_option("--color", settings->mode, "What colours tell")
        ->transform(CLI::CheckedTransformer(modes).description(""))
        ->type_name("material|entity|layer|normal")
        ->default_str("material");
    app.add_option("--legend", settings->legend, "With --color entity: a file (.json) that says whose colour is whose")
        ->type_name("OUT");
    auto* const picked = app.add_flag("--picked", settings->picked, "Show what the pickers see, no more and no less");
    app.add_flag("--shadows", settings->shadows, "Cast shadows with --picked too, with a ray more per surface");
    app.add_option("--samples", settings->samples,
                   "Rays per pixel where neighbours differ, 1 to 256; not with --picked")
        ->type_name("N")
        ->check(CLI::Range(1u, 256u).description(""))
        ->capture_default_str()
        ->excludes(picked);
    app.add_flag("--edges", settings->edges, "Draw clear outlines along creases and boundaries");
    auto const parseSnap = [raw = settings.get()](std::string const& text) {
        std::array<double, 2> pixel{};
        if (!ParseNumbers(text, ',', pixel)) throw CLI::ValidationError("--snap", "'" + text + "' is not X,Y");
        raw->snap = pixel;
    };
    app.add_option_function<std::string>("--snap", parseSnap, "Mark the edge that is picked at a pixel")
        ->type_name("X,Y");
    settings->camera.Declare(app);
    settings->visibility.Declare(app);
    return [settings] {
        CheckCombination(*settings);
        return RunRender(*settings);
    };
}

}  // namespace QuorlanProgram
