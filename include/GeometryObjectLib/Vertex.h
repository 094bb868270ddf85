#pragma once

#include <cmath>

namespace GeometryObjectLib {

/// A point or a vector of model space in double precision.
///
/// All operations work component by component in the order x, y, z and allocate nothing.
struct Vertex {
    double x = 0;
    double y = 0;
    double z = 0;
};

constexpr Vertex operator+(Vertex const& a, Vertex const& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vertex operator-(Vertex const& a, Vertex const& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vertex operator*(double k, Vertex const& a) { return {k * a.x, k * a.y, k * a.z}; }
constexpr Vertex operator*(Vertex const& a, double k) { return {a.x * k, a.y * k, a.z * k}; }

/// Divides each component by `k`; this is not the product with 1 / k, which rounds twice.
constexpr Vertex operator/(Vertex const& a, double k) { return {a.x / k, a.y / k, a.z / k}; }

constexpr double Dot(Vertex const& a, Vertex const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr Vertex Cross(Vertex const& a, Vertex const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The Euclidean length, the square root of the plain sum of squares.
inline double Length(Vertex const& a) { return std::sqrt(Dot(a, a)); }

}  // namespace GeometryObjectLib
