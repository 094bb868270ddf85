#include <Tools/QuantificationBuilder.h>

#include "analysis/BuildingModel.h"

namespace {

using namespace Quorlan;
using Benchmarks::BuildingModel;

/// All entities of a model, the preparation included.
void Quantities(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    auto const entityCount = static_cast<unsigned>(model.records.entities->size());
    for (auto _ : state) {
        Tools::QuantificationBuilder builder(model.buffer.data());
        double volume = 0;
        for (unsigned entity = 0; entity < entityCount; ++entity) {
            if (!builder.Build(entity)) state.SkipWithError("no quantities");
            volume += builder.GetVolume();
        }
        benchmark::DoNotOptimize(volume);
    }
    Benchmarks::CountInstances(state);
}
BENCHMARK(Quantities)->Apply(Benchmarks::ModelSizes);

}  // namespace
