#pragma once

#include "support/RawModel.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Quorlan::Benchmarks {

/// A building-like model: storeys with long thin walls, columns and runs of pipes. Most placements are turned by
/// quarter turns, one wing of the building stands askew. About one entity for two instances, shared shapes.
struct BuildingModel {
    std::vector<char> buffer;
    Testing::RawModel records;  ///< the same instances, placements and bounds, for the plain computations

    /// Written once for each size and kept. The seed is fixed.
    static BuildingModel const& OfSize(std::int64_t instanceCount);
};

/// The library's buffers and results of 2 MB and more are in large pages, where the system has them: so that peers read
/// and write memory of the same kind, theirs is too.
template <class T>
void MoveToLargePages(std::vector<T>& elements) {
#if defined(__linux__)
    constexpr std::size_t kPage = 4096;
    std::vector<T> moved;
    moved.reserve(elements.size());
    auto const begin = (reinterpret_cast<std::uintptr_t>(moved.data()) + kPage - 1) / kPage * kPage;
    auto const end = reinterpret_cast<std::uintptr_t>(moved.data() + elements.size()) / kPage * kPage;
    if (begin + (std::size_t{1} << 21) <= end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    moved.assign(elements.begin(), elements.end());
    elements.swap(moved);
#else
    static_cast<void>(elements);
#endif
}

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
