// Render meshes of four shapes: the library, the plain transcription of its rules, and a peer where it is installed.

#include <Tools/VertexNormalBuilder.h>

#include "mesh/VtkNormals.h"
#include "peers/CgalMesh.h"
#include "peers/TrianglesOf.h"

#include "support/MeshShapes.h"
#include "support/PlainVertexNormals.h"

#include <benchmark/benchmark.h>

namespace {

using namespace Quorlan::Testing;

constexpr float kCreaseAngle = 0.5F;

RawBRep ShapeAt(std::int64_t number) {
    switch (number) {
        case 0: return RawBox({0, 0, 0}, {1, 1, 1});
        case 1: return RawPrism(128);
        case 2: return RawPlate(8);
        default: return RawTorus(160, 100);
    }
}

void NameShape(benchmark::State& state) {
    char const* const names[] = {"cube", "prism of 128 sides", "plate with 8 holes", "torus of 16000 vertices"};
    state.SetLabel(names[state.range(0)]);
}

void VertexNormals(benchmark::State& state) {
    auto const buffer = ModelOf(ShapeAt(state.range(0)));
    Quorlan::Tools::VertexNormalBuilder builder;
    for (auto _ : state) {
        if (!builder.BuildBRep(buffer, 0, kCreaseAngle)) state.SkipWithError("not built");
        benchmark::DoNotOptimize(builder.GetTriangles().data());
    }
    state.counters["triangles"] = static_cast<double>(builder.GetTriangles().size());
    NameShape(state);
}
BENCHMARK(VertexNormals)->DenseRange(0, 3);

/// A new builder for every mesh: what memory kept from build to build is worth.
void VertexNormalsFresh(benchmark::State& state) {
    auto const buffer = ModelOf(ShapeAt(state.range(0)));
    for (auto _ : state) {
        Quorlan::Tools::VertexNormalBuilder builder;
        if (!builder.BuildBRep(buffer, 0, kCreaseAngle)) state.SkipWithError("not built");
        benchmark::DoNotOptimize(builder.GetTriangles().data());
    }
    NameShape(state);
}
BENCHMARK(VertexNormalsFresh)->DenseRange(0, 3);

void VertexNormalsPlain(benchmark::State& state) {
    auto const shape = ShapeAt(state.range(0));
    for (auto _ : state) {
        PlainVertexNormals const plain(shape, kCreaseAngle);
        benchmark::DoNotOptimize(plain.triangles.data());
    }
    NameShape(state);
}
BENCHMARK(VertexNormalsPlain)->DenseRange(0, 3);

#ifdef QUORLAN_HAS_CGAL
/// CGAL gets triangles. It has one normal for each vertex, without creases.
void VertexNormalsCgal(benchmark::State& state) {
    auto const triangles = Quorlan::Benchmarks::TrianglesOf(ShapeAt(state.range(0)));
    Quorlan::Benchmarks::CgalMesh mesh(triangles.points, triangles.indices);
    for (auto _ : state) benchmark::DoNotOptimize(mesh.ComputeNormals());
    state.counters["triangles"] = static_cast<double>(triangles.indices.size());
    NameShape(state);
}
BENCHMARK(VertexNormalsCgal)->DenseRange(0, 3);
#endif

#ifdef QUORLAN_HAS_VTK
/// VTK has no faces with holes, and its triangle filter fails on loops with bridges: the plate is given to it in
/// triangles, which spares it that work.
void VertexNormalsVtk(benchmark::State& state) {
    auto const shape = ShapeAt(state.range(0));
    VtkNormals normals(shape.holes ? Quorlan::Benchmarks::Triangulated(shape) : shape);
    long long triangles = 0;
    for (auto _ : state) {
        triangles = normals.Build(kCreaseAngle);
    }
    state.counters["triangles"] = static_cast<double>(triangles);
    NameShape(state);
}
BENCHMARK(VertexNormalsVtk)->DenseRange(0, 3);
#endif

}  // namespace
