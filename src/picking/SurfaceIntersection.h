#pragma once

#include "picking/BRepAccess.h"
#include "picking/ClippingPlanes.h"

#include <GeometryObjectLib/Ray3f.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

/// The intersection of one ray with one BRep, written once for both accesses. All arithmetic is in single precision and
/// the order of every sum is part of the result: lanes stand for faces or for vertices, never for terms of a sum.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Broadcast;
using GeometryObjectLib::GetBits;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Transpose;

/// What Newell's method sums over a loop (Sutherland, Sproull, Schumacker, "A Characterization of Ten Hidden-Surface
/// Algorithms", 1974): a normal as long as twice the area, which points outward where the loop runs counter-clockwise
/// seen from outside, and the sum of the vertices. The normal's z, x, y stand in lanes 0 to 2.
struct LoopSums {
    Float4 normalZxy{0.0f};
    Float4 vertices{0.0f};

    LoopSums() = default;

    /// REQUIRES: the loop is not empty.
    template <class Access, class Loop>
    LoopSums(Access const& brep, Loop const& loop) {
        Float4 const first = brep.GetPositionLanes(loop[0]);
        Float4 p = first;
        for (std::size_t i = 1; i < loop.size; ++i) {
            Float4 const q = brep.GetPositionLanes(loop[i]);
            Add(p, q);
            p = q;
        }
        Add(p, first);
    }

private:
    void Add(Float4 p, Float4 q) {
        normalZxy = normalZxy + (p - q) * Yzx(p + q);
        vertices = vertices + p;
    }
};

/// Two axes perpendicular to a direction and to each other. They are not of unit length unless the direction has no y:
/// the containment test asks only for signs and ratios.
struct PerpendicularFrame {
    VectorLanes<Float4> u;
    VectorLanes<Float4> v;

    explicit PerpendicularFrame(Vector3f const& d) {
        Vector3f axis;
        if (std::abs(d.x) >= std::abs(d.y)) {
            float const factor = 1 / std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
            axis = {-d.z * factor, 0, d.x * factor};
        } else {
            float const factor = 1 / std::sqrt(d.y * d.y + d.z * d.z);
            axis = {0, d.z * factor, -d.y * factor};
        }
        u = Broadcast(axis);
        v = Broadcast(Cross(d, axis));
    }
};

/// Four vertices of a loop relative to a point, along the axes of a frame.
struct ProjectedVertices {
    Float4 a;
    Float4 b;

    /// From `first` on; the loop's last vertex again where there are less.
    template <class Access, class Loop>
    ProjectedVertices(Access const& brep, PerpendicularFrame const& frame, VectorLanes<Float4> const& point,
                      Loop const& loop, std::size_t first) {
        std::size_t const last = loop.size - 1;
        auto const positions = Transpose(brep.GetPositionLanes(loop[std::min(first, last)]),
                                         brep.GetPositionLanes(loop[std::min(first + 1, last)]),
                                         brep.GetPositionLanes(loop[std::min(first + 2, last)]),
                                         brep.GetPositionLanes(loop[std::min(first + 3, last)]));
        auto const q = positions - point;
        a = Dot(q, frame.u);
        b = Dot(q, frame.v);
    }
};

