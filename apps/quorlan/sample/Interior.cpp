#include "Parts.h"

namespace QuorlanSample {
namespace {

using Quorlan::OwnerHistoryChangeAction;

constexpr double kCorridorSouth = 7.4;  ///< [m] y of the walls along the corridor
constexpr double kCorridorNorth = 8.9;
constexpr double kCoreWest = 9.45;
constexpr double kCoreEast = 14.55;
constexpr double kCoreWall = 0.2;
constexpr double kPartition = 0.12;

struct Partition {
    char const* name;
    AffineTransform placement;
    double length;
    double thickness;
    std::vector<Rectangle> doors;
    Material material = Material::White;
};

void AddPartition(SampleModel& model, std::uint32_t storey, Partition const& partition) {
    auto const name = std::string(partition.name) + ", " + StoreyName(storey);
    auto const place = Compose(AtStorey(storey), partition.placement);
    auto const height = kClearHeight - 0.002;  // clear of the slab's underside
    auto key = "partition " + std::to_string(partition.length) + " " + std::to_string(partition.thickness);
    for (auto const& door : partition.doors) key += " " + std::to_string(door.left);
    auto const shape = model.Shape(key, [&] {
        return MakePanel({0, 0, partition.length, height}, partition.thickness, partition.doors);
    });
    model.AddEntity("Wall " + name, Layer::Walls, place)
        .Add(shape, partition.material)
        .SetProperty("Wall", "IsExternal", false)
        .SetProperty("Wall", "FireRating", std::string(partition.thickness > 0.15 ? "EI90" : "EI30"))
        .SetProperty("Wall", "Length", partition.length);
    for (std::size_t i = 0; i < partition.doors.size(); ++i) {
        AddDoor(model, "Door " + name + "." + std::to_string(i + 1), place, partition.doors[i], partition.thickness);
    }
}

void AddPartitions(SampleModel& model, std::uint32_t storey) {
    auto const bay = (kWidth - 2 * kFacadeThickness) / 4;
    char const* const corridor[] = {"corridor 1", "corridor 2", "corridor 3", "corridor 4"};
    for (std::uint32_t i = 0; i < 4; ++i) {
        auto const place = At({kFacadeThickness + bay * i, kCorridorSouth, 0});
        AddPartition(model, storey, {corridor[i], place, bay, kPartition, {{2.4, 0.02, 3.4, 2.1}}});
    }
    char const* const cross[] = {"cross 1", "cross 2", "cross 3"};
    for (std::uint32_t i = 0; i < 3; ++i) {
        auto const place = At({kBayWidth * (i + 1) + kPartition / 2, 0.8, 0}, Turn::Quarters(1));
        AddPartition(model, storey, {cross[i], place, 6.2, kPartition, {{4.6, 0.02, 5.6, 2.1}}});
    }
    auto const north = kCoreWest - kFacadeThickness;
    for (double const x : {kFacadeThickness, kCoreEast}) {
        AddPartition(model, storey,
                     {x < kCoreWest ? "north-west" : "north-east",
                      At({x, kCorridorNorth, 0}),
                      north,
                      kPartition,
                      {{4.0, 0.02, 5.0, 2.1}}});
    }
}

void AddCore(SampleModel& model, std::uint32_t storey) {
    auto const depth = kDepth - kFacadeThickness - kCorridorNorth;
    auto const west = At({kCoreWest + kCoreWall, kCorridorNorth, 0}, Turn::Quarters(1));
    auto const east = At({kCoreEast, kCorridorNorth, 0}, Turn::Quarters(1));
    auto const south = At({kCoreWest + kCoreWall, kCorridorNorth, 0});
    auto const width = kCoreEast - kCoreWest - 2 * kCoreWall;
    AddPartition(model, storey, {"core west", west, depth, kCoreWall, {}, Material::Concrete});
    AddPartition(model, storey, {"core east", east, depth, kCoreWall, {}, Material::Concrete});
    AddPartition(
        model, storey,
        {"core south", south, width, kCoreWall, {{0.5, 0.02, 1.5, 2.1}, {3.2, 0.02, 4.3, 2.1}}, Material::Concrete});
    AddPartition(model, storey,
                 {"lift shaft", At({12.5, 9.1, 0}, Turn::Quarters(1)), depth - 0.2, 0.1, {}, Material::Concrete});
}

/// Rises and branches of one material in one shaft. `x` is the shaft, `lane` the place in it.
void AddPipe(SampleModel& model, std::uint32_t storey, double x, std::uint32_t lane, double radius, Material material) {
    auto const number = std::to_string(lane + 1) + (x < kWidth / 2 ? " west, " : " east, ") + StoreyName(storey);
    auto const place = Compose(AtStorey(storey), At({x, 9.3 + 0.25 * lane, 0}));
    auto riser = model.AddEntity("Pipe riser " + number, Layer::Pipes, place);
    riser.Add(model.Cylinder(radius, kStoreyHeight), material, At({0, 0, -kSlabThickness}));
    for (double const z : {0.0, 1.4, 2.6}) {
        riser.Add(model.Cylinder(radius * 1.4, 0.06), Material::Steel, At({0, 0, z}));
    }
    riser.SetProperty("Pipe", "NominalDiameter", 2000 * radius);

    auto const height = 2.45 - 0.12 * lane;
    auto const westward = x > kWidth / 2;
    auto branch = model.AddEntity("Pipe branch " + number, Layer::Pipes,
                                  Compose(place, At({0, -0.8, height}, Turn::Quarters(westward ? 0 : 2))));
    branch.Add(model.Cylinder(radius * 0.8, 8.0), material, Along({0, 0, 0}, {0, 0, -1}, {0, 1, 0}));
    for (std::uint32_t i = 0; i < 4; ++i) {
        branch.AddBox({0.5 + 2.2 * i, -0.01, 0}, {0.52 + 2.2 * i, 0.01, kClearHeight - height - 0.01}, Material::Steel);
    }
    branch.SetProperty("Pipe", "NominalDiameter", 1600 * radius);
}

void AddPipes(SampleModel& model, std::uint32_t storey) {
    for (double const x : {9.2, 14.8}) {
        AddPipe(model, storey, x, 0, 0.05, Material::WaterPipe);
        AddPipe(model, storey, x, 1, 0.04, Material::Copper);
        AddPipe(model, storey, x, 2, 0.07, Material::Steel);
    }
    auto sprinklers = model.AddEntity("Sprinklers, " + StoreyName(storey), Layer::Pipes,
                                      Compose(AtStorey(storey), At({1.5, 8.2, 2.8})));
    sprinklers.Add(model.Cylinder(0.02, 21.0), Material::Accent, Along({0, 0, 0}, {0, 0, -1}, {0, 1, 0}));
    for (std::uint32_t i = 0; i < 8; ++i) {
        sprinklers.Add(model.Cylinder(0.03, 0.08), Material::Steel, At({0.5 + 2.8 * i, 0, -0.08}));
    }
    sprinklers.SetProperty("Sprinkler", "Heads", std::int64_t{8});
}

}  // namespace

void AddInterior(SampleModel& model, std::uint32_t storey) {
    AddPartitions(model, storey);
    AddCore(model, storey);
    AddPipes(model, storey);
    model
        .AddEntity("Wall removed, " + StoreyName(storey), Layer::Walls, AtStorey(storey),
                   OwnerHistoryChangeAction::DELETED)
        .SetProperty("Wall", "IsExternal", false);
}

}  // namespace QuorlanSample
