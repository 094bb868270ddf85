#include "picking/Campus.h"

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelStorage.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/VertexNormalBuilder.h>

#include <benchmark/benchmark.h>
#include <embree3/rtcore.h>

#include <map>
#include <vector>

/// The nearest triangle along a pick ray, of the same scene with every instance's triangles in the world.
namespace {

using CampusBenchmark::Campus;
using CampusBenchmark::Vertex;

struct Mesh {
    std::vector<float> positions;
    std::vector<unsigned> indices;
};

Mesh FlattenScene(Campus const& campus) {
    auto const storage = Quorlan::ModelStorage::FromBuffer(campus.buffer);
    auto const& geometry = storage.GetModelReader().GetGeometry();
    Quorlan::Tools::PlacementBuilder placements;
    placements.Build(campus.buffer.data());
    std::map<std::uint32_t, Quorlan::Tools::VertexNormalBuilder> shapes;
    Mesh mesh;
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
        Quorlan::InstanceRecord instance;
        geometry.GetInstance(instance, i);
        auto const [entry, isNew] = shapes.try_emplace(instance.definitionIndex);
        auto& shape = entry->second;
        if (isNew) shape.Build(campus.buffer, instance.definitionIndex, 0.5f);
        auto const first = static_cast<unsigned>(mesh.positions.size() / 3);
        for (auto const& p : shape.GetPositions()) {
            Vertex const world = TransformPoint(placements.getPlacements()[i], {p.x, p.y, p.z});
            for (double const c : {world.x, world.y, world.z}) mesh.positions.push_back(static_cast<float>(c));
        }
        for (auto const& triangle : shape.GetTriangles()) {
            for (unsigned const corner : {triangle.a, triangle.b, triangle.c}) {
                mesh.indices.push_back(first + shape.GetCorners()[corner].position);
            }
        }
    }
    return mesh;
}

class Scene {
public:
    explicit Scene(Mesh const& mesh) : device_(rtcNewDevice("threads=1")), scene_(rtcNewScene(device_)) {
        RTCGeometry const geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* const positions = static_cast<float*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), mesh.positions.size() / 3));
        auto* const indices = static_cast<unsigned*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), mesh.indices.size() / 3));
        std::copy(mesh.positions.begin(), mesh.positions.end(), positions);
        std::copy(mesh.indices.begin(), mesh.indices.end(), indices);
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(scene_, geometry);
        rtcReleaseGeometry(geometry);
        rtcCommitScene(scene_);
    }
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;
    ~Scene() {
        rtcReleaseScene(scene_);
        rtcReleaseDevice(device_);
    }

    bool Hits(Vertex const& origin, Vertex const& direction) const {
        RTCRayHit query{};
        query.ray.org_x = static_cast<float>(origin.x);
        query.ray.org_y = static_cast<float>(origin.y);
        query.ray.org_z = static_cast<float>(origin.z);
        query.ray.dir_x = static_cast<float>(direction.x);
        query.ray.dir_y = static_cast<float>(direction.y);
        query.ray.dir_z = static_cast<float>(direction.z);
        query.ray.tfar = 1e30f;
        query.ray.mask = 0xFFFFFFFF;
        query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        rtcIntersect1(scene_, &context, &query);
        benchmark::DoNotOptimize(query);
        return query.hit.geomID != RTC_INVALID_GEOMETRY_ID;
    }

private:
    RTCDevice device_;
    RTCScene scene_;
};

void PickSurfacesWithEmbree(benchmark::State& state) {
    Campus const& campus = CampusBenchmark::GetCampus(static_cast<std::uint32_t>(state.range(0)));
    Scene const scene(FlattenScene(campus));
    std::size_t next = 0;
    std::size_t hits = 0;
    for (auto _ : state) {
        auto const& view = campus.views[next];
        next = (next + 1) % campus.views.size();
        Vertex origin;
        Vertex direction;
        ViewToWorld(view.camera, view.x, view.y, origin, direction);
        hits += scene.Hits(origin, direction) ? 1 : 0;
    }
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits), benchmark::Counter::kAvgIterations);
}

BENCHMARK(PickSurfacesWithEmbree)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

}  // namespace