/// Whether a loop contains a point, both seen along the direction of `frame`: the number of edges that cross the
/// half line from the point along U is odd (Shimrat, "Algorithm 112: Position of Point Relative to Polygon", 1962).
/// REQUIRES: at least three vertices.
template <class Access, class Loop>
bool IsPointInLoop(Access const& brep, PerpendicularFrame const& frame, Vector3f const& point, Loop const& loop) {
    auto const center = Broadcast(point);
    ProjectedVertices vertices(brep, frame, center, loop, 0);
    // What comes before lane 0, in lane 0: the last vertex, which is also what fills up the last four.
    ProjectedVertices before = loop.size <= 4 ? vertices : ProjectedVertices(brep, frame, center, loop, loop.size);
    before.a = Rotate(before.a);
    before.b = Rotate(before.b);
    int carry = GetBits(before.b > Float4(0.0f)) & 1;
    int crossings = 0;
    for (std::size_t first = 0;;) {
        int const above = GetBits(vertices.b > Float4(0.0f));
        int const changes = (above ^ (above << 1 | carry)) & 15;
        if (changes != 0) {
            Float4 const previousA = WithFirstOf(Rotate(vertices.a), before.a);
            Float4 const previousB = WithFirstOf(Rotate(vertices.b), before.b);
            Float4 const crossing =
                (previousA - vertices.a) * (Float4(0.0f) - vertices.b) / (previousB - vertices.b) + vertices.a;
            crossings ^= changes & GetBits(crossing > Float4(0.0f));
        }
        first += 4;
        if (first >= loop.size) break;
        before.a = Rotate(vertices.a);
        before.b = Rotate(vertices.b);
        carry = above >> 3;
        vertices = ProjectedVertices(brep, frame, center, loop, first);
    }
    return (0x6996 >> crossings & 1) != 0;  // the parity of four bits
}

/// A face that a ray hits; as default constructed, a miss.
struct SurfaceHit {
    bool isHit = false;
    std::uint64_t face = 0;
    float t = std::numeric_limits<float>::max();
    Vector3f position;
    Vector3f normal{1, 0, 0};
};

/// One ray against loops of one BRep, the planes of four loops at a time.
template <class Access, class Plane>
class LoopIntersection {
public:
    static constexpr std::size_t kCapacity = 4;

    LoopIntersection(Ray3f const& ray, std::vector<Plane> const& clippingPlanes, Access const& brep)
        : ray_(ray), clippingPlanes_(clippingPlanes), brep_(brep) {}

    std::size_t GetSize() const { return size_; }

    /// Loops of less than three vertices contain nothing. REQUIRES: less than four loops are there.
    template <class Loop>
    void Add(std::uint64_t face, Loop const& loop) {
        if (loop.size < 3) return;
        faces_[size_] = face;
        loops_[size_] = loop;
        sums_[size_] = LoopSums(brep_, loop);
        counts_[size_] = static_cast<float>(loop.size);
        ++size_;
    }

    /// Calls visit(hit) for the loops that are hit, in the order they came, until it returns false; then all are gone.
    ///
    /// With `isTurned` the planes face the other way, as those of holes must to face like their faces. A single-sided
    /// face counts only if its plane's normal points against the ray. A plane that has the ray's origin behind it or
    /// is parallel to the ray is not met. The sign of t is not tested: a ray that runs away from a plane meets it
    /// behind its origin.
    template <class Visit>
    void Settle(bool isTurned, bool singleSided, Visit const& visit) {
        LoopPlanes const planes(sums_, counts_, isTurned);
        Float4 const zero(0.0f);
        Float4 const height = Dot(planes.normal, Broadcast(ray_.origin)) - planes.distance;
        Float4 const slope = Dot(planes.normal, Broadcast(ray_.direction));
        Mask4 const isParallel = (slope <= zero) & (slope >= zero);
        int met = ~GetBits((zero > height) | isParallel) & ((1 << size_) - 1);
        if (singleSided) met &= GetBits(zero > slope);
        std::size_t const size = size_;
        size_ = 0;
        if (met == 0) return;

        float t[4];
        Store(-height / slope, t);
        for (std::size_t i = 0; i < size; ++i) {
            if ((met >> i & 1) == 0) continue;
            Vector3f const point = ray_.origin + ray_.direction * t[i];
            if (IsClipped(clippingPlanes_, point)) continue;
            if (!frame_) frame_.emplace(ray_.direction);
            if (!IsPointInLoop(brep_, *frame_, point, loops_[i])) continue;
            if (!visit(SurfaceHit{true, faces_[i], t[i], point, planes.GetNormal(i)})) return;
        }
    }

private:
    /// The planes through the means of the loops' vertices; for a loop without area the plane x = 0.
    struct LoopPlanes {
        VectorLanes<Float4> normal;
        Float4 distance;

