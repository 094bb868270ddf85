#include "analysis/BuildingModel.h"

#include <Quorlan/ModelBuilder.h>

#include "support/RandomModel.h"
#include "support/ReadRecords.h"

#include <cmath>
#include <map>

namespace Quorlan::Benchmarks {
namespace {

using GeometryObjectLib::FacetedBRep;
using Testing::RandomNumbers;

constexpr double kStoreyHeight = 3.2;       // [m]
constexpr double kGridStep = 6;             // [m] between columns
constexpr std::int64_t kPerStorey = 2'000;  // instances
constexpr double kWingAngle = 0.35;         // [rad] of the wing that stands askew

FacetedBRep MakeBox(Vertex const& size) {
    FacetedBRep box;
    for (double const z : {0.0, size.z}) {
        box.vertices.insert(box.vertices.end(), {{0, 0, z}, {size.x, 0, z}, {size.x, size.y, z}, {0, size.y, z}});
    }
    box.faces = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    return box;
}

class BuildingWriter {
public:
    explicit BuildingWriter(std::int64_t instanceCount) {
        auto& shapes = builder_.GetGeometryDefinitionBuilder();
        auto const shapeCount = static_cast<std::uint32_t>(instanceCount / 50 + 10);
        for (std::uint32_t i = 0; i < shapeCount; ++i) {
            walls_.push_back(shapes.AddBRep(MakeBox({random_.Between(1, 12), random_.Between(0.1, 0.4), 3})));
            columns_.push_back(shapes.AddBRep(MakeBox({0.4, random_.Between(0.3, 0.6), 3.2})));
            pipes_.push_back(shapes.AddBRep(MakeBox({random_.Between(0.3, 6), 0.05, 0.05})));
        }
        for (std::int64_t i = 0; i < instanceCount; ++i) AddInstance(i);
    }

    std::vector<char> Create() const { return builder_.Create(); }

private:
    void AddInstance(std::int64_t i) {
        double const z = kStoreyHeight * static_cast<double>(i / kPerStorey);
        Vertex const at{kGridStep * random_.Below(20), kGridStep * random_.Below(10), z};
        std::uint32_t const kind = random_.Below(10);
        bool const startsEntity = kind < 5 || i == 0 || random_.Below(8) == 0;  // pipes come in runs of one entity
        if (startsEntity) entity_ = builder_.GetEntityWriter().AddEntity({}, L"", PlaceAt(at, random_.Below(8) == 0));
        auto const& shapes = kind < 3 ? walls_ : kind < 5 ? columns_ : pipes_;
        auto const shape = shapes[random_.Below(static_cast<std::uint32_t>(shapes.size()))];
        Vertex const offset{random_.Between(0, 5), random_.Between(0, 5), random_.Between(0, 0.2)};
        builder_.GetInstanceWriter().AddInstance(entity_, shape, kInvalidIndex, kInvalidIndex, PlaceAt(offset, false));
    }

    AffineTransform PlaceAt(Vertex const& origin, bool isAskew) {
        double const quarter = random_.Below(4);
        double const c = isAskew ? std::cos(kWingAngle) : std::round(std::cos(quarter * 1.5707963));
        double const s = isAskew ? std::sin(kWingAngle) : std::round(std::sin(quarter * 1.5707963));
        GeometryObjectLib::Matrix4 matrix;
        matrix.m = {c, -s, 0, origin.x, s, c, 0, origin.y, 0, 0, 1, origin.z, 0, 0, 0, 1};
        return AffineTransform::FromMatrix(matrix);
    }

    RandomNumbers random_{20};
    ModelBuilder builder_;
    std::vector<GeometryDefinitionIndex_t> walls_;
    std::vector<GeometryDefinitionIndex_t> columns_;
    std::vector<GeometryDefinitionIndex_t> pipes_;
    EntityIndex_t entity_{};
};

}  // namespace

BuildingModel const& BuildingModel::OfSize(std::int64_t instanceCount) {
    static std::map<std::int64_t, BuildingModel> models;
    auto [entry, isNew] = models.try_emplace(instanceCount);
    if (isNew) {
        entry->second.buffer = BuildingWriter(instanceCount).Create();
        auto& records = entry->second.records = Testing::ReadRecords(entry->second.buffer);
        MoveToLargePages(*records.entities);
        MoveToLargePages(*records.placements);
        MoveToLargePages(*records.instances);
        MoveToLargePages(*records.definitions);
    }
    return entry->second;
}

}  // namespace Quorlan::Benchmarks
