#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"
#include "gltf/GltfExport.h"

#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace QuorlanProgram {
namespace {

constexpr double kDegree = 3.141592653589793 / 180;

struct Settings {
    std::string model;
    std::string output;
    double creaseDegrees = 30;
    double chordTolerance = 0.001;
    bool levelOfDetailLines = false;
};

int RunExport(Settings const& settings) {
    CheckOutputFile(settings.output, {settings.model});
    auto const model = ModelFile::Load(settings.model);
    GltfOptions options;
    options.creaseAngle = static_cast<float>(settings.creaseDegrees * kDegree);
    options.chordTolerance = settings.chordTolerance;
    options.levelOfDetailLines = settings.levelOfDetailLines;

    GltfReport report;
    auto const file = ExportGltf(model.GetBytes(), model.GetReader(), options, report);
    WriteOutputFile(settings.output, file, {settings.model});
    fmt::print("{} nodes, {} meshes, {} bytes\n", report.nodes, report.meshes, file.size());
    if (report.emptyDefinitions > 0) {
        fmt::print(stderr, "quorlan: {}: {} shapes have neither faces nor lines and were left out\n", settings.model,
                   report.emptyDefinitions);
    }
    if (report.lostTriangles > 0) {
        fmt::print(stderr, "quorlan: {}: {} triangles beyond what a mesh can hold were left out\n", settings.model,
                   report.lostTriangles);
    }
    return kSuccess;
}

}  // namespace

Run DeclareExport(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    app.add_option("-o,--output", settings->output, "The binary glTF 2.0 file to write (.glb)")
        ->required()
        ->type_name("OUT");
    app.add_option("--crease", settings->creaseDegrees, "Edges sharper than this stay sharp [degrees]")
        ->check(CLI::Range(0.0, 180.0).description(""))
        ->type_name("DEG")
        ->capture_default_str();
    app.add_option("--chord", settings->chordTolerance, "How far chords may keep from their arc [m]")
        ->check(CLI::PositiveNumber.description(""))
        ->type_name("M")
        ->capture_default_str();
    app.add_flag("--lod", settings->levelOfDetailLines, "Level-of-detail lines, as thin cylinders, in place of shapes");
    return [settings] { return RunExport(*settings); };
}

}  // namespace QuorlanProgram
