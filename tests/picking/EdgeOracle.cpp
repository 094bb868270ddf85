#include "picking/EdgeOracle.h"

#include <algorithm>
#include <cmath>

namespace Quorlan::Testing {

namespace {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;

constexpr float kNothing = std::numeric_limits<float>::max();
constexpr float kEpsilon = 1.1920929e-7f;

Vector3f Narrow(Vertex const& v) { return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)}; }

Vertex Widen(Vector3f const& v) { return {v.x, v.y, v.z}; }

bool PointIsClipped(std::vector<Plane3f> const& planes, Vector3f const& p) {
    return std::any_of(planes.begin(), planes.end(), [&](Plane3f const& plane) {
        return (Dot(plane.normal, p) + plane.distance * 0.0f) - plane.distance > 0;
    });
}

bool SegmentIsClipped(std::vector<Plane3f> const& planes, Vector3f p, Vector3f q) {
    for (Plane3f const& plane : planes) {
        float const dp = Dot(plane.normal, p) - plane.distance;
        float const dq = Dot(plane.normal, q) - plane.distance;
        if (dp > 0 && dq > 0) return true;
        if (dp > 0 && std::abs(dq - dp) > kEpsilon) {
            p = p + (p - q) * (dp / (dq - dp));
        } else if (dq > 0 && std::abs(dq - dp) > kEpsilon) {
            q = p + (p - q) * (dp / (dq - dp));
        }
    }
    return !(Dot(p - q, p - q) > kEpsilon);
}

/// The regions as a list of cases, each with its own squared distance.
void MeasureEdge(Ray3f const& ray, Vector3f const& p, Vector3f const& q, Vector3f& point, float& distance) {
    Vector3f const center = (p + q) * 0.5f;
    Vector3f const axis = (q - p) / Length(q - p);
    float const e = Length(q - p) * 0.5f;
    Vector3f const diff = ray.origin - center;
    float const a = -Dot(ray.direction, axis);
    float const b0 = Dot(ray.direction, diff);
    float const b1 = -Dot(diff, axis);
    float const c = Dot(diff, diff);
    float const det = std::abs(1 - a * a);
    float s0 = 0;
    float s1 = 0;
    float squared = 0;
    auto const end = [&](float k) {
        s1 = k;
        s0 = -(a * k + b0);
        squared = s1 * (s1 + 2 * b1) + c;
        if (s0 > 0) squared = -s0 * s0 + s1 * (s1 + 2 * b1) + c;
    };
    auto const origin = [&] {
        s1 = -b1;
        if (s1 > e) s1 = e;
        if (s1 < -e) s1 = -e;
        squared = s1 * (s1 + 2 * b1) + c;
    };
    float const n0 = a * b1 - b0;
    float const n1 = a * b0 - b1;
    float const limit = e * det;
    if (!(det > 0)) {
        end(a > 0 ? -e : e);
    } else if (n0 >= 0 && n1 >= -limit && n1 <= limit) {
        s0 = n0 / det;
        s1 = n1 / det;
        squared = s0 * (s0 + a * s1 + 2 * b0) + s1 * (a * s0 + s1 + 2 * b1) + c;
    } else if (n0 >= 0 && n1 > limit) {
        end(e);
    } else if (n0 >= 0 && n1 < -limit) {
        end(-e);
    } else if (n0 < 0 && n1 <= -limit) {
        -(-a * e + b0) > 0 ? end(-e) : origin();
    } else if (n0 < 0 && n1 <= limit) {
        origin();
    } else {
        -(a * e + b0) > 0 ? end(e) : origin();
    }
    point = center + s1 * axis;
    distance = std::sqrt(std::abs(squared));
}

void SearchLoop(OracleEdge& best, Ray3f const& ray, std::vector<Plane3f> const& planes, FacetedBRep const& brep,
                std::uint64_t face, std::vector<std::uint32_t> const& loop) {
    float loopBest = kNothing;
    Vector3f loopPoint;
    for (std::size_t j = 0; j < loop.size(); ++j) {
        Vector3f const p = Narrow(brep.vertices[loop[j]]);
        Vector3f const q = Narrow(brep.vertices[loop[(j + 1) % loop.size()]]);
        if (SegmentIsClipped(planes, p, q)) continue;
        Vector3f point;
        float distance = 0;
        MeasureEdge(ray, p, q, point, distance);
        if (!PointIsClipped(planes, point) && loopBest > distance) {
            loopBest = distance;
            loopPoint = point;
        }
    }
    if (loopBest != kNothing && best.distance > loopBest) best = {loopBest, loopPoint, face};
}

/// The distance of a point from the half line.
double FromRay(Vertex const& point, Vertex const& origin, Vertex const& direction) {
    double const t = std::max(Dot(point - origin, direction), 0.0);
    return Length(point - (origin + t * direction));
}

}  // namespace

OracleEdge FindNearestEdgeStepByStep(Ray3f const& ray, std::vector<Plane3f> const& planes, FacetedBRep const& brep) {
    OracleEdge best;
    for (std::size_t i = 0; i < brep.faces.size(); ++i) SearchLoop(best, ray, planes, brep, i, brep.faces[i]);
    for (auto const& [face, loops] : brep.holes) {
        for (auto const& loop : loops) SearchLoop(best, ray, planes, brep, face, loop);
    }
    return best;
}

double SearchedDistance(Ray3f const& ray, Vector3f const& p, Vector3f const& q) {
    Vertex const origin = Widen(ray.origin);
    Vertex const direction = Widen(ray.direction) / Length(Widen(ray.direction));
    auto const at = [&](double s) { return FromRay(Widen(p) + s * (Widen(q) - Widen(p)), origin, direction); };
    double lower = 0;
    double upper = 1;
    for (int i = 0; i < 200; ++i) {
        double const third = (upper - lower) / 3;
        if (at(lower + third) > at(upper - third)) {
            lower += third;
        } else {
            upper -= third;
        }
    }
    return std::min({at(0), at(1), at(0.5 * (lower + upper))});
}

}  // namespace Quorlan::Testing
