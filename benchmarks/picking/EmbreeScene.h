#pragma once

#include "picking/EmbreeRay.h"

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelStorage.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/VertexNormalBuilder.h>

#include <benchmark/benchmark.h>
#include <embree3/rtcore.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

/// Models as scenes of Embree.
namespace EmbreeScene {

using CampusBenchmark::MakeEmbreeRay;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

struct Mesh {
    std::vector<float> positions;
    std::vector<unsigned> indices;
};

class Device {
public:
    Device() : device_(rtcNewDevice("threads=1")) {}
    Device(Device const&) = delete;
    Device& operator=(Device const&) = delete;
    ~Device() { rtcReleaseDevice(device_); }
    RTCDevice Get() const { return device_; }

private:
    RTCDevice device_;
};

class Scene {
public:
    explicit Scene(Device const& device) : device_(device.Get()), scene_(rtcNewScene(device.Get())) {}
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;
    ~Scene() { rtcReleaseScene(scene_); }

    void Add(Mesh const& mesh) {
        RTCGeometry const geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* const positions = static_cast<float*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), mesh.positions.size() / 3));
        auto* const indices = static_cast<unsigned*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), mesh.indices.size() / 3));
        std::copy(mesh.positions.begin(), mesh.positions.end(), positions);
        std::copy(mesh.indices.begin(), mesh.indices.end(), indices);
        Attach(geometry);
    }

    void Add(Scene const& shape, Matrix4 const& worldFromLocal) {
        RTCGeometry const geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_INSTANCE);
        rtcSetGeometryInstancedScene(geometry, shape.scene_);
        float rows[12];
        for (std::size_t i = 0; i < 12; ++i) rows[i] = static_cast<float>(worldFromLocal(i / 4, i % 4));
        rtcSetGeometryTransform(geometry, 0, RTC_FORMAT_FLOAT3X4_ROW_MAJOR, rows);
        Attach(geometry);
    }

    void Commit() const { rtcCommitScene(scene_); }

    bool IsHit(Vertex const& origin, Vertex const& direction) const {
        RTCRayHit query = MakeEmbreeRay(origin, direction);
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        rtcIntersect1(scene_, &context, &query);
        benchmark::DoNotOptimize(query);
        return query.hit.geomID != RTC_INVALID_GEOMETRY_ID;
    }

private:
    void Attach(RTCGeometry geometry) {
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(scene_, geometry);
        rtcReleaseGeometry(geometry);
    }

    RTCDevice device_;
    RTCScene scene_;
};

/// The triangles of a model's shapes and where they stand.
struct Parts {
    std::map<std::uint32_t, Mesh> shapes;
    std::vector<std::uint32_t> shapeOfInstance;
    std::vector<Matrix4> placements;

    explicit Parts(std::vector<char> const& buffer) {
        auto const storage = Quorlan::ModelStorage::FromBuffer(buffer);
        auto const& geometry = storage.GetModelReader().GetGeometry();
        for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
            Quorlan::InstanceRecord instance;
            geometry.GetInstance(instance, i);
            shapeOfInstance.push_back(instance.definitionIndex);
            auto const [entry, isNew] = shapes.try_emplace(instance.definitionIndex);
            if (isNew) entry->second = MakeMesh(buffer, instance.definitionIndex);
        }
        Quorlan::Tools::PlacementBuilder builder;
        builder.Build(buffer.data());
        placements = builder.getPlacements();
    }

private:
    static Mesh MakeMesh(std::vector<char> const& buffer, std::uint32_t definition) {
        Quorlan::Tools::VertexNormalBuilder shape;
        shape.Build(buffer, definition, 0.5f);
        Mesh mesh;
        for (auto const& p : shape.GetPositions()) {
            for (float const c : {p.x, p.y, p.z}) mesh.positions.push_back(c);
        }
        for (auto const& triangle : shape.GetTriangles()) {
            for (unsigned const corner : {triangle.a, triangle.b, triangle.c}) {
                mesh.indices.push_back(shape.GetCorners()[corner].position);
            }
        }
        return mesh;
    }
};

inline Mesh Flatten(Parts const& parts) {
    Mesh mesh;
    for (std::size_t i = 0; i < parts.placements.size(); ++i) {
        Mesh const& shape = parts.shapes.at(parts.shapeOfInstance[i]);
        auto const first = static_cast<unsigned>(mesh.positions.size() / 3);
        for (std::size_t k = 0; k < shape.positions.size(); k += 3) {
            Vertex const world = TransformPoint(parts.placements[i],
                                                {shape.positions[k], shape.positions[k + 1], shape.positions[k + 2]});
            for (double const c : {world.x, world.y, world.z}) mesh.positions.push_back(static_cast<float>(c));
        }
        for (unsigned const index : shape.indices) mesh.indices.push_back(first + index);
    }
    return mesh;
}

/// A scene of instances of the shared shapes, as the model holds it.
class InstanceScene {
public:
    InstanceScene(Device const& device, std::vector<char> const& buffer) : scene_(device) {
        Parts const parts(buffer);
        for (std::size_t i = 0; i < parts.placements.size(); ++i) {
            auto const [entry, isNew] = shapes_.try_emplace(parts.shapeOfInstance[i], device);
            if (isNew) {
                entry->second.Add(parts.shapes.at(parts.shapeOfInstance[i]));
                entry->second.Commit();
            }
            scene_.Add(entry->second, parts.placements[i]);
        }
        scene_.Commit();
    }

    bool IsHit(Vertex const& origin, Vertex const& direction) const { return scene_.IsHit(origin, direction); }

private:
    std::map<std::uint32_t, Scene> shapes_;
    Scene scene_;
};

}  // namespace EmbreeScene
