#pragma once

#include <cmath>

namespace GeometryObjectLib {

/// A point or a vector in single precision: rays, planes and the local coordinates of shapes.
struct Vector3f {
    float x = 0;
    float y = 0;
    float z = 0;
};

constexpr Vector3f operator+(Vector3f const& a, Vector3f const& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vector3f operator-(Vector3f const& a, Vector3f const& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vector3f operator*(Vector3f const& a, float k) { return {a.x * k, a.y * k, a.z * k}; }
constexpr Vector3f operator*(float k, Vector3f const& a) { return {k * a.x, k * a.y, k * a.z}; }

/// Divides each component by `k`; this is not the product with 1 / k, which rounds twice.
constexpr Vector3f operator/(Vector3f const& a, float k) { return {a.x / k, a.y / k, a.z / k}; }

constexpr float Dot(Vector3f const& a, Vector3f const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr Vector3f Cross(Vector3f const& a, Vector3f const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The Euclidean length; the sum and the root are taken in single precision.
inline float Length(Vector3f const& a) { return std::sqrt(Dot(a, a)); }

}  // namespace GeometryObjectLib
