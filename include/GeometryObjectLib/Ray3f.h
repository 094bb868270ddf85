#pragma once

#include <GeometryObjectLib/Vector3f.h>

namespace GeometryObjectLib {

/// The ray origin + t * direction, t >= 0. The direction need not be of unit length; t counts in its lengths.
struct Ray3f {
    Vector3f origin;
    Vector3f direction;
};

}  // namespace GeometryObjectLib
