#include "picking/SurfaceIntersection.h"

#include <Tools/Picking/RayToFacetedBRepSurfaceIntersectionBuilder.h>

namespace Quorlan::Tools::Picking {

bool RayToFacetedBRepSurfaceIntersectionBuilder::Build(Ray3f const& ray, std::vector<Plane3f> const& clippingPlanes,
                                                       FacetedBRep const& brep) {
    SurfaceHit const hit = IntersectSurface(ray, clippingPlanes, FacetedBRepAccess(brep), singleSided_);
    wireIndex_ = hit.face;
    rayParameter_ = hit.t;
    position_ = hit.position;
    normal_ = hit.normal;
    return hit.isHit;
}

}  // namespace Quorlan::Tools::Picking
