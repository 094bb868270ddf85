#pragma once

#include "picking/BRepAccess.h"
#include "picking/NearestSegment.h"

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Picking {

/// Offers the edges of one loop, the closing one last. Each position is read once.
template <class Search, class Access, class Loop>
void OfferLoop(Search& search, Access const& brep, std::uint64_t face, Loop const& loop) {
    if (loop.size == 0) return;
    Vector3f const first = brep.GetPosition(loop[0]);
    Vector3f start = first;
    for (std::size_t next = 1; next < loop.size; ++next) {
        Vector3f const end = brep.GetPosition(loop[next]);
        search.Offer(start, end, face);
        start = end;
    }
    search.Offer(start, first, face);
}

/// The edge of a BRep that passes closest to the ray within the planes, numbered by its face: outer loops first, then
/// holes, each in order.
template <class Access, class Plane>
NearestSegment FindNearestEdge(Ray3f const& ray, std::vector<Plane> const& planes, Access const& brep) {
    NearestSegmentSearch search(ray, planes, ClipRule::kSomeOfItAndItsClosestPoint);
    auto const offer = [&](std::uint64_t face, auto const& loop) { OfferLoop(search, brep, face, loop); };
    brep.ForEachFace(offer);
    brep.ForEachHole(offer);
    return search.Finish();
}

}  // namespace Quorlan::Tools::Picking
