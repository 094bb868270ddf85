#include "Parts.h"

#include <cmath>

namespace QuorlanSample {
namespace {

constexpr double kFrame = 0.06;  ///< [m] width of a frame's bars
constexpr double kHandleHeight = 1.05;
constexpr double kBarSpacing = 0.12;  ///< [m] between the bars of a railing
constexpr double kRailHeight = 1.0;
constexpr double kHalfPi = 1.5707963267948966;

/// The quarter circle of a door leaf about its hinge, and the leaf when it stands open.
GraphicsContainer MakeSwing(double width) {
    GraphicsContainer swing;
    swing.lines.push_back({{0, 0, 0}, {0, -width, 0}});
    swing.arcs.push_back({{0, 0, 0}, {0, 0, 1}, {0, -1, 0}, width, kHalfPi});
    return swing;
}

}  // namespace

void AddWindow(SampleModel& model, std::string const& name, AffineTransform const& placement, Rectangle const& opening,
               std::uint32_t mullions, bool hasSill) {
    auto window = model.AddEntity(name, Layer::Windows, placement, Quorlan::OwnerHistoryChangeAction::MODIFIED);
    auto const [left, bottom, right, top] = opening;
    auto const foot = bottom + (hasSill ? 0.03 : 0.0);
    auto const addBar = [&](double x0, double z0, double x1, double z1) {
        window.AddBox({x0, 0.10, z0}, {x1, 0.18, z1}, Material::Metal);
    };
    addBar(left, foot, left + kFrame, top);
    addBar(right - kFrame, foot, right, top);
    addBar(left + kFrame, foot, right - kFrame, foot + kFrame);
    addBar(left + kFrame, top - kFrame, right - kFrame, top);
    for (std::uint32_t i = 1; i <= mullions; ++i) {
        auto const x = left + (right - left) * i / (mullions + 1) - kFrame / 2;
        addBar(x, foot + kFrame, x + kFrame, top - kFrame);
    }
    window.AddBox({left + kFrame, 0.13, foot + kFrame}, {right - kFrame, 0.15, top - kFrame}, Material::Glass);
    if (hasSill) window.AddBox({left - 0.06, -0.07, bottom}, {right + 0.06, 0.12, foot}, Material::Trim);
    window.SetProperty("Window", "GlazingArea", (right - left - 2 * kFrame) * (top - foot - 2 * kFrame));
    window.SetProperty("Window", "ThermalTransmittance", 0.9);
}

void AddDoor(SampleModel& model, std::string const& name, AffineTransform const& placement, Rectangle const& opening,
             double wallThickness) {
    auto door = model.AddEntity(name, Layer::Doors, placement);
    auto const [left, bottom, right, top] = opening;
    auto const back = wallThickness + 0.01;
    door.AddBox({left, -0.01, bottom}, {left + kFrame, back, top}, Material::White);
    door.AddBox({right - kFrame, -0.01, bottom}, {right, back, top}, Material::White);
    door.AddBox({left + kFrame, -0.01, top - kFrame}, {right - kFrame, back, top}, Material::White);
    door.AddBox({left + kFrame, 0.02, bottom + 0.01}, {right - kFrame, 0.06, top - kFrame}, Material::Oak);
    auto const handle = model.Cylinder(0.012, 0.12);
    for (double const y : {-0.03, 0.11}) {
        door.Add(handle, Material::Steel, Along({right - 0.25, y, kHandleHeight}, {0, 0, -1}, {0, 1, 0}));
    }
    door.SetProperty("Door", "FireRating", std::string(wallThickness > 0.15 ? "EI30" : "none"));
    door.SetProperty("Door", "ClearWidth", right - left - 2 * kFrame);

    auto const width = right - left - 2 * kFrame;
    auto const swing = model.Shape("swing " + std::to_string(width), [&] { return MakeSwing(width); });
    model.AddEntity(name + ", swing", Layer::Annotations, Compose(placement, At({left + kFrame, 0, 0.03})))
        .Add(swing, Material::Ink);
}

void AddRailing(SampleModel& model, std::string const& name, AffineTransform const& placement, double length) {
    auto railing = model.AddEntity(name, Layer::Railings, placement);
    railing.AddBox({0, -0.025, kRailHeight}, {length, 0.025, kRailHeight + 0.04}, Material::Metal);
    railing.AddBox({0, -0.015, 0.08}, {length, 0.015, 0.11}, Material::Metal);
    auto const count = static_cast<std::uint32_t>(std::floor(length / kBarSpacing));
    for (std::uint32_t i = 0; i <= count; ++i) {
        auto const x = (length - 0.02) * i / count;
        railing.AddBox({x, -0.01, 0.11}, {x + 0.02, 0.01, kRailHeight}, Material::Metal);
    }
    railing.SetProperty("Railing", "Height", kRailHeight + 0.04);
}

}  // namespace QuorlanSample
