#include "picking/Campus.h"
#include "picking/EmbreeScene.h"

#include <benchmark/benchmark.h>

/// Embree on the same campus: the nearest triangle along a pick ray, in a scene of instances of the shared shapes, as
/// the model holds it, and in one of all triangles in the world.
namespace {

using CampusBenchmark::Campus;
using CampusBenchmark::Vertex;

template <class Query>
void RunQueries(benchmark::State& state, Campus const& campus, Query const& query) {
    std::size_t next = 0;
    std::size_t hits = 0;
    for (auto _ : state) {
        auto const& view = campus.views[next];
        next = (next + 1) % campus.views.size();
        Vertex origin;
        Vertex direction;
        ViewToWorld(view.camera, view.x, view.y, origin, direction);
        hits += query(origin, direction);
    }
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits), benchmark::Counter::kAvgIterations);
}

Campus const& GetCampus(benchmark::State const& state) {
    return CampusBenchmark::GetCampus(static_cast<std::uint32_t>(state.range(0)));
}

void PickSurfacesWithEmbreeInstances(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    EmbreeScene::Device const device;
    EmbreeScene::InstanceScene const scene(device, campus.buffer);
    RunQueries(state, campus,
               [&](Vertex const& o, Vertex const& d) -> std::size_t { return scene.IsHit(o, d) ? 1 : 0; });
}
BENCHMARK(PickSurfacesWithEmbreeInstances)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

/// At a million instances it would take 25 million triangles.
void PickSurfacesWithEmbreeTriangles(benchmark::State& state) {
    Campus const& campus = GetCampus(state);
    EmbreeScene::Device const device;
    EmbreeScene::Scene scene(device);
    scene.Add(EmbreeScene::Flatten(EmbreeScene::Parts(campus.buffer)));
    scene.Commit();
    RunQueries(state, campus,
               [&](Vertex const& o, Vertex const& d) -> std::size_t { return scene.IsHit(o, d) ? 1 : 0; });
}
BENCHMARK(PickSurfacesWithEmbreeTriangles)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

}  // namespace
