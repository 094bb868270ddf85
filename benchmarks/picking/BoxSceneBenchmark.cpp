#include "picking/BoxTreePeers.h"
#include "picking/Campus.h"
#include "picking/EmbreeRay.h"

#include <benchmark/benchmark.h>
#include <embree3/rtcore.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

/// The candidates along a pick ray from Embree: a scene of boxes, built with medium quality, that is asked for all of
/// them. Its ray is a half line; every box whose bounds its traversal reaches is tested and counted, none ends it.
namespace {

using CampusBenchmark::Campus;
using CampusBenchmark::Vertex;
using GeometryObjectLib::AxisAlignedBox3;

struct Boxes {
    std::vector<RTCBounds> bounds;
};

void GetBounds(RTCBoundsFunctionArguments const* arguments) {
    *arguments->bounds_o = static_cast<Boxes const*>(arguments->geometryUserPtr)->bounds[arguments->primID];
}

struct CountingContext {
    RTCIntersectContext context;  ///< first, so that a pointer to it is one to this
    std::size_t count;
};

/// The slab test; it reports no hit, so that the walk goes on to the end.
void CountBox(RTCIntersectFunctionNArguments const* arguments) {
    auto const& ray = reinterpret_cast<RTCRayHit const*>(arguments->rayhit)->ray;
    RTCBounds const& b = static_cast<Boxes const*>(arguments->geometryUserPtr)->bounds[arguments->primID];
    float const x0 = (b.lower_x - ray.org_x) / ray.dir_x, x1 = (b.upper_x - ray.org_x) / ray.dir_x;
    float const y0 = (b.lower_y - ray.org_y) / ray.dir_y, y1 = (b.upper_y - ray.org_y) / ray.dir_y;
    float const z0 = (b.lower_z - ray.org_z) / ray.dir_z, z1 = (b.upper_z - ray.org_z) / ray.dir_z;
    float const in = std::max({std::min(x0, x1), std::min(y0, y1), std::min(z0, z1), 0.0f});
    float const out = std::min({std::max(x0, x1), std::max(y0, y1), std::max(z0, z1)});
    if (in <= out) ++reinterpret_cast<CountingContext*>(arguments->context)->count;
}

Boxes Narrow(std::vector<AxisAlignedBox3> const& boxes) {
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    Boxes narrow;
    for (auto const& box : boxes) {
        auto const lo = box.GetMin();
        auto const hi = box.GetMax();
        auto const down = [](double v) { return std::nextafter(static_cast<float>(v), -kInfinite); };
        auto const up = [](double v) { return std::nextafter(static_cast<float>(v), kInfinite); };
        narrow.bounds.push_back({down(lo.x), down(lo.y), down(lo.z), 0, up(hi.x), up(hi.y), up(hi.z), 0});
    }
    return narrow;
}

void FindCandidatesWithEmbree(benchmark::State& state) {
    Campus const& campus = CampusBenchmark::GetCampus(static_cast<std::uint32_t>(state.range(0)));
    Boxes boxes = Narrow(ComputeBoxes(campus));
    RTCDevice const device = rtcNewDevice("threads=1");
    RTCScene const scene = rtcNewScene(device);
    rtcSetSceneBuildQuality(scene, RTC_BUILD_QUALITY_MEDIUM);
    RTCGeometry const geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry, static_cast<unsigned>(boxes.bounds.size()));
    rtcSetGeometryUserData(geometry, &boxes);
    rtcSetGeometryBoundsFunction(
        geometry, [](RTCBoundsFunctionArguments const* arguments) { GetBounds(arguments); }, nullptr);
    rtcSetGeometryIntersectFunction(geometry, CountBox);
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene, geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene);

    std::size_t next = 0;
    CountingContext counting{};
    for (auto _ : state) {
        auto const& view = campus.views[next];
        next = (next + 1) % campus.views.size();
        Vertex origin;
        Vertex direction;
        ViewToWorld(view.camera, view.x, view.y, origin, direction);
        rtcInitIntersectContext(&counting.context);
        RTCRayHit query = CampusBenchmark::MakeEmbreeRay(origin, direction);
        rtcIntersect1(scene, &counting.context, &query);
    }
    state.counters["candidates"] =
        benchmark::Counter(static_cast<double>(counting.count), benchmark::Counter::kAvgIterations);
    rtcReleaseScene(scene);
    rtcReleaseDevice(device);
}
BENCHMARK(FindCandidatesWithEmbree)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

}  // namespace
