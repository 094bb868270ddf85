#pragma once

#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <GeometryObjectLib/Matrix4.h>
#include <GeometryObjectLib/Vector3f.h>
#include <GeometryObjectLib/Vertex.h>

#include <cmath>
#include <cstddef>
#include <cstring>

/// Equality to the last bit. All values that are not numbers count as one: their bits are the compiler's choice.
namespace Quorlan::Testing {

template <class Real>
bool SameBits(Real a, Real b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof(Real)) == 0;
}

inline bool SameBits(GeometryObjectLib::Vertex const& a, GeometryObjectLib::Vertex const& b) {
    return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z);
}

inline bool SameBits(GeometryObjectLib::Vector3f const& a, GeometryObjectLib::Vector3f const& b) {
    return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z);
}

inline bool SameBits(GeometryObjectLib::AxisAlignedBox3 const& a, GeometryObjectLib::AxisAlignedBox3 const& b) {
    return SameBits(a.center, b.center) && SameBits(a.halfExtent, b.halfExtent);
}

inline bool SameBits(GeometryObjectLib::Matrix4 const& a, GeometryObjectLib::Matrix4 const& b) {
    for (std::size_t i = 0; i < a.m.size(); ++i) {
        if (!SameBits(a.m[i], b.m[i])) return false;
    }
    return true;
}

}  // namespace Quorlan::Testing
