#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Ray3f.h>
#include <GeometryObjectLib/Vector3f.h>
#include <Tools/Export.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Vector3f;

/// The face of a faceted BRep in memory that a ray hits.
///
///     RayToFacetedBRepSurfaceIntersectionBuilder builder;
///     if (builder.Build({{5, 0.5f, 0.5f}, {-1, 0, 0}}, {}, cube)) Show(builder.GetPosition());
///
/// Everything is in the coordinates of the BRep and in single precision. A face is hit where the ray meets the plane of
/// its outer loop (Newell's method) inside the loop; the origin must not lie behind that plane. A face one of whose
/// holes the ray passes through is never hit. Of several faces hit, the last in the face list is reported: a closed
/// convex solid has one that faces the ray, for other solids this is not the nearest.
class QUORLAN_TOOLS_API RayToFacetedBRepSurfaceIntersectionBuilder {
public:
    /// Whether only faces whose normal points against the ray count, from the next build on. Without it, a face turned
    /// away can be hit behind the origin (t <= 0) too. DEFAULT: true.
    void SetSingleSided(bool singleSided) { singleSided_ = singleSided; }

    /// Intersects. Points with Dot(normal, p) > distance for one of the clipping planes are not hit; points on a plane
    /// are. RETURNS false if no face is hit; the getters then give the values named below.
    /// REQUIRES: every loop index is below the vertex count.
    /// COST: one pass over all loops; it allocates only where a hole is pierced.
    bool Build(Ray3f const& ray, std::vector<Plane3f> const& clippingPlanes, FacetedBRep const& brep);

    /// The hit point. After a miss (0, 0, 0).
    Vector3f const& GetPosition() const { return position_; }
    /// The unit normal of the face's plane. After a miss (1, 0, 0).
    Vector3f const& GetNormal() const { return normal_; }
    /// t of the hit point origin + t * direction. After a miss 3.4028235e38, the largest float.
    float GetRayParameter() const { return rayParameter_; }
    /// The index of the face. After a miss 0.
    std::uint64_t GetWireIndex() const { return wireIndex_; }

private:
    bool singleSided_ = true;
    std::uint64_t wireIndex_ = 0;
    float rayParameter_ = 0;
    Vector3f position_;
    Vector3f normal_;
};

}  // namespace Quorlan::Tools::Picking
