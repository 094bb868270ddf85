#include "picking/Campus.h"

#include <Quorlan/ModelBuilder.h>
#include <Tools/QaabBuilder.h>

#include <cmath>
#include <map>
#include <random>

namespace CampusBenchmark {
namespace {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;
using Quorlan::EntityIndex_t;
using Quorlan::GeometryDefinitionIndex_t;
using Quorlan::kInvalidIndex;

constexpr double kRoom = 5;      // [m]
constexpr double kStorey = 3.5;  // [m]
constexpr std::uint32_t kStoreys = 10;
constexpr std::uint32_t kRoomsX = 5;
constexpr std::uint32_t kRoomsY = 4;
constexpr double kPlot = 45;  // [m]
constexpr std::size_t kViewCount = 512;

FacetedBRep MakePrism(std::vector<Vertex> const& outline, double height) {
    FacetedBRep prism;
    auto const n = static_cast<std::uint32_t>(outline.size());
    for (double const z : {0.0, height}) {
        for (Vertex const& p : outline) prism.vertices.push_back({p.x, p.y, p.z + z});
    }
    prism.faces.resize(2);
    for (std::uint32_t i = 0; i < n; ++i) {
        prism.faces[0].push_back(n - 1 - i);
        prism.faces[1].push_back(n + i);
        prism.faces.push_back({i, (i + 1) % n, n + (i + 1) % n, n + i});
    }
    return prism;
}

FacetedBRep MakeBox(double x, double y, double z) { return MakePrism({{0, 0, 0}, {x, 0, 0}, {x, y, 0}, {0, y, 0}}, z); }

FacetedBRep MakeColumn(double radius, double height) {
    std::vector<Vertex> outline;
    for (int i = 0; i < 16; ++i) {
        outline.push_back({radius * std::cos(i * 0.39269908169872414), radius * std::sin(i * 0.39269908169872414), 0});
    }
    return MakePrism(outline, height);
}

/// A wall along x whose door hole stands off the floor, with the hole's four cheeks.
FacetedBRep MakeWallWithHole() {
    FacetedBRep wall = MakeBox(kRoom, 0.2, 3);
    for (double const y : {0.0, 0.2}) {
        for (Vertex const& p : {Vertex{2, y, 0.1}, {3, y, 0.1}, {3, y, 2.2}, {2, y, 2.2}}) wall.vertices.push_back(p);
    }
    wall.holes[2] = {{11, 10, 9, 8}};    // face 2 looks along -y
    wall.holes[4] = {{12, 13, 14, 15}};  // face 4 looks along +y
    for (std::uint32_t i = 0; i < 4; ++i) {
        std::uint32_t const next = (i + 1) % 4;
        wall.faces.push_back({8 + i, 8 + next, 12 + next, 12 + i});
    }
    return wall;
}

GraphicsContainer MakePipes() {
    GraphicsContainer pipes;
    for (double const x : {0.5, 0.7, 0.9}) {
        pipes.lines.push_back({{x, 0.3, 2.9}, {x, kRoom - 0.5, 2.9}});
        pipes.arcs.push_back({{x, kRoom - 0.5, 2.7}, {1, 0, 0}, {0, 0, 1}, 0.2, -1.5707963267948966});
    }
    return pipes;
}

AffineTransform At(Vertex const& origin, double angle = 0) {
    GeometryObjectLib::Matrix4 matrix;
    matrix(0, 0) = std::cos(angle);
    matrix(0, 1) = -std::sin(angle);
    matrix(1, 0) = std::sin(angle);
    matrix(1, 1) = std::cos(angle);
    matrix(0, 3) = origin.x;
    matrix(1, 3) = origin.y;
    matrix(2, 3) = origin.z;
    return AffineTransform::FromMatrix(matrix);
}

class CampusMaker {
public:
    explicit CampusMaker(std::uint32_t instanceCount) : limit_(instanceCount) {
        auto& shapes = builder_.GetGeometryDefinitionBuilder();
        slab_ = shapes.AddBRep(MakeBox(kRoom, kRoom, 0.3));
        wall_ = shapes.AddBRep(MakeBox(kRoom, 0.2, 3));
        wallWithHole_ = shapes.AddBRep(MakeWallWithHole());
        column_ = shapes.AddBRep(MakeColumn(0.2, 3));
        door_ = shapes.AddBRep(MakeBox(1, 0.05, 2.1));
        glass_ = shapes.AddBRep(MakeBox(2, 0.04, 1.5));
        top_ = shapes.AddBRep(MakeBox(1.6, 0.8, 0.03));
        leg_ = shapes.AddBRep(MakeColumn(0.03, 0.7));
        seat_ = shapes.AddBRep(MakeBox(0.45, 0.45, 0.05));
        pipes_ = shapes.AddGraphicsContainer(MakePipes());
        opaque_ = builder_.GetMaterialWriter().AddMaterial({});
        clear_ = builder_.GetMaterialWriter().AddMaterial({{200, 220, 255, 90}, -1, true});
    }

