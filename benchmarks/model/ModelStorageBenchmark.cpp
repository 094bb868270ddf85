// Opening, checking and reading a building: the gate for data from outside, the full check, every record and shape.

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>

#include "increments/BuildingModel.h"

#include "RunWarm.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

using namespace Quorlan;

std::vector<char> MakeBuilding(benchmark::State const& state) {
    Benchmarks::BuildingModel building(static_cast<std::uint32_t>(state.range(0)), 0);
    building.AddEntities(0, 1, OwnerHistoryChangeAction::NOCHANGE);
    return building.Create();
}

void CountBytes(benchmark::State& state, std::vector<char> const& buffer) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(buffer.size()));
    state.counters["perItem"] =
        benchmark::Counter(static_cast<double>(buffer.size()) / 1e6,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetLabel("per MB");
}

void OpenModel(benchmark::State& state) {
    auto const buffer = MakeBuilding(state);
    Quorlan::Benchmarks::RunWarm(state, [&] {
        auto const storage = ModelStorage::FromBuffer(buffer);
        if (storage.HasError()) state.SkipWithError("not opened");
        benchmark::DoNotOptimize(&storage);
    });
    CountBytes(state, buffer);
}
BENCHMARK(OpenModel)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

/// The building names some materials and layers that it does not have; they are found.
void ValidateModel(benchmark::State& state) {
    auto const buffer = MakeBuilding(state);
    for (auto _ : state) {
        ModelValidator validator;
        benchmark::DoNotOptimize(validator.Build(buffer));
    }
    CountBytes(state, buffer);
}
BENCHMARK(ValidateModel)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

void ReadModel(benchmark::State& state) {
    auto const buffer = MakeBuilding(state);
    auto const storage = ModelStorage::FromBuffer(buffer);
    auto const& geometry = storage.GetModelReader().GetGeometry();
    for (auto _ : state) {
        InstanceRecord instance;
        AffineTransform placement;
        GeometryObjectLib::FacetedBRep shape;
        for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
            geometry.GetInstance(instance, i);
            geometry.GetPlacement(placement, instance.placementIndex);
            benchmark::DoNotOptimize(placement);
        }
        for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
            geometry.GetFacetedBRep(shape, i);
            benchmark::DoNotOptimize(shape.vertices.data());
        }
    }
    CountBytes(state, buffer);
}
BENCHMARK(ReadModel)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

/// What moving the bytes costs at the least.
void CopyModel(benchmark::State& state) {
    auto const buffer = MakeBuilding(state);
    std::vector<char> copy(buffer.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), buffer.data(), buffer.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    CountBytes(state, buffer);
}
BENCHMARK(CopyModel)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

/// The bandwidth of copying from memory to memory, that the limits in the table of scripts/bench are taken from.
void CopyMemory(benchmark::State& state) {
    std::vector<char> const from(static_cast<std::size_t>(state.range(0)), 1);
    std::vector<char> to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * 2 * state.range(0));  // read and written
}
BENCHMARK(CopyMemory)->Arg(1 << 20)->Arg(16 << 20)->Arg(256 << 20)->Unit(benchmark::kMillisecond);

}  // namespace
