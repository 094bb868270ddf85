#pragma once

#include <GeometryObjectLib/Ray3f.h>

#include <cmath>
#include <limits>

namespace Quorlan::Benchmarks {

using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Vector3f;

/// The plain closed form for the ray's line, with the ends and the origin tried one by one.
inline float PlainDistance(Ray3f const& ray, Vector3f const& p, Vector3f const& q, Vector3f& point) {
    Vector3f const span = q - p;
    float const along = Dot(ray.direction, span);
    float const lengthSquared = Dot(span, span);
    Vector3f const offset = p - ray.origin;
    float const det = lengthSquared - along * along;
    float best = std::numeric_limits<float>::max();
    auto const offer = [&](float s) {
        Vector3f const candidate = p + std::fmin(std::fmax(s, 0.0f), 1.0f) * span;
        float const t = std::fmax(Dot(candidate - ray.origin, ray.direction), 0.0f);
        float const distance = Length(candidate - (ray.origin + t * ray.direction));
        if (distance < best) {
            best = distance;
            point = candidate;
        }
    };
    offer((Dot(offset, ray.direction) * along - Dot(offset, span)) / det);
    offer(-Dot(offset, span) / lengthSquared);
    offer(0);
    offer(1);
    return best;
}

}  // namespace Quorlan::Benchmarks
