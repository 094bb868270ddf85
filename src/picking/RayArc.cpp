#include "picking/RayArc.h"

#include "geometry/Frame.h"
#include "picking/QuarticRoots.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {

namespace {

using GeometryObjectLib::ArcSegment;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::ToVector3f;
using GeometryObjectLib::ToVertex;
using GeometryObjectLib::Vertex;

constexpr double kTwoPi = 6.283185307179586;

/// [-] A point closer to the axis than this share of its distance from the centre plus the radius is on the axis: its
/// direction in the plane is rounding.
constexpr double kOnAxisShare = 1e-12;

/// [length of the direction] A ray whose direction leaves the plane by less is parallel to it.
constexpr double kPlaneParallelCosine = 1e-7;

/// [-] Roots at the ends of the interval are simple; a little more room keeps them inside it.
constexpr double kIntervalMargin = 1e-9;

bool IsZero(Vertex const& v) { return v.x == 0 && v.y == 0 && v.z == 0; }

struct ArcPoint {
    Vertex point;
    double distance = std::numeric_limits<float>::max();
};

ClosestPoint Narrowed(ArcPoint const& found) { return {ToVector3f(found.point), static_cast<float>(found.distance)}; }

/// An arc in an orthonormal frame: the normal of its plane, and u towards its start.
struct PlacedArc {
    Vertex center;
    Vertex normal;
    Vertex u;
    Vertex v;
    double radius;
    double sweep;

    explicit PlacedArc(ArcSegment const& arc)
        : center(arc.center), normal(arc.axis / Length(arc.axis)), radius(arc.radius), sweep(arc.sweepAngle) {
        Vertex const inPlane = arc.startDirection - Dot(arc.startDirection, normal) * normal;
        u = inPlane / Length(inPlane);
        v = Cross(normal, u);
    }

    Vertex PointTowards(double cosine, double sine) const { return center + radius * (cosine * u + sine * v); }

    /// The nearer end; the far one on a tie.
    ArcPoint ClosestEnd(Vertex const& point) const {
        Vertex const start = PointTowards(1, 0);
        Vertex const end = PointTowards(std::cos(sweep), std::sin(sweep));
        double const startDistance = Length(start - point);
        double const endDistance = Length(end - point);
        if (endDistance > startDistance) return {start, startDistance};
        return {end, endDistance};
    }

    ArcPoint ClosestTo(Vertex const& point) const {
        Vertex const offset = point - center;
        double const x = Dot(offset, u);
        double const y = Dot(offset, v);
        double const inPlane = std::sqrt(x * x + y * y);
        double angle = 0;
        Vertex onCircle = PointTowards(1, 0);
        if (inPlane > kOnAxisShare * (Length(offset) + radius)) {
            angle = std::atan2(y, x);
            if (angle < 0) angle += kTwoPi;
            if (angle >= kTwoPi) angle = 0;  // a tiny negative angle rounds up to the full turn
            onCircle = PointTowards(x / inPlane, y / inPlane);
        }
        if (angle <= sweep) return {onCircle, Length(onCircle - point)};
        return ClosestEnd(point);
    }
};

/// The stationary points of the distance between a line and a circle, as roots of a polynomial whose unknown is bound.
///
/// With t measured from the line's point nearest to the centre, the circle's normal n, the line's direction M and
/// k = |n x M|, a stationary t satisfies t^2 q(t) = r^2 (dq/dt / 2)^2, where q(t) is the squared distance of the line
/// point from the axis. All real t lie within r k, so that t = r k x turns this into
/// (1 - x^2) (A x + beta)^2 = gamma^2 x^2 with A = r k^2 and |x| <= 1, where beta and gamma are the coordinates of the
/// nearest point along the projected line and across it. Squaring adds the stationary points of the distance to the
/// farthest point of the circle; they cost an evaluation and cannot win.
struct StationaryPoints {
    double scale;  ///< t per x
    QuarticCoefficients_t coefficients;

    StationaryPoints(PlacedArc const& arc, Vertex const& direction, Vertex const& nearestFromCenter) {
        Vertex const cross = Cross(arc.normal, direction);
        double const sine = Length(cross);
        Vertex const across = cross / sine;
        Vertex const along = Cross(across, arc.normal);
        double const a = arc.radius * sine * sine;
        double const beta = Dot(nearestFromCenter, along);
        double const gamma = Dot(nearestFromCenter, across);
        scale = arc.radius * sine;
        coefficients = {-beta * beta, -2 * a * beta, beta * beta + gamma * gamma - a * a, 2 * a * beta, a * a};
    }

