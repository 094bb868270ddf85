#include "Parts.h"

#include <cmath>

namespace QuorlanSample {
namespace {

using Quorlan::OwnerHistoryChangeAction;

constexpr double kEdge = 0.06;  ///< [m] by which slabs stand out of the facade
constexpr std::uint32_t kStepsPerFlight = 9;
constexpr double kRise = kStoreyHeight / (2 * kStepsPerFlight);
constexpr double kRun = 0.28;
constexpr double kFlightWidth = 1.1;
constexpr double kFlightStart = 0.6;
constexpr double kLanding = kFlightStart + kRun * kStepsPerFlight;

void AddSlab(SampleModel& model, std::uint32_t storey) {
    Rectangle const outline{-kEdge, -kEdge, kWidth + kEdge, kDepth + kEdge};
    auto slab =
        model.AddEntity("Slab, " + StoreyName(storey), Layer::Structure,
                        Compose(AtStorey(storey), At({0, 0, -kSlabThickness})), OwnerHistoryChangeAction::NOCHANGE);
    if (storey == 0) {
        slab.Add(model.Shape("ground slab", [&] { return MakePlate(outline, kSlabThickness, {}); }),
                 Material::Concrete);
    } else {
        slab.Add(model.Shape("slab",
                             [&] {
                                 return MakePlate(outline, kSlabThickness, {kStairShaft, kLiftShaft});
                             }),
                 Material::Trim);
    }
    slab.SetProperty("Slab", "LoadBearing", true);
    slab.SetProperty("Slab", "Thickness", kSlabThickness);
    slab.SetProperty("Slab", "Storey", std::int64_t{storey});
}

void AddColumnsAndBeams(SampleModel& model, std::uint32_t storey) {
    auto const name = [&](char const* what, std::uint32_t x, std::uint32_t y) {
        return std::string(what) + " " + static_cast<char>('A' + x) + std::to_string(y + 1) + ", " + StoreyName(storey);
    };
    double const rows[] = {0.55, 7.2};
    auto const round = model.Cylinder(0.18, kClearHeight);
    for (std::uint32_t x = 0; x < 3; ++x) {
        for (std::uint32_t y = 0; y < 2; ++y) {
            auto const place = Compose(AtStorey(storey), At({kBayWidth * (x + 1), rows[y], 0}));
            model.AddEntity(name("Column", x, y), Layer::Structure, place, OwnerHistoryChangeAction::NOCHANGE)
                .Add(round, Material::Concrete)
                .SetProperty("Column", "LoadBearing", true);
        }
        auto const cross = Compose(AtStorey(storey), At({kBayWidth * (x + 1), 0, kClearHeight}));
        model.AddEntity(name("Beam", x, 0), Layer::Structure, cross, OwnerHistoryChangeAction::NOCHANGE)
            .AddBox({-0.15, 0.75, -0.3}, {0.15, 7.0, -0.005}, Material::Concrete)
            .SetProperty("Beam", "Span", 6.25);
    }
    for (std::uint32_t x = 0; x < 4; ++x) {
        auto const left = x == 0 ? kFacadeThickness : kBayWidth * x + 0.2;
        auto const right = x == 3 ? kWidth - kFacadeThickness : kBayWidth * (x + 1) - 0.2;
        model
            .AddEntity(name("Beam", x, 1), Layer::Structure, Compose(AtStorey(storey), At({0, 7.2, kClearHeight})),
                       OwnerHistoryChangeAction::NOCHANGE)
            .AddBox({left, -0.12, -0.34}, {right, 0.12, -0.005}, Material::Concrete)
            .SetProperty("Beam", "Span", right - left);
    }
}

/// Nine steps that rise along `y`, from y = 0 at z = 0, and a handrail at x = `railX`.
void AddFlight(SampleModel& model, std::string const& name, AffineTransform const& placement, double railX) {
    auto flight = model.AddEntity(name, Layer::Stairs, placement, OwnerHistoryChangeAction::NOCHANGE);
    for (std::uint32_t i = 0; i < kStepsPerFlight; ++i) {
        flight.AddBox({0, kRun * i, kRise * (i + 1) - 0.17}, {kFlightWidth, kRun * i + 0.30, kRise * (i + 1)},
                      Material::Concrete);
    }
    flight.SetProperty("Stair", "RiserHeight", kRise);
    flight.SetProperty("Stair", "NumberOfRisers", std::int64_t{kStepsPerFlight});

    auto railing = model.AddEntity(name + ", railing", Layer::Railings, placement);
    for (std::uint32_t i = 0; i < kStepsPerFlight; ++i) {
        auto const y = kRun * (i + 0.5), z = kRise * (i + 1);
        railing.AddBox({railX - 0.01, y - 0.01, z}, {railX + 0.01, y + 0.01, z + 0.9}, Material::Metal);
    }
    auto const length = std::sqrt(kRun * kRun + kRise * kRise) * kStepsPerFlight;
    railing.Add(model.Box({length, 0.05, 0.04}), Material::Oak,
                Along({railX + 0.025, 0, kRise + 0.85}, {0, kRun, kRise}, {-1, 0, 0}));
}

void AddStair(SampleModel& model, std::uint32_t storey) {
    auto const foot = Compose(AtStorey(storey), At({kStairShaft.left, kStairShaft.bottom, 0}));
    auto const name = "Stair, " + StoreyName(storey);
    auto const width = kStairShaft.right - kStairShaft.left;
    AddFlight(model, name + ", flight 1", Compose(foot, At({0, kFlightStart, 0})), kFlightWidth - 0.05);
    AddFlight(model, name + ", flight 2",
              Compose(foot, At({width, kLanding, kRise * kStepsPerFlight}, Turn::Quarters(2))), kFlightWidth - 0.05);
    model.AddEntity(name + ", landing", Layer::Stairs, foot, OwnerHistoryChangeAction::NOCHANGE)
        .AddBox({0, kLanding, kRise * kStepsPerFlight - 0.2},
                {width, kStairShaft.top - kStairShaft.bottom, kRise * kStepsPerFlight}, Material::Concrete);
}

}  // namespace

void AddStructure(SampleModel& model, std::uint32_t storey) {
    AddSlab(model, storey);
    AddColumnsAndBeams(model, storey);
    AddStair(model, storey);
}

}  // namespace QuorlanSample
