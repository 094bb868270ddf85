// Note on the peers: they get boxes that are ready, QaabBuilder computes them from the model first (see BoundingBoxes).

#include <Tools/BoundingBoxBuilder.h>
#include <Tools/QaabBuilder.h>

#include "RunWarm.h"
#include "analysis/BuildingModel.h"
#include "support/PlainAnalysis.h"

#if QUORLAN_HAS_EMBREE
#include <embree3/rtcore.h>
#endif

#if QUORLAN_HAS_BULLET
#include <BulletCollision/BroadphaseCollision/btQuantizedBvh.h>
#endif

namespace {

using namespace Quorlan;
using Benchmarks::BuildingModel;
using GeometryObjectLib::AxisAlignedBox3;

void BoxTree(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Tools::QaabBuilder builder;
    Benchmarks::RunWarm(state, [&] {
        if (!builder.Build(model.buffer.data())) state.SkipWithError("no tree");
        benchmark::DoNotOptimize(builder.getNodes().data());
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoxTree)->Apply(Benchmarks::ModelSizes);

void BoxTreePlain(benchmark::State& state) {
    auto const& model = BuildingModel::OfSize(state.range(0));
    Benchmarks::RunWarm(
        state, [&] { benchmark::DoNotOptimize(Testing::PlainTree(Testing::PlainBoxes(model.records)).nodes.data()); });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoxTreePlain)->Apply(Benchmarks::ModelSizes);

#if QUORLAN_HAS_EMBREE || QUORLAN_HAS_BULLET

std::vector<AxisAlignedBox3> ComputeBoxes(BuildingModel const& model) {
    Tools::BoundingBoxBuilder builder;
    builder.Build(model.buffer.data());
    return builder.getBoundingBoxes();
}

#endif

#if QUORLAN_HAS_EMBREE

/// Nodes as small as this interface allows: two child pointers, or one primitive.
struct EmbreeNode {
    RTCBounds bounds[2];
    void* children[2];
    unsigned primitive;
};

void* CreateNode(RTCThreadLocalAllocator allocator, unsigned, void*) {
    return rtcThreadLocalAlloc(allocator, sizeof(EmbreeNode), 16);
}

void SetChildren(void* node, void** children, unsigned count, void*) {
    for (unsigned i = 0; i < count; ++i) static_cast<EmbreeNode*>(node)->children[i] = children[i];
}

void SetBounds(void* node, RTCBounds const** bounds, unsigned count, void*) {
    for (unsigned i = 0; i < count; ++i) static_cast<EmbreeNode*>(node)->bounds[i] = *bounds[i];
}

void* CreateLeaf(RTCThreadLocalAllocator allocator, RTCBuildPrimitive const* primitives, std::size_t, void*) {
    auto* const node = static_cast<EmbreeNode*>(rtcThreadLocalAlloc(allocator, sizeof(EmbreeNode), 16));
    node->primitive = primitives->primID;
    return node;
}

std::vector<RTCBuildPrimitive> MakePrimitives(std::vector<AxisAlignedBox3> const& boxes) {
    std::vector<RTCBuildPrimitive> primitives(boxes.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        auto const lo = boxes[i].GetMin();
        auto const hi = boxes[i].GetMax();
        primitives[i] = {
            static_cast<float>(lo.x), static_cast<float>(lo.y), static_cast<float>(lo.z), 0,
            static_cast<float>(hi.x), static_cast<float>(hi.y), static_cast<float>(hi.z), static_cast<unsigned>(i)};
    }
    return primitives;
}

/// Embree's Morton-code builder on one thread, as all others here.
void BoxTreeEmbreeLow(benchmark::State& state) {
    auto const prepared = MakePrimitives(ComputeBoxes(BuildingModel::OfSize(state.range(0))));
    RTCDevice const device = rtcNewDevice("threads=1,set_affinity=0");
    RTCBVH const bvh = rtcNewBVH(device);
    std::vector<RTCBuildPrimitive> primitives(prepared.size());
    RTCBuildArguments arguments = rtcDefaultBuildArguments();
    arguments.buildQuality = RTC_BUILD_QUALITY_LOW;
    arguments.maxBranchingFactor = 2;
    arguments.minLeafSize = 1;
    arguments.maxLeafSize = 1;
    arguments.bvh = bvh;
    arguments.primitives = primitives.data();
    arguments.primitiveCount = primitives.size();
    arguments.primitiveArrayCapacity = primitives.size();
    arguments.createNode = CreateNode;
    arguments.setNodeChildren = SetChildren;
    arguments.setNodeBounds = SetBounds;
    arguments.createLeaf = CreateLeaf;
    Benchmarks::RunWarm(state, [&] {
        primitives = prepared;  // the builder sorts them
        void* const root = rtcBuildBVH(&arguments);
        if (root == nullptr) state.SkipWithError("no tree");
        benchmark::DoNotOptimize(root);
    });
    rtcReleaseBVH(bvh);
    rtcReleaseDevice(device);
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoxTreeEmbreeLow)->Apply(Benchmarks::ModelSizes);

#endif

#if QUORLAN_HAS_BULLET

btVector3 ToBullet(GeometryObjectLib::Vertex const& v) {
    return {static_cast<btScalar>(v.x), static_cast<btScalar>(v.y), static_cast<btScalar>(v.z)};
}

void BoxTreeBullet(benchmark::State& state) {
    auto const boxes = ComputeBoxes(BuildingModel::OfSize(state.range(0)));
    Benchmarks::RunWarm(state, [&] {
        btQuantizedBvh tree;
        btVector3 lo = ToBullet(boxes[0].GetMin());
        btVector3 hi = ToBullet(boxes[0].GetMax());
        for (auto const& box : boxes) {
            lo.setMin(ToBullet(box.GetMin()));
            hi.setMax(ToBullet(box.GetMax()));
        }
        tree.setQuantizationValues(lo, hi);
        auto& leaves = tree.getLeafNodeArray();
        leaves.resize(static_cast<int>(boxes.size()));
        for (int i = 0; i < leaves.size(); ++i) {
            auto const& box = boxes[static_cast<std::size_t>(i)];
            tree.quantize(leaves[i].m_quantizedAabbMin, ToBullet(box.GetMin()), 0);
            tree.quantize(leaves[i].m_quantizedAabbMax, ToBullet(box.GetMax()), 1);
            leaves[i].m_escapeIndexOrTriangleIndex = i;
        }
        tree.buildInternal();
        benchmark::DoNotOptimize(&tree.getQuantizedNodeArray()[0]);
    });
    Benchmarks::CountInstances(state);
}
BENCHMARK(BoxTreeBullet)->Apply(Benchmarks::ModelSizes);

#endif

}  // namespace
