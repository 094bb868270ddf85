// Axis lines of many shapes: the library, and the same sums in plain scalars with Eigen's solver where it is installed.

#include <Tools/LodLineBRepBuilder.h>

#include "support/MeshShapes.h"
#include "support/PlainLodLine.h"

#include <benchmark/benchmark.h>

#ifdef QUORLAN_HAS_EIGEN
#include <Eigen/Eigenvalues>
#endif

namespace {

using namespace Quorlan::Testing;

/// About 16000 vertices in all: many boxes, fewer prisms, one torus; turned, so that no tensor is diagonal.
std::vector<RawBRep> ShapesAt(std::int64_t number) {
    std::vector<RawBRep> shapes;
    switch (number) {
        case 0: shapes.assign(2000, RawBox({0, 0, 0}, {10, 2, 1})); break;
        case 1: shapes.assign(250, RawPrism(32, 1, 7)); break;
        default: shapes.assign(1, RawTorus(160, 100)); break;
    }
    float turn = 0;
    for (auto& shape : shapes) {
        turn += 0.37F;
        float const c = std::cos(turn), s = std::sin(turn);
        for (auto& v : *shape.vertices) {
            v = {c * v.x - s * v.y, s * v.x + c * v.y, v.z};
            v = {v.x, c * v.y - s * v.z, s * v.y + c * v.z};
        }
    }
    return shapes;
}

void NameShapes(benchmark::State& state, std::vector<RawBRep> const& shapes) {
    char const* const names[] = {"2000 boxes", "250 prisms of 32 sides", "torus of 16000 vertices"};
    std::size_t vertices = 0;
    for (auto const& shape : shapes) vertices += shape.vertices->size();
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(vertices));
    state.SetLabel(names[state.range(0)]);
}

void LodLines(benchmark::State& state) {
    auto const shapes = ShapesAt(state.range(0));
    RawModel model;
    for (auto const& shape : shapes) model.AddBRep(shape);
    auto const buffer = model.Write();
    Quorlan::Tools::LodLineBRepBuilder builder;
    for (auto _ : state) {
        if (!builder.Build(buffer.data())) state.SkipWithError("not built");
        benchmark::DoNotOptimize(builder.GetLine(1, 0));
    }
    NameShapes(state, shapes);
}
BENCHMARK(LodLines)->DenseRange(0, 2);

#ifdef QUORLAN_HAS_EIGEN
void LodLinesEigen(benchmark::State& state) {
    auto const shapes = ShapesAt(state.range(0));
    auto const findAxis = [](float xx, float yy, float zz, float xy, float xz, float yz) {
        Eigen::Matrix3f tensor;
        tensor << xx, xy, xz, xy, yy, yz, xz, yz, zz;
        Eigen::SelfAdjointEigenSolver<Eigen::Matrix3f> const solver(tensor);
        auto const axis = solver.eigenvectors().col(0);  // the smallest value comes first
        return Vector3f{axis.x(), axis.y(), axis.z()};
    };
    std::vector<Quorlan::Tools::LodLineBRepBuilder::line_s> lines(shapes.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < shapes.size(); ++i) lines[i] = PlainLodLine(*shapes[i].vertices, findAxis);
        benchmark::DoNotOptimize(lines.data());
    }
    NameShapes(state, shapes);
}
BENCHMARK(LodLinesEigen)->DenseRange(0, 2);
#endif

}  // namespace
