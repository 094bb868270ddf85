#include "mesh/FaceTriangulator.h"

#include <algorithm>
#include <cmath>

namespace Quorlan::Tools {
namespace {

/// Earcut sorts the points of larger faces by integer cells, where what is not finite has no place.
constexpr std::size_t kUnsortedPoints = 80;

/// Loops of up to this many vertices are projected without heap memory.
constexpr std::size_t kFixedPoints = 128;

/// Two axes of the plane with normal `n`, in which a loop keeps its turning direction.
///
/// The first form divides by the length of n, not by that of the axis, which therefore is shorter than 1 where n is
/// tilted: this stretches one axis of the projection and is part of the result.
struct PlaneAxes {
    Vector3f p;
    Vector3f q;

    explicit PlaneAxes(Vector3f const& n) {
        if (std::fabs(n.x) >= std::fabs(n.y)) {
            p = Vector3f{-n.z, 0, n.x} / Length(n);
        } else {
            p = Vector3f{0, n.z, -n.y} / std::sqrt(n.y * n.y + n.z * n.z);
        }
        q = Cross(n, p);
    }

    PlanePoint Project(Vector3f const& v) const { return {Dot(p, v), Dot(q, v)}; }
};

bool IsFinite(PlanePoint const* points, std::size_t count) {
    return std::all_of(points, points + count,
                       [](PlanePoint const& p) { return std::isfinite(p[0]) && std::isfinite(p[1]); });
}

}  // namespace

std::vector<std::uint16_t> const& FaceTriangulator::Triangulate(std::vector<IndexLoop> const& loops,
                                                                Vector3f const& normal, Vector3f const* positions) {
    std::size_t count = 0;
    for (auto const& loop : loops) count += loop.size;

    std::array<PlanePoint, kFixedPoints> fixedPoints;
    if (count > kFixedPoints) points_.resize(count);
    PlanePoint* const points = count > kFixedPoints ? points_.data() : fixedPoints.data();

    PlaneAxes const axes(normal);
    PlanePoint* point = points;
    for (auto const& loop : loops) {
        for (std::uint32_t i = 0; i < loop.size; ++i) *point++ = axes.Project(positions[loop.indices[i]]);
    }
    return CutEars(loops, points);
}

std::vector<std::uint16_t> const& FaceTriangulator::CutEars(std::vector<IndexLoop> const& loops,
                                                            PlanePoint const* points) {
    triangles_.clear();
    if (loops.size() == 1 && convexEars_.Cut(points, loops.front().size, triangles_)) return triangles_;

    rings_.clear();
    for (auto const& loop : loops) {
        rings_.push_back({points, loop.size});
        points += loop.size;
    }
    if (rings_.size() > 1 && !holeLinks_.IsSafe(rings_)) rings_.resize(1);
    if (rings_[0].size() > kUnsortedPoints && !IsFinite(rings_[0].points, rings_[0].size())) return triangles_;
    earcut_(rings_);
    return earcut_.indices;
}

}  // namespace Quorlan::Tools
