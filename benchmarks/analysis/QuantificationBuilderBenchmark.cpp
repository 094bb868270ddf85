#include <Quorlan/ModelStorage.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/QuantificationBuilder.h>

#include "RunWarm.h"
#include "analysis/BuildingModel.h"

namespace {

using namespace Quorlan;
using Benchmarks::BuildingModel;
using GeometryObjectLib::FacetedBRep;

/// All entities of a model, the preparation included.
void Quantities(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    auto const entityCount = static_cast<unsigned>(model.records.entities->size());
    Benchmarks::RunWarm(state, [&] {
        Tools::QuantificationBuilder builder(model.buffer.data());
        double volume = 0;
        for (unsigned entity = 0; entity < entityCount; ++entity) {
            if (!builder.Build(entity)) state.SkipWithError("no quantities");
            volume += builder.GetVolume();
        }
        benchmark::DoNotOptimize(volume);
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(Quantities)->Apply(Benchmarks::ModelSizes);

struct PlainQuantities {
    double area = 0;
    double volume = 0;
    Vertex moment;
};

/// Fans over convex faces without holes, which all shapes of the model have.
PlainQuantities MeasurePlain(FacetedBRep const& shape) {
    PlainQuantities q;
    for (auto const& loop : shape.faces) {
        Vertex const& a = shape.vertices[loop[0]];
        for (std::size_t i = 2; i < loop.size(); ++i) {
            Vertex const& b = shape.vertices[loop[i - 1]];
            Vertex const& c = shape.vertices[loop[i]];
            q.area += 0.5 * Length(Cross(b - a, c - a));
            double const volume = Dot(a, Cross(b, c)) / 6;
            q.volume += volume;
            q.moment = q.moment + (a + b + c) * 0.25 * volume;
        }
    }
    return q;
}

/// The same sums, instance by instance, each shape measured whenever it occurs.
void QuantitiesPlain(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    auto const storage = ModelStorage::FromBuffer(model.buffer);
    auto const& geometry = storage.GetModelReader().GetGeometry();
    FacetedBRep shape;
    Benchmarks::RunWarm(state, [&] {
        Tools::PlacementBuilder placements;
        placements.Build(model.buffer.data());
        std::vector<PlainQuantities> entities(model.records.entities->size());
        for (std::size_t i = 0; i < model.records.instances->size(); ++i) {
            InstanceRecord const& instance = (*model.records.instances)[i];
            geometry.GetFacetedBRep(shape, instance.definitionIndex);
            PlainQuantities const q = MeasurePlain(shape);
            PlainQuantities& entity = entities[instance.entityIndex];
            entity.area += q.area;
            entity.volume += q.volume;
            entity.moment =
                entity.moment + TransformPoint(placements.getPlacements()[i], q.moment / q.volume) * q.volume;
        }
        benchmark::DoNotOptimize(entities.data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(QuantitiesPlain)->Apply(Benchmarks::ModelSizes);

}  // namespace
