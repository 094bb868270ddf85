#include "analysis/PlanarTriangulator.h"

#include <mapbox/earcut.hpp>

#include <cmath>

namespace Quorlan {
namespace {

using GeometryObjectLib::Vertex;

/// [-] share of a face's area by which a triangulation may miss it before it counts as failed
constexpr double kAreaTolerance = 1e-6;

bool IsConvexQuadrilateral(Vertex const* p) {
    Vertex const e1 = p[1] - p[0];
    Vertex const e2 = p[2] - p[0];
    Vertex const e3 = p[3] - p[0];
    return Dot(Cross(e1, e2), Cross(e2, e3)) > 0;
}

template <class Points>
double ComputeSignedArea(Points const& points) {
    double twice = 0;
    for (std::size_t i = 0, previous = points.size() - 1; i < points.size(); previous = i++) {
        twice += points[previous][0] * points[i][1] - points[previous][1] * points[i][0];
    }
    return 0.5 * twice;
}

}  // namespace

Vertex ComputeNewellNormal(Vertex const* corners, std::size_t count) {
    Vertex normal;
    for (std::size_t i = 0; i < count; ++i) {
        Vertex const& c = corners[i];
        Vertex const& n = corners[i + 1 == count ? 0 : i + 1];
        normal.x += (n.z + c.z) * (c.y - n.y);
        normal.y += (c.z - n.z) * (n.x + c.x);
        normal.z += (c.x - n.x) * (n.y + c.y);
    }
    return normal;
}

Vertex ComputePerpendicular(Vertex const& n) {
    Vertex const p = std::abs(n.x) >= std::abs(n.y) ? Vertex{-n.z, 0, n.x} : Vertex{0, n.z, -n.y};
    return p / Length(p);
}

std::vector<std::uint32_t> const& PlanarTriangulator::Triangulate(FaceLoops const& face) {
    triangles_.clear();
    std::size_t const count = face.GetSize(0);
    if (count < 3) return triangles_;
    if (face.ends.size() == 1 && count == 3) {
        triangles_ = {0, 1, 2};
    } else if (face.ends.size() == 1 && count == 4 && IsConvexQuadrilateral(face.corners.data())) {
        triangles_ = {0, 1, 2, 0, 2, 3};
    } else if (!Project(face) || !CutEars()) {
        SplitIntoFans(face);
    }
    return triangles_;
}

/// Fills the rings with the loops in the plane of the outer loop, seen so that the outer loop runs counter-clockwise.
/// RETURNS false if the outer loop has no plane or a corner is not finite.
bool PlanarTriangulator::Project(FaceLoops const& face) {
    Vertex const normal = ComputeNewellNormal(face.corners.data(), face.GetSize(0));
    double const length = Length(normal);
    if (!(length > 0) || !std::isfinite(length)) return false;

    Vertex const n = normal / length;
    Vertex const p = ComputePerpendicular(n);
    Vertex const q = Cross(n, p);
    rings_.resize(face.ends.size());
    for (std::size_t loop = 0; loop < face.ends.size(); ++loop) {
        rings_[loop].clear();
        for (std::size_t i = face.GetBegin(loop); i < face.ends[loop]; ++i) {
            Vertex const local = face.corners[i] - face.corners[0];
            Point const point{Dot(p, local), Dot(q, local)};
            if (!std::isfinite(point[0]) || !std::isfinite(point[1])) return false;
            rings_[loop].push_back(point);
        }
    }
    return true;
}

/// RETURNS false if earcut cannot link the holes, or its triangles do not cover what the outer ring encloses and the
/// holes leave.
bool PlanarTriangulator::CutEars() {
    if (rings_.size() > 1 && !holeLinks_.IsSafe(rings_)) return false;
    bool const isConvex = rings_.size() == 1 && convexEars_.Cut(rings_[0].data(), rings_[0].size(), triangles_);
    if (!isConvex) triangles_ = mapbox::earcut<std::uint32_t>(rings_);

    double const outerArea = ComputeSignedArea(rings_[0]);
    double missing = outerArea;
    for (std::size_t hole = 1; hole < rings_.size(); ++hole) missing -= std::abs(ComputeSignedArea(rings_[hole]));
    auto const pointOf = [this](std::uint32_t corner) {
        std::size_t ring = 0;
        while (corner >= rings_[ring].size()) corner -= static_cast<std::uint32_t>(rings_[ring++].size());
        return rings_[ring][corner];
    };
    for (std::size_t t = 0; t < triangles_.size(); t += 3) {
        missing -= ComputeSignedArea(
            std::array<Point, 3>{pointOf(triangles_[t]), pointOf(triangles_[t + 1]), pointOf(triangles_[t + 2])});
    }
    return std::abs(missing) <= kAreaTolerance * outerArea;
}

/// A fan from the first corner of every loop. Holes that are wound like the outer loop are turned round.
void PlanarTriangulator::SplitIntoFans(FaceLoops const& face) {
    triangles_.clear();
    Vertex const outerNormal = ComputeNewellNormal(face.corners.data(), face.GetSize(0));
    for (std::size_t loop = 0; loop < face.ends.size(); ++loop) {
        std::size_t const begin = face.GetBegin(loop);
        std::size_t const size = face.GetSize(loop);
        bool const isTurned = loop > 0 && Dot(ComputeNewellNormal(&face.corners[begin], size), outerNormal) > 0;
        for (std::size_t i = 2; i < size; ++i) {
            auto const a = static_cast<std::uint32_t>(begin + i - 1);
            triangles_.insert(triangles_.end(),
                              {static_cast<std::uint32_t>(begin), isTurned ? a + 1 : a, isTurned ? a : a + 1});
        }
    }
}

}  // namespace Quorlan