        LoopPlanes(LoopSums const (&sums)[4], float const (&counts)[4], bool isTurned) {
            auto const zxy = Transpose(sums[0].normalZxy, sums[1].normalZxy, sums[2].normalZxy, sums[3].normalZxy);
            VectorLanes<Float4> const newell{zxy.y, zxy.z, zxy.x};
            auto const vertices = Transpose(sums[0].vertices, sums[1].vertices, sums[2].vertices, sums[3].vertices);
            Float4 const zero(0.0f);
            Float4 const squared = Dot(newell, newell);
            normal = newell / Sqrt(squared);
            distance = Dot(normal, vertices / Float4(counts[0], counts[1], counts[2], counts[3]));
            Mask4 const isFlat = squared <= zero;
            normal.x = Select(isFlat, Float4(1.0f), normal.x);
            normal.y = Select(isFlat, zero, normal.y);
            normal.z = Select(isFlat, zero, normal.z);
            distance = Select(isFlat, zero, distance);
            if (isTurned) {
                normal = normal * Float4(-1.0f);
                distance = -distance;
            }
        }

        Vector3f GetNormal(std::size_t i) const {
            float x[4], y[4], z[4];
            Store(normal.x, x);
            Store(normal.y, y);
            Store(normal.z, z);
            return {x[i], y[i], z[i]};
        }
    };

    Ray3f const& ray_;
    std::vector<Plane> const& clippingPlanes_;
    Access const& brep_;
    std::optional<PerpendicularFrame> frame_;  // most shapes are missed before they need it
    std::size_t size_ = 0;
    std::uint64_t faces_[kCapacity];
    decltype(std::declval<Access>().GetFace(0)) loops_[kCapacity];
    LoopSums sums_[kCapacity];
    float counts_[kCapacity] = {1, 1, 1, 1};
};

/// The faces of which the ray pierces a hole, ascending.
///
/// A hole lies in the plane of its face, where the outer loop contains the same point: such a face is excluded whole.
template <class Access, class Plane>
std::vector<std::uint64_t> FindPiercedFaces(LoopIntersection<Access, Plane>& loops, Access const& brep) {
    std::vector<std::uint64_t> faces;
    auto const settle = [&] {
        loops.Settle(true, false, [&](SurfaceHit const& hit) {
            faces.push_back(hit.face);
            return true;
        });
    };
    brep.ForEachHole([&](std::uint64_t face, auto const& loop) {
        loops.Add(face, loop);
        if (loops.GetSize() == loops.kCapacity) settle();
    });
    settle();
    std::sort(faces.begin(), faces.end());
    return faces;
}

/// Intersects. Of several faces that are hit the last counts, whatever its distance, so that they are tried from the
/// last on and the first hit ends the search.
template <class Access, class Plane>
SurfaceHit IntersectSurface(Ray3f const& ray, std::vector<Plane> const& clippingPlanes, Access const& brep,
                            bool singleSided) {
    LoopIntersection<Access, Plane> loops(ray, clippingPlanes, brep);
    std::vector<std::uint64_t> pierced;
    if (brep.HasHoles()) pierced = FindPiercedFaces(loops, brep);

    SurfaceHit last;
    for (std::size_t face = brep.GetFaceCount(); face > 0 && !last.isHit;) {
        --face;
        if (pierced.empty() || !std::binary_search(pierced.begin(), pierced.end(), face)) {
            loops.Add(face, brep.GetFace(face));
        }
        if (loops.GetSize() == loops.kCapacity || face == 0) {
            loops.Settle(false, singleSided, [&](SurfaceHit const& hit) {
                last = hit;
                return false;
            });
        }
    }
    return last;
}

}  // namespace Quorlan::Tools::Picking
