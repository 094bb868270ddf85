#pragma once

#include "geometry/Avx2.h"
#include "model/InstanceLanes.h"
#include "picking/ModelRay.h"

#include <GeometryObjectLib/Ray3f.h>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Ray3f;

#if QUORLAN_HAS_AVX2
/// The pick ray in the coordinates of four instances' definitions: x, y, z of its origin and of its direction.
/// REQUIRES: HasAvx2().
void CarryRayAvx2(InstanceLanes const& instances, ModelRay const& ray, float (&origin)[3][kLaneCount],
                  float (&direction)[3][kLaneCount]);
#endif

/// The pick ray in the coordinates of four instances' definitions, with the bits that `InstancePick` gives one by one.
class InstanceRays {
public:
    InstanceRays() = default;

    /// Of the instances `ids[first]` to `ids[first + 3]`; the last of `count` again where there are less.
    InstanceRays(InstanceArrays const& arrays, std::uint32_t const* ids, std::size_t first, std::size_t count,
                 ModelRay const& ray, bool usesAvx2 = HasAvx2())
        : InstanceRays(InstanceLanes(arrays, ids, first, count), ray, usesAvx2) {}

    Ray3f Get(std::size_t lane) const {
        return {{origin_[0][lane], origin_[1][lane], origin_[2][lane]},
                {direction_[0][lane], direction_[1][lane], direction_[2][lane]}};
    }

    /// The least t at which a ray of unit length can be as deep as the nearest point of the definition's bounds.
    float GetLeastParameter(std::size_t lane) const { return leastParameter_[lane]; }

    /// Fetches what an instance leads to into the cache. The instance itself should be there.
    static void Prefetch(InstanceArrays const& arrays, Schema::Instance const& instance) {
        PrefetchRecord(arrays.GetPlacement(instance), sizeof(Schema::Placement));
        PrefetchRecord(arrays.GetEntity(instance), sizeof(Schema::EntityRecord));
        QUORLAN_PREFETCH(arrays.GetDefinition(instance));
    }

private:
    using Vectors = VectorLanes<Double4>;

    InstanceRays(InstanceLanes const& instances, ModelRay const& ray, [[maybe_unused]] bool usesAvx2) {
#if QUORLAN_HAS_AVX2
        if (usesAvx2) {
            CarryRayAvx2(instances, ray, origin_, direction_);
        } else {
            CarryRay(instances, ray);
        }
#else
        CarryRay(instances, ray);
#endif
        Store(ComputeLeastParameter(instances, LoadAll(origin_), LoadAll(direction_)), leastParameter_);
    }

    void CarryRay(InstanceLanes const& instances, ModelRay const& ray) {
        DoubleFrameLanes const frame =
            ToWideFrame(instances.GetEntityPlacements()) * ToWideFrame(instances.GetPlacements());
        Vectors const yz = Cross(frame.y, frame.z);
        Double4 const perDeterminant = Double4(1.0) / Dot(frame.x, yz);
        Vectors const inverseX = yz * perDeterminant;
        Vectors const inverseY = Cross(frame.z, frame.x) * perDeterminant;
        Vectors const inverseZ = Cross(frame.x, frame.y) * perDeterminant;
        auto const toLocal = [&](Vectors const& v) {
            return VectorLanes<Float4>{Narrow(Dot(inverseX, v)), Narrow(Dot(inverseY, v)), Narrow(Dot(inverseZ, v))};
        };
        StoreAll(toLocal(Broadcast(ray.origin) - frame.origin), origin_);
        StoreAll(toLocal(Broadcast(ray.direction)), direction_);
    }

    /// As `ToWideFrame` for one placement. A root of 1 and its reciprocal are 1, and a product with 1 changes nothing.
    static DoubleFrameLanes ToWideFrame(PlacementLanes const& placement) {
        Vectors const x = Widen(placement.xAxis);
        Vectors const y = Widen(placement.yAxis);
        DoubleFrameLanes frame{placement.origin, x, y, Cross(x, y)};
        Double4 const xSquared = Dot(frame.x, frame.x);
        Double4 const ySquared = Dot(frame.y, frame.y);
        Double4 const zSquared = Dot(frame.z, frame.z);
        if (AreOne(xSquared, ySquared, zSquared)) return frame;
        frame.x = frame.x * (Double4(1.0) / Sqrt(xSquared));
        frame.y = frame.y * (Double4(1.0) / Sqrt(ySquared));
        frame.z = frame.z * (Double4(1.0) / Sqrt(zSquared));
        return frame;
    }

    static Float4 ComputeLeastParameter(InstanceLanes const& instances, VectorLanes<Float4> const& origin,
                                        VectorLanes<Float4> const& direction) {
        VectorLanes<Float4> lo;
        VectorLanes<Float4> hi;
        instances.GetLocalBounds(lo, hi);
        Float4 const half(0.5f);
        auto const center = (lo + hi) * half;
        auto const halfExtent = (hi - lo) * half;
        return Dot(center - origin, direction) -
               (Abs(direction.x) * halfExtent.x + Abs(direction.y) * halfExtent.y + Abs(direction.z) * halfExtent.z);
    }

    static void StoreAll(VectorLanes<Float4> const& v, float (&out)[3][kLaneCount]) {
        Store(v.x, out[0]);
        Store(v.y, out[1]);
        Store(v.z, out[2]);
    }

    static VectorLanes<Float4> LoadAll(float const (&in)[3][kLaneCount]) {
        return {GeometryObjectLib::Load(in[0]), GeometryObjectLib::Load(in[1]), GeometryObjectLib::Load(in[2])};
    }

    static void PrefetchRecord(std::uint8_t const* record, std::size_t size) {
        QUORLAN_PREFETCH(record);
        QUORLAN_PREFETCH(record + size - 1);
    }

    float origin_[3][kLaneCount];
    float direction_[3][kLaneCount];
    float leastParameter_[kLaneCount];
};

}  // namespace Quorlan::Tools::Picking
