#pragma once

#include "geometry/ConvexEars.h"
#include "geometry/HoleLinkCheck.h"

#include <GeometryObjectLib/Vertex.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan {

/// The loops of one face: the positions of all corners, loop after loop, the outer loop first.
struct FaceLoops {
    std::vector<GeometryObjectLib::Vertex> corners;
    std::vector<std::size_t> ends;  ///< for each loop, one past its last corner

    std::size_t GetBegin(std::size_t loop) const { return loop == 0 ? 0 : ends[loop - 1]; }
    std::size_t GetSize(std::size_t loop) const { return ends[loop] - GetBegin(loop); }
};

/// Splits faces into triangles in double precision, for integrals over closed surfaces.
///
/// Triangles and convex quadrilaterals are split as they are, everything else by earcut in the face's plane. Where
/// earcut loses or gains area, because loops cross themselves or one another, the face is split into signed fans: some
/// triangles then lie outside the face or upside down, but their sum is that of the face, and the surface stays closed.
class PlanarTriangulator {
public:
    /// Returns triples of indices into the face's corners, in the winding of the outer loop. They are valid until the
    /// next call. REQUIRES: at least one loop.
    std::vector<std::uint32_t> const& Triangulate(FaceLoops const& face);

private:
    using Point = std::array<double, 2>;

    bool Project(FaceLoops const& face);
    bool CutEars();
    void SplitIntoFans(FaceLoops const& face);

    std::vector<std::vector<Point>> rings_;
    std::vector<std::uint32_t> triangles_;
    GeometryObjectLib::ConvexEars<Point, std::uint32_t> convexEars_;
    GeometryObjectLib::HoleLinkCheck holeLinks_;
};

/// The normal of a loop by Newell's method, not normalised: its length is twice the area of a planar loop.
GeometryObjectLib::Vertex ComputeNewellNormal(GeometryObjectLib::Vertex const* corners, std::size_t count);

/// A unit vector perpendicular to the unit vector `n`, away from the axis that n is close to.
GeometryObjectLib::Vertex ComputePerpendicular(GeometryObjectLib::Vertex const& n);

}  // namespace Quorlan
