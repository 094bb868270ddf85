#pragma once

#include <GeometryObjectLib/AffineTransform.h>

#include <cmath>

namespace TestSupport {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

inline AffineTransform MakeTranslation(double x, double y, double z) {
    Matrix4 matrix;
    matrix(0, 3) = x;
    matrix(1, 3) = y;
    matrix(2, 3) = z;
    return AffineTransform::FromMatrix(matrix);
}

/// The rotation about the z axis, counter-clockwise seen from above.
inline AffineTransform MakeRotationZ(double angleRadians) {
    Matrix4 matrix;
    matrix(0, 0) = std::cos(angleRadians);
    matrix(0, 1) = -std::sin(angleRadians);
    matrix(1, 0) = std::sin(angleRadians);
    matrix(1, 1) = std::cos(angleRadians);
    return AffineTransform::FromMatrix(matrix);
}

/// The rotation about any axis (Rodrigues' formula).
inline AffineTransform MakeRotation(Vertex const& axis, double angleRadians) {
    Vertex const a = axis / Length(axis);
    double const c = std::cos(angleRadians);
    double const s = std::sin(angleRadians);
    double const t = 1 - c;
    Matrix4 matrix;
    matrix.m = {t * a.x * a.x + c,
                t * a.x * a.y - s * a.z,
                t * a.x * a.z + s * a.y,
                0,
                t * a.x * a.y + s * a.z,
                t * a.y * a.y + c,
                t * a.y * a.z - s * a.x,
                0,
                t * a.x * a.z - s * a.y,
                t * a.y * a.z + s * a.x,
                t * a.z * a.z + c,
                0,
                0,
                0,
                0,
                1};
    return AffineTransform::FromMatrix(matrix);
}

/// Applies `b` first, then `a`.
inline AffineTransform Compose(AffineTransform const& a, AffineTransform const& b) {
    return AffineTransform::FromMatrix(a.matrix * b.matrix);
}

}  // namespace TestSupport
