#include <Tools/PlacementBuilder.h>

#include "RunWarm.h"
#include "analysis/BuildingModel.h"
#include "support/PlainAnalysis.h"

#include <glm/geometric.hpp>
#include <glm/mat4x4.hpp>

#if QUORLAN_HAS_EIGEN
#include <Eigen/Geometry>
#endif

namespace {

using namespace Quorlan;
using Benchmarks::BuildingModel;

void PlacementsOfNewTool(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Benchmarks::RunWarm(state, [&] {
        Tools::PlacementBuilder builder;
        if (!builder.Build(model.buffer.data())) state.SkipWithError("no placements");
        benchmark::DoNotOptimize(builder.getPlacements().data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(PlacementsOfNewTool)->Apply(Benchmarks::ModelSizes);

void Placements(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Tools::PlacementBuilder builder;
    builder.Build(model.buffer.data());  // what is measured finds its memory there
    Benchmarks::RunWarm(state, [&] {
        if (!builder.Build(model.buffer.data())) state.SkipWithError("no placements");
        benchmark::DoNotOptimize(builder.getPlacements().data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(Placements)->Apply(Benchmarks::ModelSizes);

void PlacementsWithTransform(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Tools::PlacementBuilder builder;
    AffineTransform transform;
    transform.matrix(0, 3) = 5;
    builder.Build(model.buffer.data(), transform);
    Benchmarks::RunWarm(state, [&] {
        if (!builder.Build(model.buffer.data(), transform)) state.SkipWithError("no placements");
        benchmark::DoNotOptimize(builder.getPlacements().data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(PlacementsWithTransform)->Apply(Benchmarks::ModelSizes);

void PlacementsPlain(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Benchmarks::RunWarm(state, [&] { benchmark::DoNotOptimize(Testing::PlainPlacements(model.records).data()); });
    Benchmarks::CountInstances(state);
}
BENCHMARK(PlacementsPlain)->Apply(Benchmarks::ModelSizes);

template <class Matrix, class Convert>
void PlacementsBy(benchmark::State& state, Convert convert) {
    auto const& records = BuildingModel::OfSize(state.range(0)).records;
    std::vector<Matrix> matrices(records.instances->size());
    Benchmarks::MoveToLargePages(matrices);
    Benchmarks::RunWarm(state, [&] {
        for (std::size_t i = 0; i < matrices.size(); ++i) {
            InstanceRecord const& instance = (*records.instances)[i];
            matrices[i] = convert((*records.entities)[instance.entityIndex]) *
                          convert((*records.placements)[instance.placementIndex]);
        }
        benchmark::DoNotOptimize(matrices.data());
    });
    Benchmarks::CountInstances(state);
}

glm::dmat4 ToGlm(PlacementRecord const& p) {
    glm::dvec3 const x(p.xAxis[0], p.xAxis[1], p.xAxis[2]);
    glm::dvec3 const z = glm::cross(x, glm::dvec3(p.yAxis[0], p.yAxis[1], p.yAxis[2]));
    glm::dvec3 const y = glm::cross(z, x);
    return {glm::dvec4(glm::normalize(x), 0), glm::dvec4(glm::normalize(y), 0), glm::dvec4(glm::normalize(z), 0),
            glm::dvec4(p.origin[0], p.origin[1], p.origin[2], 1)};
}

void PlacementsGlm(benchmark::State& state) { PlacementsBy<glm::dmat4>(state, ToGlm); }
BENCHMARK(PlacementsGlm)->Apply(Benchmarks::ModelSizes);

#if QUORLAN_HAS_EIGEN

Eigen::Affine3d ToEigen(PlacementRecord const& placement) {
    Eigen::Vector3d const x = Eigen::Map<Eigen::Vector3f const>(placement.xAxis.data()).cast<double>();
    Eigen::Vector3d const y = Eigen::Map<Eigen::Vector3f const>(placement.yAxis.data()).cast<double>();
    Eigen::Vector3d const z = x.cross(y);
    Eigen::Affine3d frame;
    frame.matrix().col(0) << x.normalized(), 0;
    frame.matrix().col(1) << z.cross(x).normalized(), 0;
    frame.matrix().col(2) << z.normalized(), 0;
    frame.matrix().col(3) << Eigen::Map<Eigen::Vector3d const>(placement.origin.data()), 1;
    return frame;
}

void PlacementsEigen(benchmark::State& state) { PlacementsBy<Eigen::Affine3d>(state, ToEigen); }
BENCHMARK(PlacementsEigen)->Apply(Benchmarks::ModelSizes);

#endif

}  // namespace
