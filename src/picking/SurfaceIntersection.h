#pragma once

#include "picking/BRepAccess.h"
#include "picking/ClippingPlanes.h"

#include <GeometryObjectLib/Ray3f.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

/// The intersection of one ray with one BRep, written once for both accesses. All arithmetic is in single precision and
/// the order of every sum is part of the result.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Ray3f;

/// The plane of a loop by Newell's method (Sutherland, Sproull, Schumacker, "A Characterization of Ten Hidden-Surface
/// Algorithms", 1974), through the mean of its vertices. The normal of a loop that runs counter-clockwise seen from
/// outside points outward; a loop without area gives the plane x = 0.
template <class Access, class Loop>
Plane3f ComputeLoopPlane(Access const& brep, Loop const& loop) {
    Vector3f normal;
    Vector3f center;
    for (std::size_t i = 0; i < loop.size; ++i) {
        Vector3f const p = brep.GetPosition(loop[i]);
        Vector3f const q = brep.GetPosition(loop[i + 1 == loop.size ? 0 : i + 1]);
        normal.x += (p.z + q.z) * (p.y - q.y);
        normal.y += (p.z - q.z) * (q.x + p.x);
        normal.z += (q.y + p.y) * (p.x - q.x);
        center = center + p;
    }
    if (Dot(normal, normal) == 0) return {{1, 0, 0}, 0};
    normal = normal / Length(normal);
    center = center / static_cast<float>(loop.size);
    return {normal, Dot(normal, center)};
}

/// Where the ray's line meets a plane. RETURNS false where the origin lies behind the plane or the line is parallel to
/// it. The sign of t is not tested: a ray that runs away from the plane meets it behind its origin.
inline bool IntersectRayPlane(Ray3f const& ray, Plane3f const& plane, float& t) {
    t = 0;
    float const height = Dot(plane.normal, ray.origin) - plane.distance;
    if (0 > height) return false;
    float const slope = Dot(plane.normal, ray.direction);
    if (slope == 0) return false;
    t = -height / slope;
    return true;
}

/// Two axes perpendicular to a direction and to each other. They are not of unit length unless the direction has no y:
/// the containment test asks only for signs and ratios.
struct PerpendicularFrame {
    Vector3f u;
    Vector3f v;

    explicit PerpendicularFrame(Vector3f const& d) {
        if (std::abs(d.x) >= std::abs(d.y)) {
            float const factor = 1 / std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
            u = {-d.z * factor, 0, d.x * factor};
        } else {
            float const factor = 1 / std::sqrt(d.y * d.y + d.z * d.z);
            u = {0, d.z * factor, -d.y * factor};
        }
        v = Cross(d, u);
    }
};

/// Whether a loop contains a point, both seen along the direction of `frame`: the number of edges that cross the
/// half line from the point along U is odd (Shimrat, "Algorithm 112: Position of Point Relative to Polygon", 1962).
template <class Access, class Loop>
bool IsPointInLoop(Access const& brep, PerpendicularFrame const& frame, Vector3f const& point, Loop const& loop) {
    if (loop.size < 3) return false;
    Vector3f const last = brep.GetPosition(loop[loop.size - 1]) - point;
    float previousA = Dot(last, frame.u);
    float previousB = Dot(last, frame.v);
    bool inside = false;
    for (auto const index : loop) {
        Vector3f const q = brep.GetPosition(index) - point;
        float const a = Dot(q, frame.u);
        float const b = Dot(q, frame.v);
        if ((b > 0) != (previousB > 0)) {
            float const crossing = (previousA - a) * (0 - b) / (previousB - b) + a;
            if (crossing > 0) inside = !inside;
        }
        previousA = a;
        previousB = b;
    }
    return inside;
}

/// The result of an intersection; as default constructed, a miss.
struct SurfaceHit {
    bool isHit = false;
    std::uint64_t face = 0;
    float t = std::numeric_limits<float>::max();
    Vector3f position;
    Vector3f normal{1, 0, 0};
};

/// Intersects. Every accepted face replaces the one before it, so that the last wins.
template <class Access, class Plane>
SurfaceHit IntersectSurface(Ray3f const& ray, std::vector<Plane> const& clippingPlanes, Access const& brep,
                            bool singleSided) {
    PerpendicularFrame const frame(ray.direction);
    auto const hits = [&](auto const& loop, Plane3f const& plane, float& t) {
        if (!IntersectRayPlane(ray, plane, t)) return false;
        Vector3f const point = ray.origin + ray.direction * t;
        return !IsClipped(clippingPlanes, point) && IsPointInLoop(brep, frame, point, loop);
    };

    // A hole lies in the plane of its face, where the outer loop contains the same point: a face with a pierced hole is
    // excluded whole. Holes run the other way round, so their planes are turned.
    std::vector<std::uint64_t> excluded;
    brep.ForEachHole([&](std::uint64_t face, auto const& loop) {
        Plane3f const plane = ComputeLoopPlane(brep, loop);
        float t = 0;
        if (hits(loop, {plane.normal * -1.0f, -plane.distance}, t)) excluded.push_back(face);
    });
    std::sort(excluded.begin(), excluded.end());

    SurfaceHit hit;
    auto nextExcluded = excluded.begin();  // faces come in ascending order
    brep.ForEachFace([&](std::uint64_t face, auto const& loop) {
        while (nextExcluded != excluded.end() && *nextExcluded < face) ++nextExcluded;
        if (nextExcluded != excluded.end() && *nextExcluded == face) return;

        Plane3f const plane = ComputeLoopPlane(brep, loop);
        if (singleSided && !(0 > Dot(plane.normal, ray.direction))) return;
        float t = 0;
        if (!hits(loop, plane, t)) return;
        hit = {true, face, t, ray.origin + ray.direction * t, plane.normal};
    });
    return hit;
}

}  // namespace Quorlan::Tools::Picking
