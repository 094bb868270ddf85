#pragma once

#include <algorithm>
#include <cmath>

/// The squared distance between a ray and a segment and its minimum, for one segment or for several side by side:
/// `Real` is float or a bundle of floats with the same operations, a comparison of which gives a mask. All regions are
/// worked out and one is selected, which costs less than a branch that is taken at random.
///
/// Source of the regions: David Eberly, "Distance Between Two Line Segments in 3D", 1999; Philip Schneider and David
/// Eberly, "Geometric Tools for Computer Graphics", 2002.
namespace Quorlan::Tools::Picking {

inline float Sqrt(float a) { return std::sqrt(a); }
inline float Abs(float a) { return std::abs(a); }
inline float Min(float a, float b) { return std::min(a, b); }
inline float Max(float a, float b) { return std::max(a, b); }
inline float Select(bool mask, float a, float b) { return mask ? a : b; }

/// The segment center + s * axis, |s| <= extent.
template <class Vector, class Real>
struct CenteredSegment {
    Vector center;
    Vector axis;
    Real extent;

    CenteredSegment(Vector const& p, Vector const& q) : center((p + q) * Real(0.5f)) {
        Vector const span = q - p;
        Real const length = Sqrt(Dot(span, span));
        axis = span / length;
        extent = length * Real(0.5f);
    }
};

/// The squared distance between the points r of a ray and s of a segment, whose directions are of unit length:
/// r^2 + s^2 + 2 a r s + 2 b0 r + 2 b1 s + c.
template <class Real>
struct RaySegmentForm {
    Real a, b0, b1, c, extent;

    struct Minimum {
        Real segmentParameter;
        Real squaredDistance;  ///< may be negative by rounding
    };

    /// The minimum over r >= 0 and |s| <= extent. The regions of the (r, s) plane are told apart by the parameters of
    /// the minimum over the whole plane, times the determinant.
    Minimum Minimize() const {
        Real const zero(0.0f);
        Real const det = Abs(Real(1.0f) - a * a);
        Real const ray = a * b1 - b0;
        Real const segment = a * b0 - b1;
        Real const limit = extent * det;
        auto const isCrossing = det > zero;
        auto const isParallel = !isCrossing;  // and a segment without length, whose values are NaN
        auto const isAhead = ray >= zero;
        auto const isBehind = !isAhead;
        auto const isBeyondFarEnd = segment > limit;
        auto const isBeyondNearEnd = (segment < -limit) | (isBehind & (segment <= -limit));
        auto const isBeyond = isBeyondFarEnd | isBeyondNearEnd;
        auto const isWithin = !isBeyond;

        auto const isSameWay = !(a > zero);
        auto const isFarEnd = (isParallel & isSameWay) | (isCrossing & isBeyondFarEnd);
        Real rayAtEnd;
        Minimum const atEnd = AtEnd(Select(isFarEnd, extent, -extent), rayAtEnd);
        Minimum const inside = Inside(ray / det, segment / det);
        Minimum const atOrigin = AtOrigin();

        auto const picksEnd = isParallel | (isBeyond & (isAhead | (rayAtEnd > zero)));
        auto const picksInside = isAhead & isWithin;
        return Choose(picksEnd, atEnd, Choose(picksInside, inside, atOrigin));
    }

private:
    template <class Mask>
    static Minimum Choose(Mask const& mask, Minimum const& first, Minimum const& second) {
        return {Select(mask, first.segmentParameter, second.segmentParameter),
                Select(mask, first.squaredDistance, second.squaredDistance)};
    }

    Real Twice(Real const& value) const { return Real(2.0f) * value; }

    Minimum Inside(Real const& r, Real const& s) const {
        return {s, r * (r + a * s + Twice(b0)) + s * (a * r + s + Twice(b1)) + c};
    }

    Minimum AtEnd(Real const& s, Real& r) const {
        r = Max(-(a * s + b0), Real(0.0f));
        return {s, -r * r + s * (s + Twice(b1)) + c};
    }

    Minimum AtOrigin() const {
        Real const s = Min(Max(-b1, -extent), extent);
        return {s, s * (s + Twice(b1)) + c};
    }
};

template <class Vector, class Real>
RaySegmentForm<Real> FormOf(Vector const& origin, Vector const& direction,
                            CenteredSegment<Vector, Real> const& segment) {
    Vector const diff = origin - segment.center;
    return {-Dot(direction, segment.axis), Dot(direction, diff), -Dot(diff, segment.axis), Dot(diff, diff),
            segment.extent};
}

}  // namespace Quorlan::Tools::Picking
