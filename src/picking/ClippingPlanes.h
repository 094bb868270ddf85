#pragma once

#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Vector3f.h>

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <vector>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Vector3f;

inline Vector3f ToVector3f(glm::vec3 const& v) { return {v.x, v.y, v.z}; }
inline glm::vec3 ToGlm(Vector3f const& v) { return {v.x, v.y, v.z}; }

/// Both forms of a clipping plane read alike; a glm plane holds the normal in x, y, z and the distance in w.
inline Plane3f const& AsPlane(Plane3f const& plane) { return plane; }
inline Plane3f AsPlane(glm::vec4 const& plane) { return {{plane.x, plane.y, plane.z}, plane.w}; }

/// Whether one plane cuts the point away. Points on a plane are kept.
///
/// The product with zero is no slip: a distance that is not finite makes the sum a NaN, the comparison false, and the
/// point is kept.
template <class Plane>
bool IsClipped(std::vector<Plane> const& planes, Vector3f const& point) {
    for (Plane const& stored : planes) {
        Plane3f const plane = AsPlane(stored);
        if ((Dot(plane.normal, point) + plane.distance * 0.0f) - plane.distance > 0) return true;
    }
    return false;
}

}  // namespace Quorlan::Tools::Picking
