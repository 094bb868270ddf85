#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Ray3f.h>
#include <Tools/Export.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Picking {

/// Finds the edge of a faceted BRep that passes closest to a ray.
///
/// Every edge of every outer and inner loop counts that is not clipped away whole and whose closest point to the ray is
/// not clipped. There is no tolerance: the clipping planes are the limit. Of edges at the same distance the first one
/// stays: lower edge of a loop, lower face, outer loops before holes. Edges have no side.
///
/// All in single precision; positions are narrowed. An edge behind the origin is measured from the origin. Edges
/// shorter than about 3.5e-4 are passed over. Distances near zero are coarse: a touched edge may show 1e-3 of its
/// distance from the origin.
///
/// Its twin for model buffers, RayToBRepEdgesBuilder, has another GetRayParameter and another state after a miss.
/// Source of the distance: Schneider and Eberly, "Geometric Tools for Computer Graphics", 2002.
class QUORLAN_TOOLS_API RayToFacetedBRepEdgesBuilder {
public:
    /// Looks at every edge once; allocates nothing.
    /// REQUIRES: the ray's direction is of unit length; the planes' normals point to what is cut away; the indices of
    /// `brep` are in range.
    /// RETURNS false if no edge is left: GetRayParameter is then 3.4028235e38, the other results keep their values.
    bool Build(GeometryObjectLib::Ray3f const& ray, std::vector<GeometryObjectLib::Plane3f> const& clippingPlanes,
               GeometryObjectLib::FacetedBRep const& brep);

    /// The point of the edge that is closest to the ray, in the BRep's own space.
    GeometryObjectLib::Vector3f const& GetEdgePoint() const { return edgePoint_; }

    /// The DISTANCE between the ray and the edge, not a position on the ray.
    float GetRayParameter() const { return rayParameter_; }

    /// The face that the edge's loop belongs to.
    std::uint64_t GetWireIndex() const { return wireIndex_; }

private:
    std::uint64_t wireIndex_ = 0;
    GeometryObjectLib::Vector3f edgePoint_;
    float rayParameter_ = 0;
};

}  // namespace Quorlan::Tools::Picking
