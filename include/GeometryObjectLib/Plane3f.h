#pragma once

#include <GeometryObjectLib/Vector3f.h>

namespace GeometryObjectLib {

/// The plane of all points p with Dot(normal, p) == distance.
///
/// As a clipping plane it keeps the points with Dot(normal, p) <= distance: the normal points to what is cut away.
struct Plane3f {
    Vector3f normal;
    float distance = 0;
};

}  // namespace GeometryObjectLib
