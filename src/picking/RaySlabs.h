#pragma once

#include "picking/NodeLanes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {

/// A half line against the boxes of tree nodes, four at a time, by the intervals in which it runs between the planes of
/// their sides (Kay, Kajiya, "Ray Tracing Complex Scenes", 1986). No box that the separating-axis test in single
/// precision meets is missed, however either rounds; a few that it misses are met.
///
/// With u = 2^-24 and, per axis, size = |origin| + the extent of the grid: the separating-axis test takes a box for at
/// most 6 u size larger than it is. A component of the direction that is raised to 8 u size over the greatest parameter
/// of any box moves the line by no more than 8 u size. The intervals round by 4 u size. `kSlack` is 34 u.
class RaySlabs {
public:
    static constexpr double kSlack = 2e-6;  ///< [-] of an axis' size: how much larger boxes are taken for
    static constexpr double kTilt = 5e-7;   ///< [-] of an axis' size: how far the line may be moved

    /// `origin` and `direction` are relative to the tree's origin, in the bits of the separating-axis test.
    RaySlabs(std::array<float, 3> const& origin, std::array<float, 3> const& direction,
             std::array<float, 3> const& halfCell) {
        std::array<double, 3> sizes;
        for (std::size_t k = 0; k < 3; ++k) sizes[k] = std::abs(double{origin[k]}) + kGridEnd * 2 * halfCell[k];
        double const greatest = std::max({sizes[0], sizes[1], sizes[2]});
        isUsable_ = greatest >= kLeastSize && greatest <= kGreatestSize;
        double steepest = 0;
        double reach = 0;  // behind this parameter there is no box
        for (std::size_t k = 0; k < 3; ++k) {
            sizes[k] = std::max(sizes[k], kLeastPart * greatest);
            double const slope = std::abs(double{direction[k]});
            isUsable_ = isUsable_ && (slope == 0 || slope >= kLeastSlope) && sizes[k] <= kGreatestSize;
            if (slope > steepest) {
                steepest = slope;
                reach = 2.5 * sizes[k] / slope;
            }
        }
        isUsable_ = isUsable_ && steepest >= kLeastSteepest && steepest <= kGreatestSlope;
        if (!isUsable_) return;

        for (std::size_t k = 0; k < 3; ++k) {
            double const slope = std::max(std::abs(double{direction[k]}), kTilt * sizes[k] / reach);
            bool const isDescending = direction[k] < 0;
            double const perUnit = (isDescending ? -1 : 1) / slope;
            double const slack = kSlack * sizes[k] / slope;
            slack_[k] = static_cast<float>(kSlack * sizes[k]);
            perCell_[k] = Float4(static_cast<float>(2 * halfCell[k] * perUnit));
            nearOffset_[k] = Float4(static_cast<float>(origin[k] * perUnit + slack));
            farOffset_[k] = Float4(static_cast<float>(origin[k] * perUnit - slack));
            nearRow_[k] = 2 * k + (isDescending ? 1 : 0);
            nearBound_[k] = GetBoundOf(isDescending);
            farBound_[k] = GetBoundOf(!isDescending);
        }
    }

    /// False for numbers so large, so small or so far apart that the bound above does not hold.
    bool IsUsable() const { return isUsable_; }

    /// How much the boxes are larger, per axis.
    std::array<float, 3> const& GetSlack() const { return slack_; }

    /// One bit per box.
    int FindMet(NodeQuad const& nodes) const {
        Intervals intervals;
        intervals.Clip(*this, 0, ToFloats(nodes.x, nearBound_[0]), ToFloats(nodes.x, farBound_[0]));
        intervals.Clip(*this, 1, ToFloats(nodes.y, nearBound_[1]), ToFloats(nodes.y, farBound_[1]));
        intervals.Clip(*this, 2, ToFloats(nodes.z, nearBound_[2]), ToFloats(nodes.z, farBound_[2]));
        return intervals.FindMet();
    }

    int FindMet(QuantizedAxisAlignedBoxTreeQuad_s const& quad) const {
        Intervals intervals;
        for (std::size_t k = 0; k < 3; ++k) {
            intervals.Clip(*this, k, ToFloats(quad.bounds[nearRow_[k]]), ToFloats(quad.bounds[nearRow_[k] ^ 1]));
        }
        return intervals.FindMet();
    }

private:
    /// The parameters between which the line runs in each of four boxes.
    struct Intervals {
        Float4 entry{0.0f};
        Float4 exit{std::numeric_limits<float>::infinity()};

        void Clip(RaySlabs const& slabs, std::size_t axis, Float4 nearBounds, Float4 farBounds) {
            entry = Max(entry, nearBounds * slabs.perCell_[axis] - slabs.nearOffset_[axis]);
            exit = Min(exit, farBounds * slabs.perCell_[axis] - slabs.farOffset_[axis]);
        }
        int FindMet() const { return GetBits(entry <= exit); }
    };

    static constexpr double kGridEnd = 65535;
    static constexpr double kLeastSlope = 1e-20;
    static constexpr double kLeastSteepest = 1e-10;
    static constexpr double kGreatestSlope = 1e10;
    static constexpr double kLeastSize = 1e-6;
    static constexpr double kGreatestSize = 1e12;
    static constexpr double kLeastPart = 1e-6;  ///< [-] of the greatest size: no axis counts for less

    bool isUsable_ = true;
    std::array<float, 3> slack_{};
    std::array<Float4, 3> perCell_;
    std::array<Float4, 3> nearOffset_;
    std::array<Float4, 3> farOffset_;
    std::array<std::size_t, 3> nearRow_;  // of a quad's bounds
    GridBound nearBound_[3];
    GridBound farBound_[3];
};

}  // namespace Quorlan::Tools::Picking
