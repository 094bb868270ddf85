#pragma once

#include "geometry/Lanes.h"
#include "picking/RaySegment.h"

#include <array>
#include <cstddef>

namespace Quorlan::Tools::Picking {

/// Segments that are measured four at a time. It holds more than four, so that the processor has finished writing what
/// it is to read as a whole.
class SegmentBatch {
public:
    static constexpr std::size_t kCapacity = 16;

    std::size_t GetSize() const { return size_; }
    Vector3f GetStart(std::size_t i) const { return {start_[0][i], start_[1][i], start_[2][i]}; }
    Vector3f GetEnd(std::size_t i) const { return {end_[0][i], end_[1][i], end_[2][i]}; }

    void Clear() { size_ = 0; }

    /// REQUIRES: the batch is not full.
    void Add(Vector3f const& p, Vector3f const& q) {
        start_[0][size_] = p.x;
        start_[1][size_] = p.y;
        start_[2][size_] = p.z;
        end_[0][size_] = q.x;
        end_[1][size_] = q.y;
        end_[2][size_] = q.z;
        ++size_;
    }

    /// The squares of the distances that ClosestPointRaySegment gives, bit for bit; those beyond the size mean nothing.
    void Measure(Ray3f const& ray, float (&squaredDistances)[kCapacity]) const {
        using GeometryObjectLib::Broadcast;
        auto const origin = Broadcast(ray.origin);
        auto const direction = Broadcast(ray.direction);
        for (std::size_t first = 0; first < size_; first += kLanes) {
            CenteredSegment<Vectors, Float4> const segments(Load(start_, first), Load(end_, first));
            auto const minimum = FormOf(origin, direction, segments).Minimize();
            Store(Abs(minimum.squaredDistance), squaredDistances + first);
        }
    }

private:
    static constexpr std::size_t kLanes = 4;

    using Float4 = GeometryObjectLib::Float4;
    using Vectors = GeometryObjectLib::VectorLanes<Float4>;
    using Coordinates = float[3][kCapacity];

    static Vectors Load(Coordinates const& all, std::size_t first) {
        auto const load = [first](float const* c) {
            return Float4(c[first], c[first + 1], c[first + 2], c[first + 3]);
        };
        return {load(all[0]), load(all[1]), load(all[2])};
    }

    Coordinates start_{};
    Coordinates end_{};
    std::size_t size_ = 0;
};

}  // namespace Quorlan::Tools::Picking
