// Area, volume and centre of solids: the library from faces, its own triangulation included; CGAL from triangles that
// are given.

#include <Tools/QuantificationBuilder.h>

#include "peers/CgalMesh.h"
#include "peers/TrianglesOf.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

struct Solids {
    char const* name;
    std::vector<RawBRep> shapes;
};

Solids SolidsAt(std::int64_t number) {
    switch (number) {
        case 0: return {"2000 boxes", std::vector<RawBRep>(2000, RawBox({0, 0, 0}, {4, 0.2F, 3}))};
        case 1: return {"250 prisms of 32 sides", std::vector<RawBRep>(250, RawPrism(32))};
        case 2: return {"torus of 16000 quadrilaterals", {RawTorus(160, 100)}};
        default: return {"torus of 32000 triangles", {Benchmarks::Triangulated(RawTorus(160, 100))}};
    }
}

void CountTriangles(benchmark::State& state, Solids const& solids) {
    auto const perShape = Benchmarks::TrianglesOf(solids.shapes.front()).indices.size();
    state.counters["perItem"] =
        benchmark::Counter(static_cast<double>(perShape * solids.shapes.size()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetLabel(solids.name);
}

/// Every shape in an entity of its own; a new tool each time, as it remembers shapes.
void SolidQuantities(benchmark::State& state) {
    auto const solids = SolidsAt(state.range(0));
    RawModel model;
    for (auto const& shape : solids.shapes) model.AddInstance(model.AddEntity(), model.AddBRep(shape));
    auto const buffer = model.Write();
    for (auto _ : state) {
        Tools::QuantificationBuilder builder(buffer.data());
        double sum = 0;
        for (unsigned entity = 0; entity < solids.shapes.size(); ++entity) {
            if (!builder.Build(entity)) state.SkipWithError("no quantities");
            sum += builder.GetVolume() + builder.GetArea() + builder.GetCenterOfGravity().x;
        }
        benchmark::DoNotOptimize(sum);
    }
    CountTriangles(state, solids);
}
BENCHMARK(SolidQuantities)->DenseRange(0, 3);

#if QUORLAN_HAS_CGAL
void SolidQuantitiesCgal(benchmark::State& state) {
    auto const solids = SolidsAt(state.range(0));
    std::vector<Benchmarks::CgalMesh> meshes;
    for (auto const& shape : solids.shapes) {
        auto const triangles = Benchmarks::TrianglesOf(shape);
        meshes.emplace_back(triangles.points, triangles.indices);
    }
    for (auto _ : state) {
        double sum = 0;
        for (auto const& mesh : meshes) sum += mesh.MeasureQuantities();
        benchmark::DoNotOptimize(sum);
    }
    CountTriangles(state, solids);
}
BENCHMARK(SolidQuantitiesCgal)->DenseRange(0, 3);
#endif

}  // namespace
