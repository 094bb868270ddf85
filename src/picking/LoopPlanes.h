#pragma once

#include "picking/BRepAccess.h"

#include <algorithm>
#include <cstddef>

/// The planes of a BRep's loops, for any ray. All arithmetic is in single precision and the order of every sum is part
/// of the result: lanes stand for loops, never for terms of a sum.
namespace Quorlan::Tools::Picking {

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

/// The planes through the means of the vertices of up to four loops; of a loop without area, the plane x = 0.
/// Without first values, so that room for many costs nothing.
struct PlaneGroup {
    static constexpr std::size_t kCapacity = 4;

    VectorLanes<Float4> normal;
    Float4 distance;
    std::size_t loops[kCapacity];  ///< their numbers
    std::size_t size;

    Vector3f GetNormal(std::size_t i) const {
        float x[4], y[4], z[4];
        Store(normal.x, x);
        Store(normal.y, y);
        Store(normal.z, z);
        return {x[i], y[i], z[i]};
    }
};

/// Makes the groups of some of a BRep's loops one after the other. Loops of less than three vertices contain nothing
/// and are in none.
class PlaneMaker {
public:
    /// Makes the next group of the outer loops, of which the last face's is the first.
    template <class Access>
    bool MakeOfFaces(PlaneGroup& group, Access const& brep) {
        std::size_t const count = brep.GetFaceCount();
        return Make(group, brep, count, false, [&](std::size_t i, std::size_t& number) {
            number = count - 1 - i;
            return brep.GetFace(number);
        });
    }

    /// Makes the next group of the inner loops, turned, so that they face like their faces.
    template <class Access>
    bool MakeOfHoles(PlaneGroup& group, Access const& brep) {
        return Make(group, brep, brep.GetHoleCount(), true, [&](std::size_t i, std::size_t& number) {
            number = i;
            return brep.GetHole(i).loop;
        });
    }

private:
    /// RETURNS false if there is no loop left.
    template <class Access, class GetLoop>
    bool Make(PlaneGroup& group, Access const& brep, std::size_t count, bool isTurned, GetLoop const& getLoop) {
        LoopSums sums[PlaneGroup::kCapacity];
        float counts[PlaneGroup::kCapacity] = {1, 1, 1, 1};
        group.size = 0;
        for (; next_ < count && group.size < PlaneGroup::kCapacity; ++next_) {
            auto const loop = getLoop(next_, group.loops[group.size]);
            if (loop.size < 3) continue;
            sums[group.size] = LoopSums(brep, loop);
            counts[group.size] = static_cast<float>(loop.size);
            ++group.size;
        }
        if (group.size == 0) return false;
        SetPlanes(group, sums, counts, isTurned);
        return true;
    }

    static void SetPlanes(PlaneGroup& group, LoopSums const (&sums)[4], float const (&counts)[4], bool isTurned) {
        auto const zxy = Transpose(sums[0].normalZxy, sums[1].normalZxy, sums[2].normalZxy, sums[3].normalZxy);
        VectorLanes<Float4> const newell{zxy.y, zxy.z, zxy.x};
        auto const vertices = Transpose(sums[0].vertices, sums[1].vertices, sums[2].vertices, sums[3].vertices);
        Float4 const zero(0.0f);
        Float4 const squared = Dot(newell, newell);
        auto normal = newell / Sqrt(squared);
        Float4 distance = Dot(normal, vertices / Float4(counts[0], counts[1], counts[2], counts[3]));
        Mask4 const isFlat = squared <= zero;
        normal.x = Select(isFlat, Float4(1.0f), normal.x);
        normal.y = Select(isFlat, zero, normal.y);
        normal.z = Select(isFlat, zero, normal.z);
        distance = Select(isFlat, zero, distance);
        group.normal = isTurned ? normal * Float4(-1.0f) : normal;
        group.distance = isTurned ? -distance : distance;
    }

    std::size_t next_ = 0;
};

/// The planes of one BRep, each made when it is asked for and then forgotten.
template <class Access>
class FreshPlanes {
public:
    explicit FreshPlanes(Access const& brep) : brep_(brep) {}

    /// The group behind the one that was asked for before; null behind the last.
    PlaneGroup const* GetNextOfHoles() { return holes_.MakeOfHoles(group_, brep_) ? &group_ : nullptr; }
    PlaneGroup const* GetNextOfFaces() { return faces_.MakeOfFaces(group_, brep_) ? &group_ : nullptr; }

private:
    Access const& brep_;
    PlaneMaker holes_;
    PlaneMaker faces_;
    PlaneGroup group_;
};

}  // namespace Quorlan::Tools::Picking