    /// The largest magnitude divides all coefficients, so that one tolerance serves all sizes.
    RealRoots Solve() const {
        double largest = 0;
        for (double const c : coefficients) largest = std::max(largest, std::abs(c));
        QuarticCoefficients_t normalized = coefficients;
        for (double& c : normalized) c /= largest;
        return FindRealRoots(normalized, -1 - kIntervalMargin, 1 + kIntervalMargin);
    }
};

/// A ray's whole line, its direction normalised in double precision: the parameter of the point nearest to a distant
/// centre would otherwise be wrong by the rounding of the direction.
struct Line {
    Vertex origin;
    Vertex direction;
    Vertex fromCenter;        ///< from the arc's centre to the origin
    double nearestParameter;  ///< where the line comes closest to the centre

    Line(Ray3f const& ray, Vertex const& center)
        : origin(ToVertex(ray.origin)), direction(ToVertex(ray.direction)), fromCenter(origin - center) {
        direction = direction / Length(direction);
        nearestParameter = -Dot(fromCenter, direction);
    }

    Vertex PointAt(double s) const { return origin + s * direction; }
    Vertex GetNearestPoint() const { return PointAt(nearestParameter); }
};

/// Of the two points of a plane-parallel line at `radius` from the axis, the one farther along the ray is the only one
/// that is looked at; what is farther from the axis everywhere has its point nearest to the centre instead.
Vertex PlaneParallelCandidate(PlacedArc const& arc, Line const& line) {
    double const height = Dot(line.fromCenter, Cross(line.direction, arc.normal));
    double const squared = arc.radius * arc.radius - height * height;
    return squared > 0 ? line.PointAt(std::sqrt(squared) + line.nearestParameter) : line.GetNearestPoint();
}

ArcPoint ClosestOfStationaryPoints(PlacedArc const& arc, Line const& line) {
    if (arc.radius == 0) return arc.ClosestTo(line.GetNearestPoint());

    Vertex const nearestFromCenter = line.fromCenter + line.nearestParameter * line.direction;
    StationaryPoints const stationary(arc, line.direction, nearestFromCenter);
    ArcPoint best;
    for (double const root : stationary.Solve()) {
        ArcPoint const candidate = arc.ClosestTo(line.PointAt(line.nearestParameter + stationary.scale * root));
        if (candidate.distance < best.distance) best = candidate;
    }
    return best;
}

/// [-] What a distance is wrong by at most, in shares of itself when it is narrowed, and of the origin's distance.
constexpr double kNarrowingShare = 1e-6;
constexpr double kFarOriginShare = 1e-12;

}  // namespace

ClosestPoint ClosestPointPointArc(Vertex const& point, ArcSegment const& arc) {
    return Narrowed(PlacedArc(arc).ClosestTo(point));
}

ClosestPoint ClosestPointRayArc(Ray3f const& ray, ArcSegment const& arc) {
    PlacedArc const placed(arc);
    Line const line(ray, arc.center);
    Vertex const direction = ToVertex(ray.direction);
    if (IsZero(Cross(direction, arc.axis))) {
        bool const onAxis = IsZero(Cross(line.fromCenter, arc.axis));
        return Narrowed(placed.ClosestTo(onAxis ? arc.center : line.GetNearestPoint()));
    }
    if (std::abs(Dot(direction, arc.axis)) < kPlaneParallelCosine) {
        return Narrowed(placed.ClosestTo(PlaneParallelCandidate(placed, line)));
    }
    return Narrowed(ClosestOfStationaryPoints(placed, line));
}

bool IsArcBeyond(Ray3f const& ray, ArcSegment const& arc, float distance) {
    Vertex const direction = ToVertex(ray.direction);
    Vertex const fromCenter = ToVertex(ray.origin) - arc.center;
    Vertex const cross = Cross(fromCenter, direction);
    double const originDistance = std::abs(fromCenter.x) + std::abs(fromCenter.y) + std::abs(fromCenter.z);
    double const reach = (distance + std::abs(arc.radius)) * (1 + kNarrowingShare) + kFarOriginShare * originDistance;
    return Dot(cross, cross) > reach * reach * Dot(direction, direction);
}

}  // namespace Quorlan::Tools::Picking
