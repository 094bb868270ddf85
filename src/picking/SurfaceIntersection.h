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

/// What Newell's method sums over a loop (Sutherland, Sproull, Schumacker, "A Characterization of Ten Hidden-Surface
/// Algorithms", 1974): a normal as long as twice the area, which points outward where the loop runs counter-clockwise
/// seen from outside, and the sum of the vertices.
struct LoopSums {
    Vector3f normal;
    Vector3f vertices;
    std::size_t count;

    template <class Access, class Loop>
    LoopSums(Access const& brep, Loop const& loop) : count(loop.size) {
        if (count == 0) return;
        Vector3f const first = brep.GetPosition(loop[0]);
        Vector3f p = first;
        for (std::size_t i = 0; i < count; ++i) {
            Vector3f const q = i + 1 == count ? first : brep.GetPosition(loop[i + 1]);
            normal.x += (p.z + q.z) * (p.y - q.y);
            normal.y += (p.z - q.z) * (q.x + p.x);
            normal.z += (q.y + p.y) * (p.x - q.x);
            vertices = vertices + p;
            p = q;
        }
    }

    /// The plane through the mean of the vertices; for a loop without area the plane x = 0.
    Plane3f GetPlane() const {
        float const squared = Dot(normal, normal);
        if (squared == 0) return {{1, 0, 0}, 0};
        Vector3f const unit = normal / std::sqrt(squared);
        return {unit, Dot(unit, vertices / static_cast<float>(count))};
    }

    /// True only where the plane's normal surely does not point against `direction`, and found without a root and
    /// divisions: the bound is far above the rounding errors of both ways to the cosine, which are below 1e-6.
    bool IsTurnedAway(Vector3f const& direction) const {
        constexpr float kSureCosine = 1e-5f;
        float const x = normal.x * direction.x;
        float const y = normal.y * direction.y;
        float const z = normal.z * direction.z;
        return Dot(normal, normal) > 0 && x + y + z > kSureCosine * (std::abs(x) + std::abs(y) + std::abs(z));
    }
};

template <class Access, class Loop>
Plane3f ComputeLoopPlane(Access const& brep, Loop const& loop) {
    return LoopSums(brep, loop).GetPlane();
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

        LoopSums const sums(brep, loop);
        if (singleSided && sums.IsTurnedAway(ray.direction)) return;
        Plane3f const plane = sums.GetPlane();
        if (singleSided && !(0 > Dot(plane.normal, ray.direction))) return;
        float t = 0;
        if (!hits(loop, plane, t)) return;
        hit = {true, face, t, ray.origin + ray.direction * t, plane.normal};
    });
    return hit;
}

}  // namespace Quorlan::Tools::Picking
