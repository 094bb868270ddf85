#pragma once

#include "picking/ClippingPlanes.h"
#include "picking/LoopPlanes.h"

#include <GeometryObjectLib/Ray3f.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

/// The intersection of one ray with one BRep, written once for both accesses. All arithmetic is in single precision and
/// the order of every sum is part of the result: lanes stand for faces or for vertices, never for terms of a sum.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Broadcast;
using GeometryObjectLib::GetBits;
using GeometryObjectLib::Ray3f;

/// Two axes perpendicular to a direction and to each other. They are not of unit length unless the direction has no y:
/// the containment test asks only for signs and ratios.
struct PerpendicularFrame {
    VectorLanes<Float4> u;
    VectorLanes<Float4> v;

    explicit PerpendicularFrame(Vector3f const& d) {
        Vector3f axis;
        if (std::abs(d.x) >= std::abs(d.y)) {
            float const factor = 1 / std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
            axis = {-d.z * factor, 0, d.x * factor};
        } else {
            float const factor = 1 / std::sqrt(d.y * d.y + d.z * d.z);
            axis = {0, d.z * factor, -d.y * factor};
        }
        u = Broadcast(axis);
        v = Broadcast(Cross(d, axis));
    }
};

/// Four vertices of a loop relative to a point, along the axes of a frame.
struct ProjectedVertices {
    Float4 a;
    Float4 b;

    /// From `first` on; the loop's last vertex again where there are less.
    template <class Access, class Loop>
    ProjectedVertices(Access const& brep, PerpendicularFrame const& frame, VectorLanes<Float4> const& point,
                      Loop const& loop, std::size_t first) {
        std::size_t const last = loop.size - 1;
        auto const positions = Transpose(brep.GetPositionLanes(loop[std::min(first, last)]),
                                         brep.GetPositionLanes(loop[std::min(first + 1, last)]),
                                         brep.GetPositionLanes(loop[std::min(first + 2, last)]),
                                         brep.GetPositionLanes(loop[std::min(first + 3, last)]));
        auto const q = positions - point;
        a = Dot(q, frame.u);
        b = Dot(q, frame.v);
    }
};

/// Whether a loop contains a point, both seen along the direction of `frame`: the number of edges that cross the
/// half line from the point along U is odd (Shimrat, "Algorithm 112: Position of Point Relative to Polygon", 1962).
/// REQUIRES: at least three vertices.
template <class Access, class Loop>
bool IsPointInLoop(Access const& brep, PerpendicularFrame const& frame, Vector3f const& point, Loop const& loop) {
    auto const center = Broadcast(point);
    ProjectedVertices vertices(brep, frame, center, loop, 0);
    // What comes before lane 0, in lane 0: the last vertex, which is also what fills up the last four.
    ProjectedVertices before = loop.size <= 4 ? vertices : ProjectedVertices(brep, frame, center, loop, loop.size);
    before.a = Rotate(before.a);
    before.b = Rotate(before.b);
    int carry = GetBits(before.b > Float4(0.0f)) & 1;
    int crossings = 0;
    for (std::size_t first = 0;;) {
        int const above = GetBits(vertices.b > Float4(0.0f));
        int const changes = (above ^ (above << 1 | carry)) & 15;
        if (changes != 0) {
            Float4 const previousA = WithFirstOf(Rotate(vertices.a), before.a);
            Float4 const previousB = WithFirstOf(Rotate(vertices.b), before.b);
            Float4 const crossing =
                (previousA - vertices.a) * (Float4(0.0f) - vertices.b) / (previousB - vertices.b) + vertices.a;
            crossings ^= changes & GetBits(crossing > Float4(0.0f));
        }
        first += 4;
        if (first >= loop.size) break;
        before.a = Rotate(vertices.a);
        before.b = Rotate(vertices.b);
        carry = above >> 3;
        vertices = ProjectedVertices(brep, frame, center, loop, first);
    }
    return (0x6996 >> crossings & 1) != 0;  // the parity of four bits
}

/// A face that a ray hits; as default constructed, a miss.
struct SurfaceHit {
    bool isHit = false;
    std::uint64_t face = 0;
    float t = std::numeric_limits<float>::max();
    Vector3f position;
    Vector3f normal{1, 0, 0};
};

