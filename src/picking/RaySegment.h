#pragma once

#include "picking/ClippingPlanes.h"
#include "picking/ClosestPoint.h"

#include <GeometryObjectLib/Ray3f.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

/// A ray against a segment, in single precision throughout: the order of every sum is part of the result.
///
/// Source of the regions: David Eberly, "Distance Between Two Line Segments in 3D", 1999; Philip Schneider and David
/// Eberly, "Geometric Tools for Computer Graphics", 2002.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Ray3f;

/// [unit of the buffer; squared for lengths] The machine epsilon: ends whose distances from a plane differ by no more
/// are not cut, and a rest of a segment whose squared length is no more counts as nothing.
constexpr float kSegmentEpsilon = std::numeric_limits<float>::epsilon();

/// Whether nothing of the segment survives the planes. A segment no longer than about 3.5e-4 counts as nothing, with
/// or without planes.
template <class Plane>
bool IsSegmentClipped(std::vector<Plane> const& planes, Vector3f p, Vector3f q) {
    for (Plane const& stored : planes) {
        Plane3f const plane = AsPlane(stored);
        float const dp = Dot(plane.normal, p) - plane.distance;
        float const dq = Dot(plane.normal, q) - plane.distance;
        bool const pOutside = dp > 0;
        bool const qOutside = dq > 0;
        if (pOutside && qOutside) return true;
        if (pOutside != qOutside && std::abs(dq - dp) > kSegmentEpsilon) {
            float const s = dp / (dq - dp);
            Vector3f const crossing = p + (p - q) * s;
            (pOutside ? p : q) = crossing;
        }
    }
    Vector3f const rest = p - q;
    return !(Dot(rest, rest) > kSegmentEpsilon);
}

/// The squared distance between a ray origin + r * D and a segment C + s * S, |s| <= extent, as a quadratic form:
/// r^2 + s^2 + 2 a r s + 2 b0 r + 2 b1 s + c, for D and S of unit length.
struct RaySegmentForm {
    float a, b0, b1, c, extent;

    struct Minimum {
        float segmentParameter;
        float squaredDistance;
    };

    /// The minimum over r >= 0 and |s| <= extent. The regions of the (r, s) plane are told apart by the parameters of
    /// the minimum over the whole plane, times the determinant.
    Minimum Minimize() const {
        float const det = std::abs(1 - a * a);
        if (!(det > 0)) return AtEnd(a > 0 ? -extent : extent);  // parallel, and a segment without length (NaN)

        float const ray = a * b1 - b0;
        float const segment = a * b0 - b1;
        float const limit = extent * det;
        if (ray >= 0) {
            if (segment > limit) return AtEnd(extent);
            if (segment < -limit) return AtEnd(-extent);
            return Inside(ray / det, segment / det);
        }
        if (segment <= -limit) return AtCorner(-extent);
        if (segment <= limit) return AtOrigin();
        return AtCorner(extent);
    }

private:
    float RayParameterAt(float s) const { return -(a * s + b0); }

    Minimum Inside(float r, float s) const { return {s, r * (r + a * s + 2 * b0) + s * (a * r + s + 2 * b1) + c}; }

    Minimum AtEnd(float s) const {
        float const r = std::max(RayParameterAt(s), 0.0f);
        return {s, -r * r + s * (s + 2 * b1) + c};
    }

    Minimum AtOrigin() const {
        float const s = std::clamp(-b1, -extent, extent);
        return {s, s * (s + 2 * b1) + c};
    }

    Minimum AtCorner(float s) const { return RayParameterAt(s) > 0 ? AtEnd(s) : AtOrigin(); }
};

/// The point of the segment that is closest to the half line of the ray, and its distance from the ray. Exchanging p
/// and q gives the same bits.
///
/// The ray's direction is used as it is and should be of unit length. The distance of a touching ray is a difference
/// that cancels: it may be as large as 1e-3 of the distance between the ray's origin and the segment's centre. For a
/// parallel ray the point is the end that lies farther along the ray. A segment without length gives NaN, which loses
/// every comparison.
inline ClosestPoint ClosestPointRaySegment(Ray3f const& ray, Vector3f const& p, Vector3f const& q) {
    Vector3f const span = q - p;
    float const length = Length(span);
    Vector3f const center = (p + q) * 0.5f;
    Vector3f const axis = span / length;
    Vector3f const diff = ray.origin - center;
    RaySegmentForm const form{-Dot(ray.direction, axis), Dot(ray.direction, diff), -Dot(diff, axis), Dot(diff, diff),
                              length * 0.5f};
    auto const minimum = form.Minimize();
    return {center + minimum.segmentParameter * axis, std::sqrt(std::abs(minimum.squaredDistance))};
}

}  // namespace Quorlan::Tools::Picking
