#include "Parts.h"

#include <vector>

namespace QuorlanSample {
namespace {

constexpr double kSideBayWidth = (kDepth - 2 * kFacadeThickness) / 3;
constexpr double kBalconyDepth = 1.5;
constexpr Rectangle kBalcony{0.7, -kBalconyDepth, 4.3, 0};

struct Opening {
    Rectangle rectangle;
    std::uint32_t mullions;
    bool hasSill;
};

/// One bay: a panel, what fills its openings, and perhaps a balcony.
struct Bay {
    char const* shape;  ///< names the definition that equal bays share
    double width;
    std::vector<Opening> openings;
    Material material = Material::Plaster;
    bool hasBalcony = false;
};

Bay const kWindowBay{"window bay", kBayWidth, {{{0.9, 0.9, 2.5, 2.5}, 1, true}, {{3.5, 0.9, 5.1, 2.5}, 1, true}}};
Bay const kBalconyBay{"balcony bay",
                      kBayWidth,
                      {{{1.2, 0.02, 3.6, 2.4}, 1, false}, {{4.5, 0.9, 5.3, 2.4}, 0, true}},
                      Material::Accent,
                      true};
Bay const kNorthBay{"north bay", kBayWidth, {{{1.0, 1.1, 2.2, 2.4}, 0, true}, {{3.8, 1.1, 5.0, 2.4}, 0, true}}};
Bay const kSideBay{"side bay", kSideBayWidth, {{{1.4, 0.9, 3.4, 2.5}, 1, true}}};
Bay const kShopBay{"shop bay", kBayWidth, {{{0.5, 0.35, 5.5, 2.6}, 3, true}}, Material::Brick};
Bay const kEntranceBay{"entrance bay", kBayWidth, {{{1.8, 0.02, 4.2, 2.6}, 1, false}}, Material::Brick};
Bay const kGroundNorthBay{"ground north bay", kBayWidth, {{{2.0, 1.2, 4.0, 2.4}, 1, true}}, Material::Brick};
Bay const kGroundSideBay{"ground side bay", kSideBayWidth, {{{1.4, 0.9, 3.4, 2.6}, 1, true}}, Material::Brick};

GeometryDefinitionIndex_t PanelOf(SampleModel& model, Bay const& bay) {
    std::vector<Rectangle> openings;
    for (auto const& opening : bay.openings) openings.push_back(opening.rectangle);
    auto const make = [&] { return MakePanel({0, 0, bay.width, kClearHeight}, kFacadeThickness, openings); };
    if (bay.material != Material::Brick) return model.Shape(bay.shape, make);
    return model.Shape(bay.shape, [&] { return MakeTextured(make(), 0.5, 0.15); });
}

void AddBalcony(SampleModel& model, std::string const& name, AffineTransform const& placement) {
    auto balcony = model.AddEntity(name, Layer::Structure, placement);
    balcony.AddBox({kBalcony.left, kBalcony.bottom, -0.2}, {kBalcony.right, -0.08, -0.02}, Material::Concrete);
    balcony.SetProperty("Balcony", "Area", (kBalcony.right - kBalcony.left) * kBalconyDepth);
    auto const front = kBalcony.bottom + 0.06, level = -0.02;
    AddRailing(model, name + ", railing front", Compose(placement, At({kBalcony.left + 0.06, front, level})),
               kBalcony.right - kBalcony.left - 0.12);
    for (double const x : {kBalcony.left + 0.06, kBalcony.right - 0.06}) {
        AddRailing(model, name + (x < 2 ? ", railing left" : ", railing right"),
                   Compose(placement, At({x, front + 0.03, level}, Turn::Quarters(1))), kBalconyDepth - 0.14);
    }
}

void AddBay(SampleModel& model, std::string const& name, AffineTransform const& placement, Bay const& bay) {
    auto wall = model.AddEntity("Wall " + name, Layer::Walls, placement, Quorlan::OwnerHistoryChangeAction::NOCHANGE);
    wall.Add(PanelOf(model, bay), bay.material);
    wall.SetProperty("Wall", "IsExternal", true);
    wall.SetProperty("Wall", "ThermalTransmittance", bay.material == Material::Brick ? 0.28 : 0.21);
    wall.SetProperty("Wall", "Finish", std::string(bay.material == Material::Brick ? "clinker" : "mineral plaster"));
    if (&bay == &kWindowBay) wall.AddBox({2.56, -0.04, 0.9}, {3.44, 0.02, 2.5}, Material::Cladding);
    for (std::size_t i = 0; i < bay.openings.size(); ++i) {
        auto const& opening = bay.openings[i];
        AddWindow(model, "Window " + name + "." + std::to_string(i + 1), placement, opening.rectangle, opening.mullions,
                  opening.hasSill);
    }
    if (bay.hasBalcony) AddBalcony(model, "Balcony " + name, placement);
}

Bay const& SouthBay(std::uint32_t storey, std::uint32_t bay) {
    if (storey == 0) return bay == 1 ? kEntranceBay : kShopBay;
    return (storey + bay) % 2 == 0 ? kBalconyBay : kWindowBay;
}

}  // namespace

void AddFacade(SampleModel& model, std::uint32_t storey) {
    auto const base = AtStorey(storey);
    auto const nameOf = [&](char const* side, std::uint32_t bay) {
        return std::string(side) + " " + std::to_string(bay + 1) + ", " + StoreyName(storey);
    };
    for (std::uint32_t i = 0; i < 4; ++i) {
        auto const south = Compose(base, At({kBayWidth * i, 0, 0}));
        auto const north = Compose(base, At({kWidth - kBayWidth * i, kDepth, 0}, Turn::Quarters(2)));
        AddBay(model, nameOf("south", i), south, SouthBay(storey, i));
        AddBay(model, nameOf("north", i), north, storey == 0 ? kGroundNorthBay : kNorthBay);
    }
    for (std::uint32_t i = 0; i < 3; ++i) {
        auto const along = kFacadeThickness + kSideBayWidth * i;
        auto const east = Compose(base, At({kWidth, along, 0}, Turn::Quarters(1)));
        auto const west = Compose(base, At({0, kDepth - along, 0}, Turn::Quarters(3)));
        AddBay(model, nameOf("east", i), east, storey == 0 ? kGroundSideBay : kSideBay);
        AddBay(model, nameOf("west", i), west, storey == 0 ? kGroundSideBay : kSideBay);
    }
}

}  // namespace QuorlanSample
