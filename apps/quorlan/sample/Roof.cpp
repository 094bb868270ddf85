#include "Parts.h"

namespace QuorlanSample {
namespace {

constexpr double kParapet = 0.9;
constexpr double kHouseHeight = 2.6;

void AddParapet(SampleModel& model, AffineTransform const& roof) {
    struct Side {
        char const* name;
        Rectangle plan;
    };
    Side const sides[] = {{"south", {0, 0, kWidth, 0.25}},
                          {"north", {0, kDepth - 0.25, kWidth, kDepth}},
                          {"west", {0, 0.25, 0.25, kDepth - 0.25}},
                          {"east", {kWidth - 0.25, 0.25, kWidth, kDepth - 0.25}}};
    for (auto const& [name, plan] : sides) {
        auto parapet = model.AddEntity(std::string("Parapet ") + name, Layer::Roof, roof);
        parapet.AddBox({plan.left, plan.bottom, 0}, {plan.right, plan.top, kParapet}, Material::Plaster);
        auto const overhang = plan.right - plan.left > 1 ? 0.05 : -0.05;  // long sides reach over the short ones
        parapet.AddBox({plan.left - 0.05, plan.bottom - overhang, kParapet},
                       {plan.right + 0.05, plan.top + overhang, kParapet + 0.05}, Material::Metal);
        parapet.SetProperty("Parapet", "Height", kParapet + 0.05);
    }
    model.AddEntity("Roof gravel", Layer::Roof, roof)
        .Add(model.Shape(
                 "gravel",
                 [] {
                     return MakePlate({0.25, 0.25, kWidth - 0.25, kDepth - 0.25}, 0.06, {{9.5, 9.0, 14.5, 14.6}});
                 }),
             Material::Gravel)
        .SetProperty("Roof", "IsAccessible", true);
}

/// The house over stair and lift, with a gabled skylight.
void AddRoofHouse(SampleModel& model, AffineTransform const& roof) {
    auto const place = Compose(roof, At({9.5, 9.0, 0}));
    auto house = model.AddEntity("Roof house", Layer::Roof, place);
    constexpr double kHouseWidth = 5.0, kHouseDepth = 5.5, kThickness = 0.2;
    Rectangle const doorway{0.8, 0.1, 1.9, 2.2};
    house.Add(model.Shape("roof house front",
                          [&] {
                              return MakePanel({0, 0, kHouseWidth, kHouseHeight}, kThickness, {doorway});
                          }),
              Material::Cladding);
    house.AddBox({0, kHouseDepth - kThickness, 0}, {kHouseWidth, kHouseDepth, kHouseHeight}, Material::Cladding);
    for (double const x : {0.0, kHouseWidth - kThickness}) {
        house.AddBox({x, kThickness, 0}, {x + kThickness, kHouseDepth - kThickness, kHouseHeight}, Material::Cladding);
    }
    house.AddBox({-0.15, -0.4, kHouseHeight}, {kHouseWidth + 0.15, kHouseDepth + 0.1, kHouseHeight + 0.18},
                 Material::Metal);
    AddDoor(model, "Door roof house", place, doorway, kThickness);

    auto const gable = model.Shape("skylight", [] { return MakePrism({{0, 0}, {1.6, 0}, {0.8, 0.55}}, 3.0); });
    auto skylight = model.AddEntity("Skylight", Layer::Windows, Compose(place, At({1.7, 1.4, kHouseHeight + 0.18})));
    skylight.AddBox({-0.1, -0.1, 0}, {1.7, 3.1, 0.15}, Material::Metal);
    skylight.Add(gable, Material::Glass, At({0, 0, 0.151}));
    skylight.SetProperty("Window", "GlazingArea", 5.8);
}

void AddSolarPanels(SampleModel& model, AffineTransform const& roof) {
    auto const panel = model.Shape("solar panel", [] { return MakeTextured(MakeBox({1.0, 1.7, 0.04}), 0.1667, 0.17); });
    for (std::uint32_t row = 0; row < 3; ++row) {
        for (std::uint32_t i = 0; i < 10; ++i) {
            auto const name = "Solar panel " + std::to_string(row + 1) + "." + std::to_string(i + 1);
            auto element =
                model.AddEntity(name, Layer::Roof, Compose(roof, At({1.2 + 1.06 * i, 1.4 + 2.4 * row, 0.06})));
            element.Add(panel, Material::Solar, Along({0, 0, 0.25}, {1, 0, 0}, {0, 15, 4}));
            element.AddBox({0.45, 0.1, 0}, {0.55, 0.16, 0.27}, Material::Steel);
            element.AddBox({0.45, 1.5, 0}, {0.55, 1.56, 0.63}, Material::Steel);
            element.SetProperty("Solar", "PeakPower", 0.41);
        }
    }
}

void AddVentilation(SampleModel& model, AffineTransform const& roof) {
    for (std::uint32_t i = 0; i < 2; ++i) {
        auto unit = model.AddEntity("Air handling unit " + std::to_string(i + 1), Layer::Roof,
                                    Compose(roof, At({16.5, 2.0 + 4.2 * i, 0.06})));
        unit.AddBox({0, 0, 0.2}, {4.4, 2.2, 1.5}, Material::Steel);
        for (double const x : {0.2, 4.0}) unit.AddBox({x, 0.1, 0}, {x + 0.2, 2.1, 0.2}, Material::Metal);
        for (double const x : {1.1, 3.3}) {
            unit.Add(model.Cylinder(0.7, 0.22), Material::Metal, At({x, 1.1, 1.5}));
            unit.Add(model.Cylinder(0.16, 0.08), Material::Steel, At({x, 1.1, 1.72}));
        }
        unit.SetProperty("Ventilation", "AirFlow", std::int64_t{8500});
        unit.SetProperty("Ventilation", "Manufacturer", std::string("Sample \"Air\", Ltd."));
    }
    auto const cap = model.Shape("vent cap", [] { return MakeLathe({{0.25, 0}, {0, 0.18}}, 12); });
    for (std::uint32_t i = 0; i < 3; ++i) {
        model.AddEntity("Vent " + std::to_string(i + 1), Layer::Roof, Compose(roof, At({17.0 + 1.6 * i, 11.5, 0.06})))
            .Add(model.Cylinder(0.14, 1.1), Material::Steel)
            .Add(cap, Material::Metal, At({0, 0, 1.1}));
    }
}

}  // namespace

void AddRoof(SampleModel& model) {
    auto const storeys = model.GetOptions().storeys;
    auto const top = AtStorey(storeys);
    Rectangle const outline{-0.06, -0.06, kWidth + 0.06, kDepth + 0.06};
    model.AddEntity("Roof slab", Layer::Roof, Compose(top, At({0, 0, -kSlabThickness})))
        .Add(model.Shape("slab",
                         [&] {
                             return MakePlate(outline, kSlabThickness, {kStairShaft, kLiftShaft});
                         }),
             Material::Trim)
        .SetProperty("Slab", "Thickness", kSlabThickness);
    AddParapet(model, top);
    AddRoofHouse(model, top);
    AddSolarPanels(model, top);
    AddVentilation(model, top);
}

}  // namespace QuorlanSample
