#include "picking/NearestEdge.h"

#include <Tools/Picking/RayToBRepEdgesBuilder.h>

namespace Quorlan::Tools::Picking {

// Out of line, which makes it user-provided: the results of a new builder stay unset.
RayToBRepEdgesBuilder::RayToBRepEdgesBuilder() = default;

bool RayToBRepEdgesBuilder::BuildBRep(glm::vec3 const& origin, glm::vec3 const& direction,
                                      std::vector<glm::vec4> const& clippingPlanes,
                                      std::vector<char> const& modelBuffer, unsigned int index) {
    return Build(kFacetedBRep, origin, direction, clippingPlanes, modelBuffer, index);
}

bool RayToBRepEdgesBuilder::BuildBRepWithNormal(glm::vec3 const& origin, glm::vec3 const& direction,
                                                std::vector<glm::vec4> const& clippingPlanes,
                                                std::vector<char> const& modelBuffer, unsigned int index) {
    return Build(kBRepWithNormal, origin, direction, clippingPlanes, modelBuffer, index);
}

bool RayToBRepEdgesBuilder::BuildBRepWithUV(glm::vec3 const& origin, glm::vec3 const& direction,
                                            std::vector<glm::vec4> const& clippingPlanes,
                                            std::vector<char> const& modelBuffer, unsigned int index) {
    return Build(kBRepWithUV, origin, direction, clippingPlanes, modelBuffer, index);
}

bool RayToBRepEdgesBuilder::Build(std::uint8_t kind, glm::vec3 const& origin, glm::vec3 const& direction,
                                  std::vector<glm::vec4> const& clippingPlanes, std::vector<char> const& modelBuffer,
                                  unsigned int index) {
    auto const brep = FindBRep(modelBuffer, static_cast<DefinitionKind>(kind), index);
    if (!brep) return false;

    Ray3f const ray{ToVector3f(origin), ToVector3f(direction)};
    NearestSegment const nearest = FindNearestEdge(ray, clippingPlanes, StoredBRepAccess(*brep));
    if (!nearest.IsFound()) return false;

    wireIndex_ = nearest.number;
    edgePoint_ = ToGlm(nearest.point);
    rayParameter_ = Dot(nearest.point - ray.origin, ray.direction);
    return true;
}

}  // namespace Quorlan::Tools::Picking