    Campus Make() {
        std::uint32_t const perRoom = 26;
        std::uint32_t const perBuilding = perRoom * kRoomsX * kRoomsY * kStoreys;
        auto const side = static_cast<std::uint32_t>(std::ceil(std::sqrt(double(limit_) / perBuilding)));
        for (std::uint32_t plot = 0; plot < side * side && count_ < limit_; ++plot) {
            AddBuilding({kPlot * (plot % side), kPlot * (plot / side), 0});
        }
        Campus campus;
        campus.buffer = builder_.Create();
        campus.instanceCount = count_;
        Quorlan::Tools::QaabBuilder boxes;
        boxes.Build(campus.buffer.data());
        campus.tree = {boxes.getOrigin(), boxes.getBvhQuantization(), boxes.getNodes()};
        AddViews(campus, kPlot * side);
        return campus;
    }

private:
    double Between(double lower, double upper) { return std::uniform_real_distribution<double>(lower, upper)(random_); }

    void Add(GeometryDefinitionIndex_t shape, Vertex const& origin, double angle = 0, bool isGlass = false) {
        if (count_ == limit_) return;
        builder_.GetInstanceWriter().AddInstance(entity_, shape, isGlass ? clear_ : opaque_, kInvalidIndex,
                                                 At(origin, angle));
        ++count_;
    }

    void AddRoom(Vertex const& o) {
        constexpr double kQuarter = 1.5707963267948966;
        Add(slab_, o - Vertex{0, 0, 0.3});
        Add(wallWithHole_, o);
        Add(wall_, o + Vertex{0.2, 0, 0}, kQuarter);
        Add(column_, o + Vertex{0.3, 0.3, 0});
        Add(column_, o + Vertex{4.7, 0.3, 0});
        Add(door_, o + Vertex{2, 0.1, 0.1}, Between(0, 1.5));
        Add(glass_, o + Vertex{1.5, kRoom - 0.1, 0.9}, 0, true);
        Add(pipes_, o);
        for (double const x : {0.8, 2.9}) {
            Vertex const table = o + Vertex{x, Between(1.5, 3), 0};
            Add(top_, table + Vertex{0, 0, 0.7});
            for (Vertex const& p : {Vertex{0.1, 0.1, 0}, {1.5, 0.1, 0}, {1.5, 0.7, 0}, {0.1, 0.7, 0}}) {
                Add(leg_, table + p);
            }
            Vertex const chair = table + Vertex{Between(0.2, 0.9), -0.6, 0};
            Add(seat_, chair + Vertex{0, 0, 0.42}, Between(-0.3, 0.3));
            for (Vertex const& p : {Vertex{0.05, 0.05, -0.25}, {0.4, 0.05, -0.25}, {0.2, 0.4, -0.25}}) {
                Add(leg_, chair + p);
            }
        }
    }

    void AddBuilding(Vertex const& corner) {
        AffineTransform const place = At(corner + Vertex{10, 10, 0}, Between(-0.5, 0.5));
        for (std::uint32_t storey = 0; storey < kStoreys; ++storey) {
            for (std::uint32_t room = 0; room < kRoomsX * kRoomsY; ++room) {
                entity_ = builder_.GetEntityWriter().AddEntityWithoutIdentifier(L"Room", place);
                Vertex const o{kRoom * (room % kRoomsX), kRoom * (room / kRoomsX), kStorey * storey};
                AddRoom(o);
                if (rooms_.size() < 4096) rooms_.push_back(TransformPoint(place.matrix, o + Vertex{2.5, 2.5, 1.6}));
                if (count_ == limit_) return;
            }
        }
    }

    void AddViews(Campus& campus, double size) {
        for (std::size_t i = 0; i < kViewCount; ++i) {
            double const angle = Between(0, 6.28);
            Vertex location = rooms_[random_() % rooms_.size()];
            Vertex direction{std::cos(angle), std::sin(angle), Between(-0.3, 0.3)};
            if (i % 2 == 1) {
                Vertex const center{size / 2, size / 2, 15};
                location = center + Vertex{-direction.x * size, -direction.y * size, 30 + 0.3 * size};
                direction = center - location;
            }
            direction = direction / Length(direction);
            campus.views.push_back({ViewProjection::FromPerspective(location, direction, {0, 0, 1}, 1, 1280, 720),
                                    Between(100, 1180), Between(200, 620)});
        }
    }

    Quorlan::ModelBuilder builder_;
    std::mt19937 random_{1};
    std::uint32_t limit_;
    std::uint32_t count_ = 0;
    std::uint32_t opaque_ = 0;
    std::uint32_t clear_ = 0;
    EntityIndex_t entity_{};
    std::vector<Vertex> rooms_;  ///< eye points
    GeometryDefinitionIndex_t slab_, wall_, wallWithHole_, column_, door_, glass_, top_, leg_, seat_, pipes_;
};

}  // namespace

Campus const& GetCampus(std::uint32_t instanceCount) {
    static std::map<std::uint32_t, Campus> campuses;
    auto const known = campuses.find(instanceCount);
    return known != campuses.end() ? known->second
                                   : campuses.emplace(instanceCount, CampusMaker(instanceCount).Make()).first->second;
}

}  // namespace CampusBenchmark