/// One ray against loops of one BRep, four at a time.
template <class Access, class Plane>
class LoopIntersection {
public:
    LoopIntersection(Ray3f const& ray, std::vector<Plane> const& clippingPlanes, Access const& brep)
        : ray_(ray), clippingPlanes_(clippingPlanes), brep_(brep), frame_(ray.direction) {}

    /// Calls visit(hit, number) for the loops getLoop(number) of the group that are hit, in their order, until it
    /// returns false.
    ///
    /// A single-sided face counts only if its plane's normal points against the ray. A plane that has the ray's origin
    /// behind it or is parallel to the ray is not met. The sign of t is not tested: a ray that runs away from a plane
    /// meets it behind its origin.
    template <class GetLoop, class Visit>
    void VisitHits(PlaneGroup const& group, bool singleSided, GetLoop const& getLoop, Visit const& visit) {
        Float4 const zero(0.0f);
        Float4 const height = Dot(group.normal, Broadcast(ray_.origin)) - group.distance;
        Float4 const slope = Dot(group.normal, Broadcast(ray_.direction));
        Mask4 const isParallel = (slope <= zero) & (slope >= zero);
        int met = ~GetBits((zero > height) | isParallel) & ((1 << group.size) - 1);
        if (singleSided) met &= GetBits(zero > slope);
        if (met == 0) return;

        float t[4];
        Store(-height / slope, t);
        for (std::size_t i = 0; met != 0; ++i, met >>= 1) {
            if ((met & 1) == 0) continue;
            Vector3f const point = ray_.origin + ray_.direction * t[i];
            if (IsClipped(clippingPlanes_, point)) continue;
            std::size_t const number = group.loops[i];
            if (!IsPointInLoop(brep_, frame_, point, getLoop(number))) continue;
            if (!visit(SurfaceHit{true, number, t[i], point, group.GetNormal(i)})) return;
        }
    }

private:
    Ray3f const& ray_;
    std::vector<Plane> const& clippingPlanes_;
    Access const& brep_;
    PerpendicularFrame frame_;
};

/// The faces of which the ray pierces a hole, ascending.
///
/// A hole lies in the plane of its face, where the outer loop contains the same point: such a face is excluded whole.
template <class Access, class Plane, class Planes>
std::vector<std::uint64_t> FindPiercedFaces(LoopIntersection<Access, Plane>& intersection, Access const& brep,
                                            Planes& planes) {
    std::vector<std::uint64_t> faces;
    auto const getLoop = [&](std::size_t hole) { return brep.GetHole(hole).loop; };
    while (auto const* const group = planes.GetNextOfHoles()) {
        intersection.VisitHits(*group, false, getLoop, [&](SurfaceHit const& hit) {
            faces.push_back(brep.GetHole(hit.face).face);
            return true;
        });
    }
    std::sort(faces.begin(), faces.end());
    return faces;
}

/// Intersects, with `planes` of all loops of the BRep. Of several faces that are hit the last counts, whatever its
/// distance, so that they are tried from the last on and the first hit ends the search.
template <class Access, class Plane, class Planes>
SurfaceHit IntersectSurface(Ray3f const& ray, std::vector<Plane> const& clippingPlanes, Access const& brep,
                            bool singleSided, Planes& planes) {
    LoopIntersection<Access, Plane> intersection(ray, clippingPlanes, brep);
    std::vector<std::uint64_t> pierced;
    if (brep.GetHoleCount() != 0) pierced = FindPiercedFaces(intersection, brep, planes);

    SurfaceHit last;
    auto const getLoop = [&](std::size_t face) { return brep.GetFace(face); };
    while (!last.isHit) {
        auto const* const group = planes.GetNextOfFaces();
        if (group == nullptr) break;
        intersection.VisitHits(*group, singleSided, getLoop, [&](SurfaceHit const& hit) {
            if (!pierced.empty() && std::binary_search(pierced.begin(), pierced.end(), hit.face)) return true;
            last = hit;
            return false;
        });
    }
    return last;
}

template <class Access, class Plane>
SurfaceHit IntersectSurface(Ray3f const& ray, std::vector<Plane> const& clippingPlanes, Access const& brep,
                            bool singleSided) {
    FreshPlanes<Access> planes(brep);
    return IntersectSurface(ray, clippingPlanes, brep, singleSided, planes);
}

}  // namespace Quorlan::Tools::Picking
