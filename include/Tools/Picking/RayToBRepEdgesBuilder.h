#pragma once

#include <Tools/Export.h>

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Picking {

/// Finds the edge of a BRep of a model buffer that passes closest to a ray, straight from the buffer's bytes.
///
/// Chooses edges exactly as RayToFacetedBRepEdgesBuilder, whose rules hold here. What differs: GetRayParameter is a
/// position along the ray, a miss leaves all results as they were, and a new builder has no results at all: its getters
/// may be called after the first successful build only.
///
/// A clipping plane holds its normal in x, y, z and its distance in w; a point p is cut away where
/// dot(normal, p) > distance.
class QUORLAN_TOOLS_API RayToBRepEdgesBuilder {
public:
    RayToBRepEdgesBuilder();

    /// Looks at every edge of the faceted BRep at `index` once; allocates nothing and keeps nothing of the buffer.
    /// REQUIRES: `modelBuffer` is a trusted model buffer (its identifier is not looked at), `index` is below the number
    /// of such BReps; `direction` is of unit length.
    /// RETURNS false, with all results kept, if the BRep or its vertices are absent or no edge is left.
    bool BuildBRep(glm::vec3 const& origin, glm::vec3 const& direction, std::vector<glm::vec4> const& clippingPlanes,
                   std::vector<char> const& modelBuffer, unsigned int index);

    /// The same for the BReps with vertex normals.
    bool BuildBRepWithNormal(glm::vec3 const& origin, glm::vec3 const& direction,
                             std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer,
                             unsigned int index);

    /// The same for the BReps with texture coordinates.
    bool BuildBRepWithUV(glm::vec3 const& origin, glm::vec3 const& direction,
                         std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer,
                         unsigned int index);

    /// The point of the edge that is closest to the ray, in the BRep's own space.
    glm::vec3 const& GetEdgePoint() const { return edgePoint_; }

    /// Where the edge point projects onto the ray: dot(edge point - origin, direction). May be negative.
    float GetRayParameter() const { return rayParameter_; }

    /// The face that the edge's loop belongs to.
    std::uint64_t GetWireIndex() const { return wireIndex_; }

private:
    bool Build(std::uint8_t kind, glm::vec3 const& origin, glm::vec3 const& direction,
               std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer, unsigned int index);

    std::uint64_t wireIndex_;
    glm::vec3 edgePoint_;
    float rayParameter_;
};

}  // namespace Quorlan::Tools::Picking
