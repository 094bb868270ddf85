#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Ray3f.h>

#include <cstdint>
#include <limits>
#include <vector>

/// The nearest edge of a BRep, step by step and loop by loop as the builders define it, without their shortcuts.
namespace Quorlan::Testing {

struct OracleEdge {
    float distance = std::numeric_limits<float>::max();
    GeometryObjectLib::Vector3f point;
    std::uint64_t face = 0;

    bool IsFound() const { return distance != std::numeric_limits<float>::max(); }
};

OracleEdge FindNearestEdgeStepByStep(GeometryObjectLib::Ray3f const& ray,
                                     std::vector<GeometryObjectLib::Plane3f> const& planes,
                                     GeometryObjectLib::FacetedBRep const& brep);

/// The distance of a half line from a segment in double precision, by narrowing down the segment's parameter; the
/// distance is convex along the segment. The direction is normalised first.
double SearchedDistance(GeometryObjectLib::Ray3f const& ray, GeometryObjectLib::Vector3f const& p,
                        GeometryObjectLib::Vector3f const& q);

}  // namespace Quorlan::Testing
