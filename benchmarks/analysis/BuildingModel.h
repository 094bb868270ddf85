#pragma once

#include "support/RawModel.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Benchmarks {

/// A building-like model: storeys with long thin walls, columns and runs of pipes. Most placements are turned by
/// quarter turns, one wing of the building stands askew. About one entity for two instances, shared shapes.
struct BuildingModel {
    std::vector<char> buffer;
    Testing::RawModel records;  ///< the same instances, placements and bounds, for the plain computations

    /// Written once for each size and kept. The seed is fixed.
    static BuildingModel const& OfSize(std::int64_t instanceCount);
};

/// The sizes of the models, three decades of them.
inline void ModelSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

/// Shows the time per instance.
inline void CountInstances(benchmark::State& state) {
    state.counters["perInstance"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace Quorlan::Benchmarks
