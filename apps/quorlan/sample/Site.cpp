#include "Parts.h"

namespace QuorlanSample {
namespace {

using Quorlan::OwnerHistoryChangeAction;

constexpr double kGround = -0.3;  ///< [m] level of the lawn
constexpr double kTau = 6.283185307179586;

std::vector<std::pair<double, double>> SphereProfile(double radius, std::uint32_t rings) {
    std::vector<std::pair<double, double>> profile{{0, -radius}};
    for (std::uint32_t i = 1; i < rings; ++i) {
        auto const [c, s] = DirectionAt(0.5 * i / rings);
        profile.emplace_back(radius * s, -radius * c);
    }
    profile.emplace_back(0, radius);
    return profile;
}

void AddGround(SampleModel& model) {
    auto ground = model.AddEntity("Ground", Layer::Site, At({0, 0, kGround}), OwnerHistoryChangeAction::NOCHANGE);
    ground.AddBox({-11, -15, -0.4}, {35, 25, 0}, Material::Grass);
    auto const paving = model.Shape("paving", [] { return MakeTextured(MakeBox({29, 20, 0.08}), 1.2, 1.2); });
    ground.Add(paving, Material::Paving, At({-2.5, -2.5, 0}));
    ground.AddBox({7.5, -9.4, 0}, {10.5, -2.5, 0.06}, Material::Paving);
    ground.AddBox({-11, -14.4, 0.001}, {35, -9.4, 0.04}, Material::Gravel);
    for (std::uint32_t i = 0; i < 10; ++i) {
        ground.AddBox({-9.8 + 4.6 * i, -11.96, 0.041}, {-7.6 + 4.6 * i, -11.84, 0.046}, Material::White);
    }
    ground.SetProperty("Site", "Area", 46.0 * 40.0);

    auto entrance = model.AddEntity("Canopy", Layer::Structure, At({9, 0, 0}));
    entrance.AddBox({-2.0, -2.2, 2.72}, {2.0, -0.07, 2.88}, Material::Metal);
    for (double const x : {-1.7, 1.7}) entrance.Add(model.Cylinder(0.06, 2.94), Material::Metal, At({x, -1.95, -0.22}));
    for (std::uint32_t i = 0; i < 2; ++i) {
        entrance.AddBox({-1.8, -0.9 - 0.3 * i, -0.22}, {1.8, -0.061 - 0.01 * i, -0.06 - 0.07 * i}, Material::Concrete);
    }
}

void AddTree(SampleModel& model, std::uint32_t number, Vertex const& position) {
    auto& random = model.GetRandom();
    auto const crown = model.Shape("crown", [] { return MakeLathe(SphereProfile(1.5, 8), 12); });
    auto const small = model.Shape("small crown", [] { return MakeLathe(SphereProfile(1.05, 8), 12); });
    auto const trunk = model.Shape("trunk", [] { return MakeLathe({{0.22, 0}, {0.13, 2.6}}, 10); });
    auto const place = model.OnSite(At(position, Turn::FromHalfTangent(random.Between(-1, 1))));
    auto const name = L"Tree " + std::to_wstring(number);
    auto tree = model.Adopt(model.GetBuilder().GetEntityWriter().AddEntityWithoutIdentifier(name, place), Layer::Site);
    tree.Add(trunk, Material::Trunk).Add(crown, Material::Leaves, At({0, 0, 3.7}));
    tree.Add(small, Material::Leaves, At({random.Between(0.5, 0.9), random.Between(-0.3, 0.3), 4.8}));
    tree.Add(small, Material::Leaves, At({random.Between(-1.0, -0.6), random.Between(-0.4, 0.4), 4.3}));
}

void AddGarden(SampleModel& model) {
    Vertex const trees[] = {{-7, -5.5, 0}, {-7.5, 3, 0},  {-7, 12, 0}, {-5.5, 21, 0}, {4, 21.5, 0},  {14, 22, 0},
                            {24, 21, 0},   {31.5, 19, 0}, {32, 8, 0},  {31.5, -2, 0}, {25, -6.5, 0}, {-1, -6.8, 0}};
    std::uint32_t number = 0;
    for (auto const& tree : trees) AddTree(model, ++number, {tree.x, tree.y, kGround});

    auto const globe = model.Shape("globe", [] { return MakeLathe(SphereProfile(0.2, 8), 12); });
    for (std::uint32_t i = 0; i < 4; ++i) {
        model.AddEntity("Street lamp " + std::to_string(i + 1), Layer::Site, At({-8.0 + 12.5 * i, -9.1, kGround}))
            .Add(model.Cylinder(0.05, 3.6), Material::Metal)
            .Add(globe, Material::White, At({0, 0, 3.75}));
        auto bench = model.AddEntity("Bench " + std::to_string(i + 1), Layer::Site,
                                     At({-1.0 + 7.2 * i + (i > 1 ? 3.0 : 0.0), -4.2, kGround}));
        bench.AddBox({0, 0, 0.42}, {1.8, 0.45, 0.47}, Material::Oak);
        for (double const x : {0.1, 1.6}) bench.AddBox({x, 0.03, 0}, {x + 0.1, 0.42, 0.42}, Material::Concrete);
    }
    for (std::uint32_t i = 0; i < 2; ++i) {
        model.AddEntity("Hedge " + std::to_string(i + 1), Layer::Site, At({i == 0 ? -10.4 : 11.5, -8.6, kGround}))
            .AddBox({0, 0, 0}, {i == 0 ? 17.0 : 23.0, 0.7, 0.9}, Material::Leaves);
    }
}

/// An axis of the building grid: a line with a bubble at its end.
void AddAxis(SampleModel& model, std::string const& label, Vertex const& start, Vertex const& end) {
    auto const along = (end - start) / Length(end - start);
    GraphicsContainer axis;
    axis.lines.push_back({{0, 0, 0}, end - start});
    axis.arcs.push_back({end - start + 0.5 * along, {0, 0, 1}, along, 0.5, kTau});
    auto const shape = model.Shape("axis " + label, [&] { return axis; });
    auto const entity = model.GetBuilder().GetEntityWriter().AddEntityWithIdentifierText(
        "axis-" + label, L"Axis " + std::wstring(label.begin(), label.end()), model.OnSite(At(start)));
    model.Adopt(entity, Layer::Annotations).Add(shape, Material::Ink).SetProperty("Grid", "Label", label);
}

void AddAnnotations(SampleModel& model) {
    for (std::uint32_t i = 0; i <= 4; ++i) {
        AddAxis(model, std::to_string(i + 1), {kBayWidth * i, kDepth + 2, 0.02}, {kBayWidth * i, -4, 0.02});
    }
    for (std::uint32_t i = 0; i <= 2; ++i) {
        AddAxis(model, std::string(1, static_cast<char>('A' + i)), {kWidth + 2, 7.5 * i, 0.02}, {-4, 7.5 * i, 0.02});
    }
    auto const mark = model.Shape("survey mark", [] { return MakeLathe({{0.12, 0}, {0, 0.25}}, 8); });
    Vertex const position{-10, -8, kGround};
    auto const& origin = model.GetOptions().origin;
    auto const world = origin + position;
    Quorlan::GeometricKey const key{{world.x, world.y, world.z}, {0.12f, 0.12f, 0.25f, 0, 0, 0, 0, 1}};
    auto const entity =
        model.GetBuilder().GetEntityWriter().AddEntityWithGeometricKey(key, L"Survey mark", model.OnSite(At(position)));
    model.Adopt(entity, Layer::Site).Add(mark, Material::Accent);
}

}  // namespace

void AddSite(SampleModel& model) {
    AddGround(model);
    AddGarden(model);
    AddAnnotations(model);
}

}  // namespace QuorlanSample
