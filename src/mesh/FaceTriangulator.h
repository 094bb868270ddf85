#pragma once

#include "geometry/ConvexEars.h"
#include "geometry/HoleLinkCheck.h"

#include <GeometryObjectLib/Vector3f.h>

#include <mapbox/earcut.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::Vector3f;

/// A point of a face projected to its plane.
using PlanePoint = std::array<float, 2>;

/// The vertex indices of one loop.
struct IndexLoop {
    std::uint16_t const* indices = nullptr;
    std::uint32_t size = 0;
};

/// Triangulates faces with earcut in a projection to their plane.
class FaceTriangulator {
public:
    /// `loops` is the outer loop, then the holes; `normal` is the face's unit normal.
    /// Returns triples of indices into the concatenated loops, in earcut's order, valid until the next call. Holes that
    /// earcut cannot link to the outer loop, because they touch it in a way that it never leaves, are filled. A loop of
    /// more than 80 corners, one of which is not finite, has no triangles.
    std::vector<std::uint16_t> const& Triangulate(std::vector<IndexLoop> const& loops, Vector3f const& normal,
                                                  Vector3f const* positions);

private:
    /// Loops as earcut wants to see them.
    struct Ring {
        using value_type = PlanePoint;
        PlanePoint const* points = nullptr;
        std::size_t count = 0;

        std::size_t size() const { return count; }
        PlanePoint const& operator[](std::size_t i) const { return points[i]; }
    };

    std::vector<std::uint16_t> const& CutEars(std::vector<IndexLoop> const& loops, PlanePoint const* points);

    std::vector<PlanePoint> points_;
    std::vector<Ring> rings_;
    std::vector<std::uint16_t> triangles_;
    GeometryObjectLib::ConvexEars<PlanePoint, std::uint16_t> convexEars_;
    GeometryObjectLib::HoleLinkCheck holeLinks_;
    mapbox::detail::Earcut<std::uint16_t> earcut_;  ///< reused, as its result keeps its memory
};

}  // namespace Quorlan::Tools
