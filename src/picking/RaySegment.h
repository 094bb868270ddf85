#pragma once

#include "picking/ClippingPlanes.h"
#include "picking/ClosestPoint.h"
#include "picking/RaySegmentForm.h"

#include <GeometryObjectLib/Ray3f.h>

#include <cmath>
#include <limits>
#include <vector>

/// A ray against a segment, in single precision throughout: the order of every sum is part of the result.
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

/// The point of the segment that is closest to the half line of the ray, and its distance from the ray. Exchanging p
/// and q gives the same bits.
///
/// The ray's direction is used as it is and should be of unit length. The distance of a touching ray is a difference
/// that cancels: it may be as large as 1e-3 of the distance between the ray's origin and the segment's centre. For a
/// parallel ray the point is the end that lies farther along the ray. A segment without length gives NaN, which loses
/// every comparison.
inline ClosestPoint ClosestPointRaySegment(Ray3f const& ray, Vector3f const& p, Vector3f const& q) {
    CenteredSegment<Vector3f, float> const segment(p, q);
    auto const minimum = FormOf(ray.origin, ray.direction, segment).Minimize();
    return {segment.center + minimum.segmentParameter * segment.axis, std::sqrt(std::abs(minimum.squaredDistance))};
}

}  // namespace Quorlan::Tools::Picking
