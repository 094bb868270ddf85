// Merging and squashing, beside what the bytes cost at least (checking and copying them) and beside FlatBuffers' own
// way of changing a buffer (unpacking it into objects and packing them again).

#include "BuildingModel.h"
#include "ObjectApi.h"
#include "RunWarm.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/EntityMerger.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

#include <benchmark/benchmark.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Benchmarks;
using namespace Quorlan::Tools;

void SetBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void MergeOnePercent(benchmark::State& state) {
    auto const count = static_cast<std::uint32_t>(state.range(0));
    auto const full = WriteFullModel(count);
    auto const increment = WriteIncrement(count, 1);
    Increments::Merge merge;
    RunWarm(state, [&] {
        if (!merge.Build(full, increment)) state.SkipWithError("not built");
        benchmark::DoNotOptimize(merge.GetResult().data());
    });
    SetBytes(state, full.size());
}

/// A base increment of everything, so that the cost per byte compares with that of a merge.
void SquashOnePercent(benchmark::State& state) {
    auto const count = static_cast<std::uint32_t>(state.range(0));
    auto const base = WriteFullModel(count);
    auto const increment = WriteIncrement(count, 1);
    Increments::Squash squash;
    RunWarm(state, [&] {
        if (!squash.Build(base, increment)) state.SkipWithError("not built");
        benchmark::DoNotOptimize(squash.GetResult().data());
    });
    SetBytes(state, base.size());
}

/// What applications do most: take a few entities out of a large model.
void WriteOnePercentIncrement(benchmark::State& state) {
    auto const count = static_cast<std::uint32_t>(state.range(0));
    auto const full = WriteFullModel(count);
    auto const storage = ModelStorage::FromBuffer(full);
    std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> list;
    for (std::uint32_t i = 0; i < count; i += 100) {
        list.emplace_back(OwnerHistoryChangeAction::MODIFIED, EntityIndex_t{i});
    }
    RunWarm(state, [&] {
        Increments::IncrementModelBuilder builder;
        builder.Add(storage.GetModelReader(), list);
        benchmark::DoNotOptimize(builder.GetResult().data());
    });
    SetBytes(state, full.size());
}

void MergeModelAsEntity(benchmark::State& state) {
    auto const full = WriteFullModel(static_cast<std::uint32_t>(state.range(0)));
    auto const storage = ModelStorage::FromBuffer(full);
    RunWarm(state, [&] {
        EntityMerger merger;
        merger.Add(storage.GetModelReader(), GuidOf(1), {}, L"all", OwnerHistoryChangeAction::ADDED);
        benchmark::DoNotOptimize(merger.GetResult().data());
    });
    SetBytes(state, full.size());
}

void CheckAndCopyBytes(benchmark::State& state) {
    auto const full = WriteFullModel(static_cast<std::uint32_t>(state.range(0)));
    RunWarm(state, [&] {
        if (ModelStorage::FromBuffer(full).HasError()) state.SkipWithError("not opened");
    });
    SetBytes(state, full.size());
}

void UnpackAndPackObjects(benchmark::State& state) {
    auto const full = WriteFullModel(static_cast<std::uint32_t>(state.range(0)));
    RunWarm(state, [&] {
        if (UnpackAndPack(full) < full.size() / 2) state.SkipWithError("not packed");
    });
    SetBytes(state, full.size());
}

void Sizes(benchmark::internal::Benchmark* b) { b->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(10000)->Arg(100000); }

BENCHMARK(MergeOnePercent)->Apply(Sizes);
BENCHMARK(SquashOnePercent)->Apply(Sizes);
BENCHMARK(WriteOnePercentIncrement)->Apply(Sizes);
BENCHMARK(MergeModelAsEntity)->Apply(Sizes);
BENCHMARK(CheckAndCopyBytes)->Apply(Sizes);
BENCHMARK(UnpackAndPackObjects)->Apply(Sizes);

}  // namespace
