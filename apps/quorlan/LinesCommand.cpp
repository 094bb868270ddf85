#include "Commands.h"
#include "ModelFile.h"
#include "Rows.h"

#include <Tools/GraphicsContainerBuilder.h>

#include <array>
#include <cmath>
#include <memory>

namespace QuorlanProgram {
namespace {

struct Settings {
    std::string model;
    RowFormat format = RowFormat::Csv;
};

std::array<float, 3> Cross(std::array<float, 3> const& a, std::array<float, 3> const& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The point of an arc at an angle from its start.
std::array<double, 3> PointOf(Quorlan::Tools::GraphicsContainer::arc_s const& arc, double angle) {
    auto const side = Cross(arc.axis, arc.startDirection);
    std::array<double, 3> point{};
    for (std::size_t i = 0; i < 3; ++i) {
        point[i] = arc.center[i] + arc.radius * (std::cos(angle) * arc.startDirection[i] + std::sin(angle) * side[i]);
    }
    return point;
}

int RunLines(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    Quorlan::Tools::GraphicsContainerBuilder builder;
    builder.Build(model.GetBytes().data());  // false for a model without line graphics, which has no rows

    Rows rows(settings.format, {"container", "element", "kind", "startX", "startY", "startZ", "endX", "endY", "endZ",
                                "radius", "sweepAngle"});
    Quorlan::Tools::GraphicsContainer container;
    for (unsigned i = 0; i < builder.GetCount(); ++i) {
        if (!builder.GetGraphicsContainer(i, container)) container.arcs.clear();
        std::uint64_t element = 0;
        for (auto const& [start, end] : container.lines) {
            rows.Add({std::uint64_t{i}, element++, "line", double{start[0]}, double{start[1]}, double{start[2]},
                      double{end[0]}, double{end[1]}, double{end[2]}, 0.0, 0.0});
        }
        for (auto const& arc : container.arcs) {
            auto const start = PointOf(arc, 0), end = PointOf(arc, arc.sweepAngle);
            rows.Add({std::uint64_t{i}, element++, "arc", start[0], start[1], start[2], end[0], end[1], end[2],
                      double{arc.radius}, double{arc.sweepAngle}});
        }
        container.lines.clear();
    }
    rows.Print();
    return kSuccess;
}

}  // namespace

Run DeclareLines(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    AddRowFormat(app, settings->format);
    return [settings] { return RunLines(*settings); };
}

}  // namespace QuorlanProgram
