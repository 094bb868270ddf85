// Every tool over whole models as users have them.
//
// usage: quorlan_whole_benchmarks MODEL.qln... [--benchmark_...]

#include "whole/WholeModel.h"

#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/Increments/Merge.h>
#include <Tools/LodLineBuilder.h>
#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/ModelPicker.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/QaabBuilder.h>
#include <Tools/QuantificationBuilder.h>
#include <Tools/VertexNormalBuilder.h>

#include "RunWarm.h"
#include "increments/ObjectApi.h"
#if defined(QUORLAN_HAS_EMBREE)
#include "picking/EmbreeScene.h"
#endif

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <numeric>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools;
using Benchmarks::WholeModel;

constexpr std::uint32_t kMostForPlainPicks = 5000;  ///< instances; without a tree more take too long

/// Shows the time per item. An iteration works on `count` of them.
void CountItems(benchmark::State& state, double count) {
    state.counters["perItem"] =
        benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <class Builder>
void BuildForInstances(benchmark::State& state, WholeModel const& model) {
    Builder builder;
    for (auto _ : state) {
        if (!builder.Build(model.buffer.data())) state.SkipWithError("not built");
        benchmark::DoNotOptimize(&builder);
    }
    CountItems(state, model.instanceCount);
}

void MeasureEntities(benchmark::State& state, WholeModel const& model) {
    for (auto _ : state) {
        QuantificationBuilder builder(model.buffer.data());
        for (unsigned entity = 0; builder.Build(entity); ++entity) benchmark::DoNotOptimize(builder.GetVolume());
    }
    CountItems(state, model.entityCount);
}

void MakeRenderMeshes(benchmark::State& state, WholeModel const& model) {
    auto const definitions = model.storage.GetModelReader().GetGeometry().GetDefinitionCount();
    VertexNormalBuilder builder;
    std::size_t triangles = 0;
    for (auto _ : state) {
        triangles = 0;
        for (unsigned definition = 0; definition < definitions; ++definition) {
            if (builder.Build(model.buffer, definition, 0.5f)) triangles += builder.GetTriangles().size();
        }
    }
    CountItems(state, static_cast<double>(triangles));
}

template <class Picker, class Pick>
void PickAtViews(benchmark::State& state, WholeModel const& model, Pick const& pick) {
    std::size_t hits = 0;
    for (auto _ : state) {
        for (auto const& view : model.views) {
            auto picker = CampusBenchmark::MakePicker<Picker>(view);
            hits += pick(picker) ? 1 : 0;
            benchmark::DoNotOptimize(picker);
        }
    }
    auto const count = static_cast<double>(model.views.size());
    CountItems(state, count);
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits) / count, benchmark::Counter::kAvgIterations);
}

void PickSurfaces(benchmark::State& state, WholeModel const& model) {
    auto const keepAll = [](EntityIndex_t) { return false; };
    PickAtViews<Picking::ModelPicker>(state, model, [&](Picking::ModelPicker& picker) {
        return picker.PickSurfaces(model.buffer, {}, keepAll, model.tree);
    });
}

void PickSurfacesPlain(benchmark::State& state, WholeModel const& model) {
    std::vector<unsigned> all(model.instanceCount);
    std::iota(all.begin(), all.end(), 0);
    PickAtViews<Picking::ModelInstancesPicker>(state, model, [&](Picking::ModelInstancesPicker& picker) {
        return picker.PickSurfaces(model.buffer, {}, all);
    });
}

#if defined(QUORLAN_HAS_EMBREE)
void PickSurfacesEmbree(benchmark::State& state, WholeModel const& model) {
    EmbreeScene::Device const device;
    EmbreeScene::InstanceScene const scene(device, model.buffer);
    std::size_t hits = 0;
    for (auto _ : state) {
        for (auto const& view : model.views) {
            GeometryObjectLib::Vertex origin;
            GeometryObjectLib::Vertex direction;
            ViewToWorld(view.camera, view.x, view.y, origin, direction);
            hits += scene.IsHit(origin, direction) ? 1 : 0;
        }
    }
    auto const count = static_cast<double>(model.views.size());
    CountItems(state, count);
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits) / count, benchmark::Counter::kAvgIterations);
}
#endif

void OpenModel(benchmark::State& state, WholeModel const& model) {
    Benchmarks::RunWarm(state, [&] {
        auto const storage = ModelStorage::FromBuffer(model.buffer);
        benchmark::DoNotOptimize(&storage);
    });
    CountItems(state, static_cast<double>(model.buffer.size()) / 1e6);
}

void ValidateModel(benchmark::State& state, WholeModel const& model) {
    for (auto _ : state) {
        if (!ModelValidator().Build(model.buffer)) state.SkipWithError("not valid");
    }
    CountItems(state, static_cast<double>(model.buffer.size()) / 1e6);
}

void MergeOnePercent(benchmark::State& state, WholeModel const& model) {
    Increments::Merge merge;
    Benchmarks::RunWarm(state, [&] {
        if (!merge.Build(model.buffer, model.increment)) state.SkipWithError("not merged");
        benchmark::DoNotOptimize(merge.GetResult().data());
    });
    CountItems(state, static_cast<double>(model.buffer.size()) / 1e6);
}

void UnpackAndPack(benchmark::State& state, WholeModel const& model) {
    Benchmarks::RunWarm(state, [&] { benchmark::DoNotOptimize(Benchmarks::UnpackAndPack(model.buffer)); });
    CountItems(state, static_cast<double>(model.buffer.size()) / 1e6);
}

using Function = void (*)(benchmark::State&, WholeModel const&);

constexpr struct {
    char const* name;
    Function function;
} kBenchmarks[] = {{"BoundingBoxes", BuildForInstances<BoundingBoxBuilder>},
                   {"Placements", BuildForInstances<PlacementBuilder>},
                   {"BoxTree", BuildForInstances<QaabBuilder>},
                   {"LodLines", BuildForInstances<LodLineBuilder>},
                   {"Quantities", MeasureEntities},
                   {"RenderMeshes", MakeRenderMeshes},
                   {"PickSurfaces", PickSurfaces},
                   {"PickSurfacesPlain", PickSurfacesPlain},
#if defined(QUORLAN_HAS_EMBREE)
                   {"PickSurfacesEmbree", PickSurfacesEmbree},
#endif
                   {"OpenModel", OpenModel},
                   {"ValidateModel", ValidateModel},
                   {"MergeOnePercent", MergeOnePercent},
                   {"UnpackAndPack", UnpackAndPack}};

void RegisterAll(WholeModel const& model) {
    auto const label = model.name + ", " + std::to_string(model.instanceCount) + " instances";
    for (auto const& [name, function] : kBenchmarks) {
        if (function == PickSurfacesPlain && model.instanceCount > kMostForPlainPicks) continue;
        auto const run = [&model, label, function = function](benchmark::State& state) {
            function(state, model);
            state.SetLabel(label);
        };
        benchmark::RegisterBenchmark(("Whole/" + std::string(name) + '/' + model.name).c_str(), run)
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);  // takes its options away
    std::vector<std::unique_ptr<WholeModel>> models;
    try {
        for (int i = 1; i < argc; ++i) {
            models.push_back(std::make_unique<WholeModel>(argv[i]));
            RegisterAll(*models.back());
        }
    } catch (std::exception const& error) {
        return std::fprintf(stderr, "quorlan_whole_benchmarks: %s\n", error.what()), 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
