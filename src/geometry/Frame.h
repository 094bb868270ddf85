#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <GeometryObjectLib/Matrix4.h>
#include <GeometryObjectLib/Vector3f.h>
#include <GeometryObjectLib/Vertex.h>

#include <algorithm>

namespace GeometryObjectLib {

inline Vector3f ToVector3f(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

inline Vertex ToVertex(Vector3f const& v) { return {v.x, v.y, v.z}; }

/// A compact rigid transform: p' = origin + x * p.x + y * p.y + z * p.z, with the origin in double precision and the
/// axes in single precision. The order of every sum is part of the result.
struct Frame {
    Vertex origin;
    Vector3f x{1, 0, 0};
    Vector3f y{0, 1, 0};
    Vector3f z{0, 0, 1};

    Frame() = default;
    Frame(Vertex const& o, Vector3f const& ax, Vector3f const& ay, Vector3f const& az)
        : origin(o), x(ax), y(ay), z(az) {}

    /// The columns of the matrix, narrowed; nothing is normalised.
    explicit Frame(AffineTransform const& transform)
        : origin(transform.matrix.GetColumn(3)),
          x(ToVector3f(transform.matrix.GetColumn(0))),
          y(ToVector3f(transform.matrix.GetColumn(1))),
          z(ToVector3f(transform.matrix.GetColumn(2))) {}

    /// The frame of a stored placement: each axis is normalised by itself, Y is not made perpendicular to X. Parallel
    /// or zero axes give values that are not finite.
    static Frame FromAxes(Vertex const& origin, Vector3f const& xAxis, Vector3f const& yAxis) {
        Vector3f const zAxis = Cross(xAxis, yAxis);
        return {origin, xAxis / Length(xAxis), yAxis / Length(yAxis), zAxis / Length(zAxis)};
    }
};

/// Applies `b` first, then `a`. The origin is composed in double precision, the axes in single precision.
inline Frame operator*(Frame const& a, Frame const& b) {
    auto const compose = [&a](Vector3f const& v) { return a.x * v.x + a.y * v.y + a.z * v.z; };
    return {a.origin + ToVertex(a.x) * b.origin.x + ToVertex(a.y) * b.origin.y + ToVertex(a.z) * b.origin.z,
            compose(b.x), compose(b.y), compose(b.z)};
}

/// The bounds of the transformed box with corners `lo` and `hi` (Arvo, "Transforming Axis-Aligned Bounding Boxes",
/// Graphics Gems, 1990). Products and sums are in single precision, the frame's origin is added in double precision.
inline AxisAlignedBox3 TransformBox(Frame const& frame, Vector3f const& lo, Vector3f const& hi) {
    auto const bounds = [&](float x, float y, float z, double origin, double& lower, double& upper) {
        float const lowerSum =
            std::min(x * lo.x, x * hi.x) + std::min(y * lo.y, y * hi.y) + std::min(z * lo.z, z * hi.z);
        float const upperSum =
            std::max(x * lo.x, x * hi.x) + std::max(y * lo.y, y * hi.y) + std::max(z * lo.z, z * hi.z);
        lower = static_cast<double>(lowerSum) + origin;
        upper = static_cast<double>(upperSum) + origin;
    };
    Vertex lower;
    Vertex upper;
    bounds(frame.x.x, frame.y.x, frame.z.x, frame.origin.x, lower.x, upper.x);
    bounds(frame.x.y, frame.y.y, frame.z.y, frame.origin.y, lower.y, upper.y);
    bounds(frame.x.z, frame.y.z, frame.z.z, frame.origin.z, lower.z, upper.z);
    return AxisAlignedBox3::FromCorners(lower, upper);
}

/// The same rigid transform in double precision throughout, for matrices and for rays far from the origin.
struct DoubleFrame {
    Vertex origin;
    Vertex x{1, 0, 0};
    Vertex y{0, 1, 0};
    Vertex z{0, 0, 1};

    /// The frame of a stored placement: Z from both axes, Y made perpendicular to X, all normalised last.
    static DoubleFrame FromAxes(Vertex const& origin, Vector3f const& xAxis, Vector3f const& yAxis) {
        Vertex const xWide = ToVertex(xAxis);
        Vertex const zWide = Cross(xWide, ToVertex(yAxis));
        Vertex const yWide = Cross(zWide, xWide);
        return {origin, xWide / Length(xWide), yWide / Length(yWide), zWide / Length(zWide)};
    }

    Matrix4 ToMatrix() const {
        Matrix4 matrix;
        matrix.m = {x.x, y.x, z.x, origin.x, x.y, y.y, z.y, origin.y, x.z, y.z, z.z, origin.z, 0, 0, 0, 1};
        return matrix;
    }
};

/// Applies `b` first, then `a`.
inline DoubleFrame operator*(DoubleFrame const& a, DoubleFrame const& b) {
    auto const compose = [&a](Vertex const& v) { return a.x * v.x + a.y * v.y + a.z * v.z; };
    return {a.origin + a.x * b.origin.x + a.y * b.origin.y + a.z * b.origin.z, compose(b.x), compose(b.y),
            compose(b.z)};
}

}  // namespace GeometryObjectLib
