#include "picking/BoxTreePeers.h"
#include "picking/Campus.h"

#include <Tools/Picking/ViewProjection.h>

#include <BulletCollision/BroadphaseCollision/btQuantizedBvh.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

/// The candidates along a pick ray from a quantized tree that is not ours, over the same boxes.
namespace {

using CampusBenchmark::Campus;
using CampusBenchmark::Vertex;
using GeometryObjectLib::AxisAlignedBox3;

btVector3 Narrow(Vertex const& v) {
    return {static_cast<btScalar>(v.x), static_cast<btScalar>(v.y), static_cast<btScalar>(v.z)};
}

struct Counter final : btNodeOverlapCallback {
    std::size_t count = 0;
    void processNode(int, int) override { ++count; }
};

std::unique_ptr<btQuantizedBvh> BuildTree(std::vector<AxisAlignedBox3> const& boxes) {
    btVector3 lo = Narrow(boxes.front().GetMin());
    btVector3 hi = Narrow(boxes.front().GetMax());
    for (auto const& box : boxes) {
        lo.setMin(Narrow(box.GetMin()));
        hi.setMax(Narrow(box.GetMax()));
    }
    auto tree = std::make_unique<btQuantizedBvh>();
    tree->setQuantizationValues(lo, hi);
    auto& leaves = tree->getLeafNodeArray();
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        btQuantizedBvhNode node;
        tree->quantizeWithClamp(node.m_quantizedAabbMin, Narrow(boxes[i].GetMin()), 0);
        tree->quantizeWithClamp(node.m_quantizedAabbMax, Narrow(boxes[i].GetMax()), 1);
        node.m_escapeIndexOrTriangleIndex = static_cast<int>(i);
        leaves.push_back(node);
    }
    tree->buildInternal();
    return tree;
}

void FindCandidatesWithBullet(benchmark::State& state) {
    Campus const& campus = CampusBenchmark::GetCampus(static_cast<std::uint32_t>(state.range(0)));
    auto const tree = BuildTree(ComputeBoxes(campus));
    std::size_t next = 0;
    Counter counter;
    for (auto _ : state) {
        auto const& view = campus.views[next];
        next = (next + 1) % campus.views.size();
        Vertex origin;
        Vertex direction;
        ViewToWorld(view.camera, view.x, view.y, origin, direction);
        tree->reportRayOverlappingNodex(&counter, Narrow(origin), Narrow(origin + direction * 1e4));
    }
    state.counters["candidates"] =
        benchmark::Counter(static_cast<double>(counter.count), benchmark::Counter::kAvgIterations);
}

BENCHMARK(FindCandidatesWithBullet)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

}  // namespace
