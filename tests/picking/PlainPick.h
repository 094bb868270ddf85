#pragma once

#include "model/ModelView.h"
#include "picking/BRepAccess.h"
#include "picking/ClippingPlanes.h"
#include "picking/InstancePick.h"
#include "picking/NearestEdge.h"
#include "picking/SurfaceIntersection.h"

#include <Quorlan/ModelTypes.h>
#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

/// The rules of the surface builders and of the pickers written down one after the other in scalars, instance by
/// instance and face by face in their order: what the lanes and the shortcuts of the library must give to the bit.
namespace Quorlan::Testing {

using namespace Quorlan::Tools::Picking;
using Quorlan::kInvalidIndex;
using Quorlan::ModelView;

template <class Access, class Loop>
Plane3f PlainLoopPlane(Access const& brep, Loop const& loop) {
    Vector3f n;
    Vector3f sum;
    for (std::size_t i = 0; i < loop.size; ++i) {
        Vector3f const p = brep.GetPosition(loop[i]);
        Vector3f const q = brep.GetPosition(loop[(i + 1) % loop.size]);
        n.x += (p.z + q.z) * (p.y - q.y);
        n.y += (p.z - q.z) * (q.x + p.x);
        n.z += (q.y + p.y) * (p.x - q.x);
        sum = sum + p;
    }
    float const squared = Dot(n, n);
    if (squared == 0) return {{1, 0, 0}, 0};
    Vector3f const unit = n / std::sqrt(squared);
    return {unit, Dot(unit, sum / static_cast<float>(loop.size))};
}

template <class Access, class Loop>
bool PlainIsPointInLoop(Access const& brep, Vector3f const& d, Vector3f const& point, Loop const& loop) {
    if (loop.size < 3) return false;
    Vector3f u;
    if (std::abs(d.x) >= std::abs(d.y)) {
        float const factor = 1 / std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
        u = {-d.z * factor, 0, d.x * factor};
    } else {
        float const factor = 1 / std::sqrt(d.y * d.y + d.z * d.z);
        u = {0, d.z * factor, -d.y * factor};
    }
    Vector3f const v = Cross(d, u);
    Vector3f const last = brep.GetPosition(loop[loop.size - 1]) - point;
    float a0 = Dot(last, u);
    float b0 = Dot(last, v);
    bool inside = false;
    for (std::size_t i = 0; i < loop.size; ++i) {
        Vector3f const q = brep.GetPosition(loop[i]) - point;
        float const a = Dot(q, u);
        float const b = Dot(q, v);
        if ((b > 0) != (b0 > 0)) {
            float const x = (a0 - a) * (0 - b) / (b0 - b) + a;
            if (x > 0) inside = !inside;
        }
        a0 = a;
        b0 = b;
    }
    return inside;
}

template <class Access, class Plane>
SurfaceHit PlainIntersectSurface(Ray3f const& ray, std::vector<Plane> const& planes, Access const& brep,
                                 bool singleSided) {
    auto const hits = [&](auto const& loop, Plane3f const& plane, float& t) {
        t = 0;
        float const height = Dot(plane.normal, ray.origin) - plane.distance;
        if (0 > height) return false;
        float const slope = Dot(plane.normal, ray.direction);
        if (slope == 0) return false;
        t = -height / slope;
        Vector3f const point = ray.origin + ray.direction * t;
        return !IsClipped(planes, point) && PlainIsPointInLoop(brep, ray.direction, point, loop);
    };
    std::set<std::uint64_t> excluded;
    brep.ForEachHole([&](std::uint64_t face, auto const& loop) {
        Plane3f const plane = PlainLoopPlane(brep, loop);
        float t = 0;
        if (hits(loop, {plane.normal * -1.0f, -plane.distance}, t)) excluded.insert(face);
    });
    SurfaceHit hit;
    brep.ForEachFace([&](std::uint64_t face, auto const& loop) {
        if (excluded.count(face) != 0) return;
        Plane3f const plane = PlainLoopPlane(brep, loop);
        if (singleSided && !(0 > Dot(plane.normal, ray.direction))) return;
        float t = 0;
        if (hits(loop, plane, t)) hit = {true, face, t, ray.origin + ray.direction * t, plane.normal};
    });
    return hit;
}

/// What a pick stores, with the hit in its definition's coordinates.
struct PlainHit {
    float t = std::numeric_limits<float>::max();
    Vector3f position;
    Vector3f normal{1, 0, 0};
    unsigned instance = kInvalidIndex;
    unsigned primitive = kInvalidIndex;
};

inline PlainHit PlainPickSurfaces(ModelView const& model, ModelRay const& modelRay,
                                  std::vector<WidePlane> const& planes, std::vector<unsigned> const& ids) {
    InstancePick pick(model, modelRay, planes);
    PlainHit best;
    for (unsigned const id : ids) {
        auto const& instance = *model.geometry->instances()->Get(id);
        auto const& definition = *model.geometry->definitions()->Get(instance.definitionIndex());
        Ray3f const ray = pick.GetRayOf(instance);
        Vector3f const lo = ToVector3f(definition.boundsMin());
        Vector3f const hi = ToVector3f(definition.boundsMax());
        Vector3f const c = (lo + hi) / 2;
        Vector3f const e = (hi - lo) / 2;
        Vector3f const& o = ray.origin;
        Vector3f const& d = ray.direction;
        float const least = ((c.x - o.x) * d.x + (c.y - o.y) * d.y + (c.z - o.z) * d.z) -
                            (std::abs(d.x) * e.x + std::abs(d.y) * e.y + std::abs(d.z) * e.z);
        auto const brep = Quorlan::FindBRep(*model.geometry, definition.kind(), definition.kindIndex());
        if (least > best.t || !brep) continue;
        bool const isTwoSided = instance.materialIndex() < CountOf(model.geometry->materials()) &&
                                model.geometry->materials()->Get(instance.materialIndex())->twoSided() == 1;
        SurfaceHit const hit =
            PlainIntersectSurface(ray, pick.GetClippingPlanesOf(instance), StoredBRepAccess(*brep), !isTwoSided);
        if (hit.isHit && hit.t < best.t) {
            best = {hit.t, hit.position, hit.normal, id, static_cast<unsigned>(hit.face)};
        }
    }
    return best;
}

/// Of the kinds 1, 5, 6 and 7, for a perspective camera of square pixels with this focal distance.
inline PlainHit PlainPickEdges(ModelView const& model, std::vector<char> const& buffer, ModelRay const& modelRay,
                               std::vector<WidePlane> const& planes, std::vector<unsigned> const& ids, float focal,
                               float tolerance) {
    InstancePick pick(model, modelRay, planes);
    PlainHit best;
    for (unsigned const id : ids) {
        auto const& instance = *model.geometry->instances()->Get(id);
        auto const& definition = *model.geometry->definitions()->Get(instance.definitionIndex());
        Ray3f const ray = pick.GetRayOf(instance);
        auto const& localPlanes = pick.GetClippingPlanesOf(instance);
        Vector3f point;
        float t = 0;
        unsigned primitive = 0;
        if (definition.kind() == kGraphicsContainer) {
            RayToGraphicsContainerBuilder lines;
            if (!lines.Build(ToGlm(ray.origin), ToGlm(ray.direction), localPlanes, buffer, definition.kindIndex())) {
                continue;
            }
            point = ToVector3f(lines.GetNearestPoint());
            t = lines.GetRayParameter();
            primitive = lines.HitSegmentNumber();
        } else {
            auto const brep = Quorlan::FindBRep(*model.geometry, definition.kind(), definition.kindIndex());
            if (!brep) continue;
            NearestSegment const nearest = FindNearestEdge(ray, localPlanes, StoredBRepAccess(*brep));
            if (!nearest.IsFound()) continue;
            point = nearest.point;
            t = Dot(point - ray.origin, ray.direction);
            primitive = static_cast<unsigned>(nearest.number);
        }
        if (!(t < best.t)) continue;
        Vector3f const w = point - ray.origin;
        Vector3f const across = w - Dot(ray.direction, w) * ray.direction;
        float const distance = Length(across);
        if (!((distance / t) * focal + distance * 0.0f < tolerance)) continue;
        best = {t, point, {1, 0, 0}, id, primitive};
    }
    return best;
}

}  // namespace Quorlan::Testing
