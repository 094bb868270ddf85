#include <Tools/BoundingBoxBuilder.h>

#include "RunWarm.h"
#include "analysis/BuildingModel.h"
#include "support/PlainAnalysis.h"

#if QUORLAN_HAS_EIGEN
#include <Eigen/Geometry>
#endif

namespace {

using namespace Quorlan;
using Benchmarks::BuildingModel;

void BoundingBoxes(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Tools::BoundingBoxBuilder builder;
    builder.Build(model.buffer.data());  // what is measured finds its memory there
    Benchmarks::RunWarm(state, [&] {
        if (!builder.Build(model.buffer.data())) state.SkipWithError("no boxes");
        benchmark::DoNotOptimize(builder.getBoundingBoxes().data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoundingBoxes)->Apply(Benchmarks::ModelSizes);

void BoundingBoxesOfNewTool(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Benchmarks::RunWarm(state, [&] {
        Tools::BoundingBoxBuilder builder;
        if (!builder.Build(model.buffer.data())) state.SkipWithError("no boxes");
        benchmark::DoNotOptimize(builder.getBoundingBoxes().data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoundingBoxesOfNewTool)->Apply(Benchmarks::ModelSizes);

void BoundingBoxesPlain(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Benchmarks::RunWarm(state, [&] { benchmark::DoNotOptimize(Testing::PlainBoxes(model.records).data()); });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoundingBoxesPlain)->Apply(Benchmarks::ModelSizes);

#if QUORLAN_HAS_EIGEN

Eigen::Affine3d ToEigen(PlacementRecord const& placement) {
    Eigen::Vector3d const x = Eigen::Map<Eigen::Vector3f const>(placement.xAxis.data()).cast<double>();
    Eigen::Vector3d const y = Eigen::Map<Eigen::Vector3f const>(placement.yAxis.data()).cast<double>();
    Eigen::Affine3d frame;
    frame.matrix().col(0) << x.normalized(), 0;
    frame.matrix().col(1) << y.normalized(), 0;
    frame.matrix().col(2) << x.cross(y).normalized(), 0;
    frame.matrix().col(3) << Eigen::Map<Eigen::Vector3d const>(placement.origin.data()), 1;
    return frame;
}

void BoundingBoxesEigen(benchmark::State& state) {
    auto const& records = BuildingModel::OfSize(state.range(0)).records;
    Eigen::Affine3d const caller = Eigen::Affine3d::Identity();
    std::vector<Eigen::AlignedBox3d> boxes(records.instances->size());
    Benchmarks::MoveToLargePages(boxes);
    Benchmarks::RunWarm(state, [&] {
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            InstanceRecord const& instance = (*records.instances)[i];
            Testing::RawDefinition const& definition = (*records.definitions)[instance.definitionIndex];
            Eigen::Affine3d const world = caller * (ToEigen((*records.entities)[instance.entityIndex]) *
                                                    ToEigen((*records.placements)[instance.placementIndex]));
            Eigen::AlignedBox3d const local(Eigen::Vector3d(definition.lo.x, definition.lo.y, definition.lo.z),
                                            Eigen::Vector3d(definition.hi.x, definition.hi.y, definition.hi.z));
            boxes[i] = local.transformed(world);
        }
        benchmark::DoNotOptimize(boxes.data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoundingBoxesEigen)->Apply(Benchmarks::ModelSizes);

#endif

}  // namespace
