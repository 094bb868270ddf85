#pragma once

#include <GeometryObjectLib/Vertex.h>

namespace GeometryObjectLib {

/// An axis-aligned box, stored as its centre and half its edge lengths (not negative in a valid box).
struct AxisAlignedBox3 {
    Vertex center;
    Vertex halfExtent;

    Vertex GetMin() const { return center - halfExtent; }
    Vertex GetMax() const { return center + halfExtent; }

    static AxisAlignedBox3 FromCorners(Vertex const& lo, Vertex const& hi) {
        return {(hi + lo) / 2.0, (hi - lo) / 2.0};
    }
};

}  // namespace GeometryObjectLib
