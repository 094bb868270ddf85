#pragma once

#include "picking/SegmentBatch.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace Quorlan::Tools::Picking {

/// The distance that stands for "nothing found" in the builders.
constexpr float kNoHit = std::numeric_limits<float>::max();

/// The segment that passes closest to a ray, of those offered so far.
struct NearestSegment {
    float distance = kNoHit;
    Vector3f point;
    std::uint64_t number = 0;  ///< as offered: the face of an edge, the index of a line

    bool IsFound() const { return distance != kNoHit; }
};

/// What of a segment the clipping planes must leave for it to count.
enum class ClipRule { kSomeOfItAndItsClosestPoint, kItsClosestPoint };

/// Takes segments one by one and finds the one that passes closest to a ray. Of equally near ones the first stays.
///
/// Squared distances come first, four at a time: one that is not smaller has a root that is not smaller either. Most
/// segments thus cost neither a root nor a test against planes.
template <class Plane>
class NearestSegmentSearch {
public:
    /// REQUIRES: `planes` outlives the search.
    NearestSegmentSearch(Ray3f const& ray, std::vector<Plane> const& planes, ClipRule rule)
        : ray_(ray), planes_(planes), rule_(rule) {}

    void Offer(Vector3f const& p, Vector3f const& q, std::uint64_t number) {
        numbers_[batch_.GetSize()] = number;
        batch_.Add(p, q);
        if (batch_.GetSize() == SegmentBatch::kCapacity) Settle();
    }

    /// The result of all that was offered.
    NearestSegment const& Finish() {
        Settle();
        return best_;
    }

private:
    void Settle() {
        float squaredDistances[SegmentBatch::kCapacity];
        batch_.Measure(ray_, squaredDistances);
        for (std::size_t i = 0; i < batch_.GetSize(); ++i) {
            if (bestSquaredDistance_ > squaredDistances[i]) Try(i, squaredDistances[i]);
        }
        batch_.Clear();
    }

    void Try(std::size_t i, float squaredDistance) {
        Vector3f const p = batch_.GetStart(i);
        Vector3f const q = batch_.GetEnd(i);
        if (rule_ == ClipRule::kSomeOfItAndItsClosestPoint && IsSegmentClipped(planes_, p, q)) return;
        ClosestPoint const candidate = ClosestPointRaySegment(ray_, p, q);
        if (!(best_.distance > candidate.distance) || IsClipped(planes_, candidate.point)) return;
        best_ = {candidate.distance, candidate.point, numbers_[i]};
        bestSquaredDistance_ = squaredDistance;
    }

    Ray3f ray_;
    std::vector<Plane> const& planes_;
    ClipRule rule_;
    SegmentBatch batch_;
    std::uint64_t numbers_[SegmentBatch::kCapacity] = {};
    NearestSegment best_;
    float bestSquaredDistance_ = std::numeric_limits<float>::infinity();
};

}  // namespace Quorlan::Tools::Picking
