#pragma once

#include "geometry/MatrixInverse.h"

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/Plane3f.h>
#include <Tools/Picking/ViewProjection.h>

#include <vector>

/// What a pick carries from the world into the space of a model, in double precision.
namespace Quorlan::Tools::Picking {

/// The pick ray in model space; the direction is not of unit length where the transform scales.
struct ModelRay {
    Vertex origin;
    Vertex direction;
};

/// The ray through a pixel in the space of a model that `transform` places in the world.
inline ModelRay CreatePickRay(ViewProjection const& view, double x, double y, AffineTransform const& transform) {
    Vertex origin;
    Vertex direction;
    ViewToWorld(view, x, y, origin, direction);
    auto const modelFromWorld = GeometryObjectLib::Inverse(transform.matrix);
    return {TransformPoint(modelFromWorld, origin), TransformDirection(modelFromWorld, direction)};
}

/// A clipping plane that keeps the points with Dot(normal, p) <= distance.
struct WidePlane {
    Vertex normal;
    double distance = 0;
};

/// The plane in the coordinates that `x`, `y`, `z` and `origin` map from, so that every point keeps its side.
inline WidePlane CarryPlane(WidePlane const& plane, Vertex const& x, Vertex const& y, Vertex const& z,
                            Vertex const& origin) {
    Vertex const& n = plane.normal;
    return {{Dot(x, n), Dot(y, n), Dot(z, n)}, plane.distance - Dot(n, origin)};
}

/// World planes in the space of a model that `transform` places in the world.
inline std::vector<WidePlane> CarryPlanes(std::vector<Plane3f> const& planes, AffineTransform const& transform) {
    auto const& m = transform.matrix;
    std::vector<WidePlane> carried;
    carried.reserve(planes.size());
    for (Plane3f const& plane : planes) {
        WidePlane const wide{{plane.normal.x, plane.normal.y, plane.normal.z}, plane.distance};
        carried.push_back(CarryPlane(wide, m.GetColumn(0), m.GetColumn(1), m.GetColumn(2), m.GetColumn(3)));
    }
    return carried;
}

}  // namespace Quorlan::Tools::Picking
