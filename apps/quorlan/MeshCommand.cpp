#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"

#include <Tools/VertexNormalBuilder.h>
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

namespace QuorlanProgram {
namespace {

constexpr double kDegree = 3.141592653589793 / 180;
constexpr std::uint32_t kBRepWithNormal = 7;

struct Settings {
    std::string model;
    std::string output;
    std::uint32_t definition = 0;
    double creaseDegrees = 30;
};

/// The mesh as Wavefront OBJ, whose indices count from 1. Positions, texture coordinates and normals stay shared.
std::string WriteObj(Quorlan::Tools::VertexNormalBuilder& mesh, std::string const& name, bool hasStoredNormals) {
    std::string obj = fmt::format("o {}\n", name);
    auto const out = std::back_inserter(obj);
    for (auto const& p : mesh.GetPositions()) fmt::format_to(out, "v {} {} {}\n", p.x, p.y, p.z);
    for (auto const& t : mesh.GetTexCoords()) fmt::format_to(out, "vt {} {}\n", t.x, t.y);
    for (auto const& n : mesh.GetNormals()) fmt::format_to(out, "vn {} {} {}\n", n.x, n.y, n.z);

    auto const& corners = mesh.GetCorners();
    bool const hasUVs = !mesh.GetTexCoords().empty();
    auto const addCorner = [&](std::uint16_t index) {
        unsigned const position = corners[index].position + 1u;
        unsigned const normal = hasStoredNormals ? position : corners[index].normal + 1u;
        if (hasUVs) {
            fmt::format_to(out, " {}/{}/{}", position, position, normal);
        } else {
            fmt::format_to(out, " {}//{}", position, normal);
        }
    };
    for (auto const& triangle : mesh.GetTriangles()) {
        if (std::max({triangle.a, triangle.b, triangle.c}) >= corners.size()) continue;
        obj += 'f';
        for (std::uint16_t const index : {triangle.a, triangle.b, triangle.c}) addCorner(index);
        obj += '\n';
    }
    return obj;
}

int RunMesh(Settings const& settings) {
    CheckOutputFile(settings.output, {settings.model});
    auto const model = ModelFile::Load(settings.model);
    auto const& geometry = model.GetReader().GetGeometry();
    if (settings.definition >= geometry.GetDefinitionCount()) {
        throw Failure(
            fmt::format("{}: definition {} of {}", settings.model, settings.definition, geometry.GetDefinitionCount()));
    }
    Quorlan::Tools::VertexNormalBuilder mesh;
    auto const angle = static_cast<float>(settings.creaseDegrees * kDegree);
    if (!mesh.Build(model.GetBytes(), settings.definition, angle)) {
        throw Failure(fmt::format("{}: definition {} has no faces", settings.model, settings.definition));
    }
    bool const hasStoredNormals = geometry.GetDefinitionKind(settings.definition) == kBRepWithNormal;
    auto const obj = WriteObj(mesh, fmt::format("definition{}", settings.definition), hasStoredNormals);
    WriteOutputFile(settings.output, obj, {settings.model});
    fmt::print("{} triangles, {} corners, {} positions, {} normals\n", mesh.GetTriangles().size(),
               mesh.GetCorners().size(), mesh.GetPositions().size(), mesh.GetNormals().size());
    return kSuccess;
}

}  // namespace

Run DeclareMesh(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    app.add_option("--definition", settings->definition, "The geometry definition")->required()->type_name("N");
    app.add_option("-o,--output", settings->output, "The mesh to write (.obj)")->required()->type_name("OUT");
    app.add_option("--crease", settings->creaseDegrees, "Edges sharper than this stay sharp [degrees]")
        ->check(CLI::Range(0.0, 180.0).description(""))
        ->type_name("DEG")
        ->capture_default_str();
    return [settings] { return RunMesh(*settings); };
}

}  // namespace QuorlanProgram
