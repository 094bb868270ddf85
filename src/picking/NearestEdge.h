#pragma once

#include "picking/BRepAccess.h"
#include "picking/RaySegment.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace Quorlan::Tools::Picking {

/// The distance that stands for "nothing found" in the builders.
constexpr float kNoHit = std::numeric_limits<float>::max();

/// The best edge so far of a BRep.
struct NearestEdge {
    float distance = kNoHit;
    Vector3f point;
    std::uint64_t face = 0;

    bool IsFound() const { return distance != kNoHit; }
};

/// Offers the edges of one loop, the closing one last, to `best`. Each position is read once.
///
/// An edge must be strictly nearer than the best, must not be clipped away whole, and its closest point must not be
/// clipped. The tests have no effects, so the one that fails most often comes first.
template <class Access, class Loop, class Plane>
void OfferLoop(NearestEdge& best, Ray3f const& ray, std::vector<Plane> const& planes, Access const& brep,
               std::uint64_t face, Loop const& loop) {
    if (loop.size == 0) return;
    Vector3f const first = brep.GetPosition(loop[0]);
    Vector3f start = first;
    for (std::size_t next = 1; next <= loop.size; ++next) {
        Vector3f const end = next < loop.size ? brep.GetPosition(loop[next]) : first;
        ClosestPoint const candidate = ClosestPointRaySegment(ray, start, end);
        if (best.distance > candidate.distance && !IsSegmentClipped(planes, start, end) &&
            !IsClipped(planes, candidate.point)) {
            best = {candidate.distance, candidate.point, face};
        }
        start = end;
    }
}

/// The edge of a BRep that passes closest to the ray within the planes: outer loops first, then holes, each in order.
/// Of equally near edges the one met first stays.
template <class Access, class Plane>
NearestEdge FindNearestEdge(Ray3f const& ray, std::vector<Plane> const& planes, Access const& brep) {
    NearestEdge best;
    auto const offer = [&](std::uint64_t face, auto const& loop) { OfferLoop(best, ray, planes, brep, face, loop); };
    brep.ForEachFace(offer);
    brep.ForEachHole(offer);
    return best;
}

}  // namespace Quorlan::Tools::Picking
