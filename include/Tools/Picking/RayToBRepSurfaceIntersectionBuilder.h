#pragma once

#include <Tools/Export.h>

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <vector>

namespace Quorlan::Tools::Picking {

/// The face of a BRep in a model buffer that a ray hits.
///
/// The rules are those of `RayToFacetedBRepSurfaceIntersectionBuilder`, in the coordinates of the definition; a
/// clipping plane is a normal in x, y, z and a distance in w. Each kind of stored BRep has its own operation; only
/// positions are read.
///
/// REQUIRES of all three: a trusted model buffer (its identifier is not tested) and an `index` below the length of the
/// vector of that kind. RETURNS false on a miss, when the getters give the values named below, and also where the
/// geometry, the vector or the vertices are absent, when they keep what they had.
class QUORLAN_TOOLS_API RayToBRepSurfaceIntersectionBuilder {
public:
    /// As in `RayToFacetedBRepSurfaceIntersectionBuilder`. DEFAULT: true.
    void SetSingleSided(bool singleSided) { singleSided_ = singleSided; }

    /// The plain BRep at `index` (kind 1).
    bool BuildBRep(glm::vec3 const& origin, glm::vec3 const& direction, std::vector<glm::vec4> const& clippingPlanes,
                   std::vector<char> const& modelBuffer, unsigned int index);
    /// The BRep with vertex normals at `index` (kind 7).
    bool BuildBRepWithNormal(glm::vec3 const& origin, glm::vec3 const& direction,
                             std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer,
                             unsigned int index);
    /// The BRep with texture coordinates at `index` (kind 6).
    bool BuildBRepWithUV(glm::vec3 const& origin, glm::vec3 const& direction,
                         std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer,
                         unsigned int index);

    /// The hit point. After a miss (0, 0, 0).
    glm::vec3 const& GetPosition() const { return position_; }
    /// The unit normal of the face's plane. After a miss (1, 0, 0).
    glm::vec3 const& GetNormal() const { return normal_; }
    /// t of the hit point origin + t * direction. After a miss 3.4028235e38, the largest float.
    float GetRayParameter() const { return rayParameter_; }
    /// The index of the face. After a miss 0.
    unsigned int GetWireIndex() const { return wireIndex_; }

private:
    bool Build(unsigned int kind, glm::vec3 const& origin, glm::vec3 const& direction,
               std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer, unsigned int index);

    bool singleSided_ = true;
    unsigned int wireIndex_ = 0;
    float rayParameter_ = 0;
    glm::vec3 position_{0, 0, 0};
    glm::vec3 normal_{0, 0, 0};
};

}  // namespace Quorlan::Tools::Picking
