#include <GeometryObjectLib/AffineTransform.h>

#include <algorithm>
#include <cmath>

namespace GeometryObjectLib {
namespace {

/// Axis and angle of the rotation with columns x, y, z, through its unit quaternion (Shepperd, "Quaternion from
/// Rotation Matrix", 1978): the largest of the four components is formed first, so that no half turn loses its axis.
void DecomposeRotation(Vertex const& x, Vertex const& y, Vertex const& z, Vertex& axis, double& angle) {
    double const trace = x.x + y.y + z.z;
    double w = 0;
    Vertex v;
    if (trace >= std::max({x.x, y.y, z.z})) {
        w = 1 + trace;
        v = {y.z - z.y, z.x - x.z, x.y - y.x};
    } else if (x.x >= y.y && x.x >= z.z) {
        w = y.z - z.y;
        v = {1 + x.x - y.y - z.z, x.y + y.x, z.x + x.z};
    } else if (y.y >= z.z) {
        w = z.x - x.z;
        v = {x.y + y.x, 1 + y.y - x.x - z.z, y.z + z.y};
    } else {
        w = x.y - y.x;
        v = {z.x + x.z, y.z + z.y, 1 + z.z - x.x - y.y};
    }
    double const length = Length(v);
    if (!(length > 0)) return;
    double const sign = w < 0 ? -1.0 : 1.0;
    axis = (sign * v) / length;
    angle = 2 * std::atan2(length, std::abs(w));
}

}  // namespace

AffineTransform AffineTransform::FromMatrix(Matrix4 const& matrix) {
    AffineTransform transform;
    transform.matrix = matrix;
    transform.offset = matrix.GetColumn(3);

    Vertex const x = matrix.GetColumn(0);
    Vertex const y = matrix.GetColumn(1);
    Vertex const z = matrix.GetColumn(2);
    bool const mirrors = Dot(Cross(x, y), z) < 0;
    transform.scale = {mirrors ? -Length(x) : Length(x), Length(y), Length(z)};
    if (transform.scale.x != 0 && transform.scale.y != 0 && transform.scale.z != 0) {
        DecomposeRotation(x / transform.scale.x, y / transform.scale.y, z / transform.scale.z, transform.axis,
                          transform.angle);
    }
    return transform;
}

}  // namespace GeometryObjectLib
