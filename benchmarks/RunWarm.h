#pragma once

#include <benchmark/benchmark.h>

namespace Quorlan::Benchmarks {

/// Times run(), after a run that is not counted: in it the system provides the memory that the others find there. The
/// host of a virtual machine takes idle memory back, and giving it again can take longer than the work.
template <class Run>
void RunWarm(benchmark::State& state, Run const& run) {
    run();
    for (auto _ : state) run();
}

}  // namespace Quorlan::Benchmarks
