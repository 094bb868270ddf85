#pragma once

#include <Tools/Export.h>

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Picking {

/// Finds the segment or arc of a graphics container that passes closest to a ray, straight from a model buffer's bytes.
///
/// An element counts when its closest point to the ray is not clipped; of elements at the same distance the first
/// stays. Segments are measured from the half line of the ray, arcs from its whole line, and arcs with limits: of a
/// line that is parallel to an arc's plane only the crossing farther along the ray is looked at, and a partial arc may
/// be given a greater distance than its true one, never a smaller.
///
/// Segments in single precision, arcs in double precision rounded to single at the end. Source of the distances:
/// Schneider and Eberly, "Geometric Tools for Computer Graphics", 2002; Eberly, "Distance to Circles in 3D", 2015.
class QUORLAN_TOOLS_API RayToGraphicsContainerBuilder {
public:
    /// Looks at every element of the container at `index` once; allocates nothing and keeps nothing of the buffer.
    /// REQUIRES: `modelBuffer` is a trusted model buffer (its identifier is not looked at), `index` is below the number
    /// of containers; `direction` is of unit length. A clipping plane holds its normal in x, y, z and its distance in
    /// w; a point p is cut away where dot(normal, p) > distance. RETURNS false if the container, its segments or its
    /// arcs are absent (all results are kept), and if no element is left (the nearest point and the number are kept,
    /// the ray parameter is that of the kept point on this ray).
    bool Build(glm::vec3 const& origin, glm::vec3 const& direction, std::vector<glm::vec4> const& clippingPlanes,
               std::vector<char> const& modelBuffer, unsigned int index);

    /// The point of the element that is closest to the ray, in the container's own space.
    glm::vec3 const& GetNearestPoint() const { return nearestPoint_; }

    /// Where the nearest point projects onto the ray: dot(nearest point - origin, direction). May be negative.
    float GetRayParameter() const { return rayParameter_; }

    /// The segment's index, or the number of segments plus the arc's index.
    unsigned int HitSegmentNumber() const { return hitSegmentNumber_; }

private:
    glm::vec3 nearestPoint_{0, 0, 0};
    float rayParameter_ = 0;
    std::uint32_t hitSegmentNumber_ = 0;
};

}  // namespace Quorlan::Tools::Picking
