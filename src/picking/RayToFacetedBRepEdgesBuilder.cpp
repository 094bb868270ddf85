#include "picking/NearestEdge.h"

#include <Tools/Picking/RayToFacetedBRepEdgesBuilder.h>

namespace Quorlan::Tools::Picking {

bool RayToFacetedBRepEdgesBuilder::Build(Ray3f const& ray, std::vector<Plane3f> const& clippingPlanes,
                                         GeometryObjectLib::FacetedBRep const& brep) {
    NearestSegment const nearest = FindNearestEdge(ray, clippingPlanes, FacetedBRepAccess(brep));
    rayParameter_ = nearest.distance;
    if (!nearest.IsFound()) return false;

    wireIndex_ = nearest.number;
    edgePoint_ = nearest.point;
    return true;
}

}  // namespace Quorlan::Tools::Picking
