#pragma once

#include "analysis/SmallFaces.h"
#include "geometry/LaneMoves.h"
#include "geometry/Lanes.h"
#include "model/ModelView.h"

#include <cstddef>
#include <cstdint>

namespace Quorlan {

using GeometryObjectLib::Double4;
using GeometryObjectLib::VectorLanes;

/// Four faces without holes, of three or four corners each, side by side: what `BRepMeter` computes for one, with its
/// bits in every lane.
template <std::size_t CornerCount>
class SmallFaceLanes {
public:
    using Corners = VectorLanes<Double4>;

    /// Of less than four faces the last is repeated by the caller.
    SmallFaceLanes(BRepView const& brep, std::uint16_t const* const* loops) {
        for (std::size_t i = 0; i < CornerCount; ++i) {
            auto const load = [&](std::size_t face) {
                return GeometryObjectLib::LoadTriple(brep.vertices + std::size_t{loops[face][i]} * brep.vertexStride);
            };
            corners_[i] = Widen(GeometryObjectLib::Transpose(load(0), load(1), load(2), load(3)));
        }
    }

    Corners const& GetCorner(std::size_t i) const { return corners_[i]; }

    /// Whether squares of edges' lengths decide as the lengths do on which is the longest: they are numbers, and none
    /// is so little below the longest that its root could be the same.
    bool CanCompareSquares() const {
        Double4 squares[CornerCount];
        for (std::size_t i = 0; i < CornerCount; ++i) {
            Corners const edge = GetEdge(i);
            squares[i] = Dot(edge, edge);
        }
        Double4 longest = squares[0];
        for (std::size_t i = 1; i < CornerCount; ++i) longest = Max(longest, squares[i]);
        // Roots are the same up to two units in the last place of the square, 5e-16 of it.
        Double4 const almost = longest * Double4(1 - 2e-15);
        for (std::size_t i = 0; i < CornerCount; ++i) {
            auto const isSure = (!(almost < squares[i])) | (!(squares[i] < longest));
            if (!AreAll(isSure & (squares[i] < Double4(1e300)))) return false;
        }
        return true;
    }

    /// The signed areas in the planes of the loops; 0 where a Newell normal is shorter than `shortestNormal`.
    /// REQUIRES: CanCompareSquares().
    Double4 ComputeAreas(double shortestNormal) const {
        Corners const normal = ComputeNewellNormal();
        Double4 const length = Sqrt(Dot(normal, normal));
        Corners const u = ComputeLongestEdgeDirection();
        Corners const v = Cross(normal / length, u);
        Double4 sum(0.0);
        Double4 previousU = Dot(u, corners_[CornerCount - 1]);
        Double4 previousV = Dot(v, corners_[CornerCount - 1]);
        for (std::size_t i = 0; i < CornerCount; ++i) {
            Double4 const alongU = Dot(u, corners_[i]);
            Double4 const alongV = Dot(v, corners_[i]);
            sum = sum + (previousU * alongV - previousV * alongU);
            previousU = alongU;
            previousV = alongV;
        }
        return Select(length < Double4(shortestNormal), Double4(0.0), Double4(0.5) * sum);
    }

    /// Whether all quadrilaterals are convex and are split from their first corner.
    bool AreConvex() const {
        Corners const e1 = corners_[1] - corners_[0];
        Corners const e2 = corners_[2] - corners_[0];
        Corners const e3 = corners_[3] - corners_[0];
        return AreAll(Double4(0.0) < Dot(Cross(e1, e2), Cross(e2, e3)));
    }

    /// The volumes of the tetrahedra between an apex and the triangles of corners 0, i and i + 1, and the products of
    /// their centroids with them.
    void ComputeTetrahedra(Corners const& apex, std::size_t i, Double4& volume, Corners& moment) const {
        Corners const& p0 = corners_[0];
        Corners const& p1 = corners_[i];
        Corners const& p2 = corners_[i + 1];
        volume = Dot(p0 - apex, Cross(p1 - apex, p2 - apex)) / Double4(6.0);
        moment = (apex + p0 + p1 + p2) * Double4(0.25) * volume;
    }

private:
    std::size_t GetNext(std::size_t i) const { return i + 1 == CornerCount ? 0 : i + 1; }
    Corners GetEdge(std::size_t i) const { return corners_[GetNext(i)] - corners_[i]; }

    Corners ComputeNewellNormal() const {
        Double4 const zero(0.0);
        Corners normal{zero, zero, zero};
        for (std::size_t i = 0; i < CornerCount; ++i) {
            Corners const& c = corners_[i];
            Corners const& n = corners_[GetNext(i)];
            normal.x = normal.x + (n.z + c.z) * (c.y - n.y);
            normal.y = normal.y + (c.z - n.z) * (n.x + c.x);
            normal.z = normal.z + (c.x - n.x) * (n.y + c.y);
        }
        return normal;
    }

    /// Of equally long edges the first. REQUIRES: CanCompareSquares().
    Corners ComputeLongestEdgeDirection() const {
        Corners longest = GetEdge(0);
        Double4 longestSquared = Dot(longest, longest);
        for (std::size_t i = 1; i < CornerCount; ++i) {
            Corners const edge = GetEdge(i);
            Double4 const squared = Dot(edge, edge);
            auto const isLonger = longestSquared < squared;
            longest.x = Select(isLonger, edge.x, longest.x);
            longest.y = Select(isLonger, edge.y, longest.y);
            longest.z = Select(isLonger, edge.z, longest.z);
            longestSquared = Select(isLonger, squared, longestSquared);
        }
        return longest / Sqrt(longestSquared);
    }

    Corners corners_[CornerCount];
};

}  // namespace Quorlan
