#include "picking/SurfaceIntersection.h"

#include <Tools/Picking/RayToBRepSurfaceIntersectionBuilder.h>

namespace Quorlan::Tools::Picking {

bool RayToBRepSurfaceIntersectionBuilder::BuildBRep(glm::vec3 const& origin, glm::vec3 const& direction,
                                                    std::vector<glm::vec4> const& clippingPlanes,
                                                    std::vector<char> const& modelBuffer, unsigned int index) {
    return Build(kFacetedBRep, origin, direction, clippingPlanes, modelBuffer, index);
}

bool RayToBRepSurfaceIntersectionBuilder::BuildBRepWithNormal(glm::vec3 const& origin, glm::vec3 const& direction,
                                                              std::vector<glm::vec4> const& clippingPlanes,
                                                              std::vector<char> const& modelBuffer,
                                                              unsigned int index) {
    return Build(kBRepWithNormal, origin, direction, clippingPlanes, modelBuffer, index);
}

bool RayToBRepSurfaceIntersectionBuilder::BuildBRepWithUV(glm::vec3 const& origin, glm::vec3 const& direction,
                                                          std::vector<glm::vec4> const& clippingPlanes,
                                                          std::vector<char> const& modelBuffer, unsigned int index) {
    return Build(kBRepWithUV, origin, direction, clippingPlanes, modelBuffer, index);
}

bool RayToBRepSurfaceIntersectionBuilder::Build(unsigned int kind, glm::vec3 const& origin, glm::vec3 const& direction,
                                                std::vector<glm::vec4> const& clippingPlanes,
                                                std::vector<char> const& modelBuffer, unsigned int index) {
    auto const brep = FindBRep(modelBuffer, static_cast<DefinitionKind>(kind), index);
    if (!brep) return false;
    Ray3f const ray{ToVector3f(origin), ToVector3f(direction)};
    SurfaceHit const hit = IntersectSurface(ray, clippingPlanes, StoredBRepAccess(*brep), singleSided_);
    wireIndex_ = static_cast<unsigned int>(hit.face);
    rayParameter_ = hit.t;
    position_ = ToGlm(hit.position);
    normal_ = ToGlm(hit.normal);
    return hit.isHit;
}

}  // namespace Quorlan::Tools::Picking
