#include "picking/Campus.h"
#include "picking/View.h"

#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/ModelPicker.h>

#include <benchmark/benchmark.h>

#include <numeric>

/// Picks over a campus of 1,000 to 1,000,000 instances, at pixels inside rooms and over the whole campus by turns.
namespace {

using CampusBenchmark::Campus;
using CampusBenchmark::GetCampus;
using CampusBenchmark::MakePicker;
using CampusBenchmark::View;
using Quorlan::EntityIndex_t;
using Quorlan::Tools::Picking::ModelInstancesPicker;
using Quorlan::Tools::Picking::ModelPicker;

/// Runs `pick(picker)` at one view after the other and reports how many of them hit.
template <class Picker, class Pick>
void RunPicks(benchmark::State& state, Campus const& campus, Pick const& pick) {
    std::size_t next = 0;
    std::size_t hits = 0;
    for (auto _ : state) {
        View const& view = campus.views[next];
        next = (next + 1) % campus.views.size();
        auto picker = MakePicker<Picker>(view);
        hits += pick(picker) ? 1 : 0;
        benchmark::DoNotOptimize(picker);
    }
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits), benchmark::Counter::kAvgIterations);
}

Campus const& GetCampus(benchmark::State const& state) {
    return CampusBenchmark::GetCampus(static_cast<std::uint32_t>(state.range(0)));
}

bool KeepAll(EntityIndex_t) { return false; }

void PickSurfaces(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    std::size_t candidates = 0;
    auto const count = [&candidates](EntityIndex_t) {
        ++candidates;
        return false;
    };
    RunPicks<ModelPicker>(
        state, campus, [&](ModelPicker& picker) { return picker.PickSurfaces(campus.buffer, {}, count, campus.tree); });
    state.counters["candidates"] =
        benchmark::Counter(static_cast<double>(candidates), benchmark::Counter::kAvgIterations);
}

/// The query alone: the filter drops every candidate.
void FindCandidates(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    auto const dropAll = [](EntityIndex_t) { return true; };
    RunPicks<ModelPicker>(state, campus, [&](ModelPicker& picker) {
        return picker.PickSurfaces(campus.buffer, {}, dropAll, campus.tree);
    });
}

/// What a query costs before its tree is asked: the camera, the inverse of the transform, the list of candidates.
void FindCandidatesInNoTree(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    CampusBenchmark::QuantizedAxisAlignedBoxTree const none({}, {1, 1, 1}, {});
    RunPicks<ModelPicker>(state, campus,
                          [&](ModelPicker& picker) { return picker.PickSurfaces(campus.buffer, {}, KeepAll, none); });
}

void PickEdges(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    RunPicks<ModelPicker>(state, campus, [&](ModelPicker& picker) {
        return picker.PickEdges(campus.buffer, {}, KeepAll, campus.tree, 10);
    });
}

void PickLines(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    RunPicks<ModelPicker>(state, campus, [&](ModelPicker& picker) {
        return picker.PickLines(campus.buffer, {}, KeepAll, campus.tree, 10);
    });
}

/// The plain method: every instance, without a tree.
void PickSurfacesOfAllInstances(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    std::vector<unsigned> all(campus.instanceCount);
    std::iota(all.begin(), all.end(), 0);
    RunPicks<ModelInstancesPicker>(
        state, campus, [&](ModelInstancesPicker& picker) { return picker.PickSurfaces(campus.buffer, {}, all); });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(PickSurfaces)->Apply(Sizes);
BENCHMARK(FindCandidates)->Apply(Sizes);
BENCHMARK(FindCandidatesInNoTree)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(PickEdges)->Apply(Sizes);
BENCHMARK(PickLines)->Apply(Sizes);
BENCHMARK(PickSurfacesOfAllInstances)->RangeMultiplier(10)->Range(1000, 10000)->Unit(benchmark::kMicrosecond);

}  // namespace
