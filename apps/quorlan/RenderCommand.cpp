#include "Camera.h"
#include "Command.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "OutputFile.h"
#include "PickScene.h"
#include "Png.h"
#include "render/Renderer.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <utility>

namespace QuorlanProgram {
namespace {

constexpr Surface kNoMaterial{{0.6f, 0.6f, 0.6f}, 1};

struct Settings {
    std::string model;
    std::string output;
    std::string legend;
    ColorMode mode = ColorMode::Material;
    bool shadows = false;
    CameraOptions camera;
    VisibilityOptions visibility;
};

Surface SurfaceOf(Quorlan::IGeometryReader const& geometry, std::uint32_t material) {
    if (material >= geometry.GetMaterialCount()) return kNoMaterial;
    Quorlan::MaterialRecord record;
    geometry.GetMaterial(record, material);
    return {ToLight(record.color), static_cast<float>(record.color[3]) / 255};
}

/// The surface of every instance, by what the colours shall tell.
std::vector<Surface> SurfacesOf(Quorlan::IModelReader const& reader, ColorMode mode,
                                std::vector<Rgba> const& entityColors) {
    auto const& geometry = reader.GetGeometry();
    auto const layerColors = MakeDistinctColors(geometry.GetExtraContentCount());
    std::vector<Surface> surfaces(geometry.GetInstanceCount());
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < surfaces.size(); ++i) {
        geometry.GetInstance(instance, i);
        switch (mode) {
            case ColorMode::Material: surfaces[i] = SurfaceOf(geometry, instance.materialIndex); break;
            case ColorMode::Entity: surfaces[i] = {ToLight(entityColors[instance.entityIndex]), 1}; break;
            case ColorMode::Layer:
                surfaces[i] = instance.layerIndex < layerColors.size()
                                  ? Surface{ToLight(layerColors[instance.layerIndex]), 1}
                                  : kNoMaterial;
                break;
            case ColorMode::Normal: surfaces[i] = kNoMaterial; break;
        }
    }
    return surfaces;
}

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

int RunRender(Settings const& settings) {
    CheckOutputFile(settings.output, {settings.model});
    if (!settings.legend.empty()) CheckOutputFile(settings.legend, {settings.model, settings.output});
    auto const model = ModelFile::Load(settings.model);
    PickScene const scene(model, settings.visibility);
    if (!scene.GetBounds()) throw Failure(model.GetPath() + ": has no instances to picture");

    auto const isEntityMode = settings.mode == ColorMode::Entity;
    auto const entityColors = MakeDistinctColors(isEntityMode ? model.GetReader().GetEntities().GetCount() : 0);
    Renderer renderer(scene, settings.camera.MakeView(scene.GetBoxes()));
    renderer.SetSurfaces(SurfacesOf(model.GetReader(), settings.mode, entityColors));
    renderer.SetShading(!isEntityMode);
    renderer.SetShadows(settings.shadows);
    renderer.SetNormalColors(settings.mode == ColorMode::Normal);
    auto const picture = renderer.Render();

    auto const png = EncodePng({picture.width, picture.height, 4, picture.pixels.front().data()});
    WriteOutputFile(settings.output, AsView(png), {settings.model});
    if (!settings.legend.empty()) {
        WriteOutputFile(settings.legend, MakeLegend(model.GetReader(), picture, entityColors),
                        {settings.model, settings.output});
    }
    fmt::print(stderr, "{} x {} pixels, {} rays in {:.2f} s, {:.0f} rays/s\n", picture.width, picture.height,
               picture.rayCount, picture.seconds, static_cast<double>(picture.rayCount) / picture.seconds);
    return kSuccess;
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
    app.add_option("--color", settings->mode,
                   "What colours tell: material, entity (plain, one colour each), layer or normal")
        ->transform(CLI::CheckedTransformer(modes).description(""))
        ->type_name("WHAT")
        ->default_str("material");
    app.add_option("--legend", settings->legend, "With --color entity: a file (.json) that says whose colour is whose")
        ->type_name("OUT");
    app.add_flag("--shadows", settings->shadows, "Cast shadows, with a ray more per surface");
    settings->camera.Declare(app);
    settings->visibility.Declare(app);
    return [settings] {
        if (!settings->legend.empty() && settings->mode != ColorMode::Entity) {
            throw CLI::ValidationError("--legend", "goes with --color entity only");
        }
        return RunRender(*settings);
    };
}

}  // namespace QuorlanProgram
