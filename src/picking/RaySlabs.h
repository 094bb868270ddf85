#pragma once

#include "geometry/Avx2.h"
#include "picking/NodeLanes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {

/// A half line against the boxes of tree nodes, eight at a time, by the intervals in which it runs between the planes
/// of their sides (Kay, Kajiya, "Ray Tracing Complex Scenes", 1986). No box that the separating-axis test in single
/// precision meets is missed, however either rounds; a few that it misses are met.
///
/// With u = 2^-24 and, per axis, size = |origin| + the extent of the grid: the separating-axis test takes a box for at
/// most 6 u size larger than it is. A component of the direction that is raised to 8 u size over the greatest parameter
/// of any box moves the line by no more than 8 u size. The intervals round by 6 u size. `kSlack` is 34 u.
class RaySlabs {
public:
    static constexpr double kSlack = 2e-6;  ///< [-] of an axis' size: how much larger boxes are taken for
    static constexpr double kTilt = 5e-7;   ///< [-] of an axis' size: how far the line may be moved

    /// `origin` and `direction` are relative to the tree's origin, in the bits of the separating-axis test.
    RaySlabs(std::array<float, 3> const& origin, std::array<float, 3> const& direction,
             std::array<float, 3> const& halfCell, bool usesAvx2 = HasAvx2())
        : usesAvx2_(usesAvx2) {
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
            perCell_[k] = static_cast<float>(2 * halfCell[k] * perUnit);
            nearOffset_[k] = static_cast<float>(origin[k] * perUnit + slack);
            farOffset_[k] = static_cast<float>(origin[k] * perUnit - slack);
            nearStep_[k] = isDescending ? 1.0f : 0.0f;
            nearRow_[k] = 2 * k + (isDescending ? 1 : 0);
        }
    }

    /// False for numbers so large, so small or so far apart that the bound above does not hold.
    bool IsUsable() const { return isUsable_; }

    /// How much the boxes are larger, per axis.
    Float4 GetSlack() const { return {slack_[0], slack_[1], slack_[2], 0}; }

    /// The children that are met of each of `count` wide nodes, one bit per child.
    void FindMet(QuantizedAxisAlignedBoxTreeWideNode_s const* wideNodes, std::uint32_t const* indices,
                 std::size_t count, unsigned* met) const {
#if QUORLAN_HAS_AVX2
        if (usesAvx2_) return FindMetAvx2(wideNodes, indices, count, met);
#endif
        for (std::size_t i = 0; i < count; ++i) met[i] = FindMetOf(wideNodes[indices[i]]);
    }

private:
#if QUORLAN_HAS_AVX2
    void FindMetAvx2(QuantizedAxisAlignedBoxTreeWideNode_s const* wideNodes, std::uint32_t const* indices,
                     std::size_t count, unsigned* met) const;
#endif

    unsigned FindMetOf(QuantizedAxisAlignedBoxTreeWideNode_s const& wide) const {
        Intervals first;
        Intervals second;
        for (std::size_t k = 0; k < 3; ++k) {
            // The upper bound of a box is the end of its last step.
            float const perStep = perCell_[k] * static_cast<float>(1 << (wide.form >> 4 * k & 15));
            float const base = static_cast<float>(wide.base[k]) * perCell_[k];
            float const nearBase = base - nearOffset_[k] + nearStep_[k] * perStep;
            float const farBase = base - farOffset_[k] + (1 - nearStep_[k]) * perStep;
            Float4 nearFirst(0.0f), nearSecond(0.0f), farFirst(0.0f), farSecond(0.0f);
            LoadSteps(wide.bounds[nearRow_[k]], nearFirst, nearSecond);
            LoadSteps(wide.bounds[nearRow_[k] ^ 1], farFirst, farSecond);
            first.Clip(nearFirst * Float4(perStep) + Float4(nearBase), farFirst * Float4(perStep) + Float4(farBase));
            second.Clip(nearSecond * Float4(perStep) + Float4(nearBase), farSecond * Float4(perStep) + Float4(farBase));
        }
        return static_cast<unsigned>(first.FindMet() | second.FindMet() << 4) & GetChildMask(wide);
    }

    /// The parameters between which the line runs in each of four boxes.
    struct Intervals {
        Float4 entry{0.0f};
        Float4 exit{std::numeric_limits<float>::infinity()};

        void Clip(Float4 nearSide, Float4 farSide) {
            entry = Max(entry, nearSide);
            exit = Min(exit, farSide);
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
    bool usesAvx2_;
    std::array<float, 3> slack_{};
    // Per axis; the fourth of each is 0.
    float perCell_[4] = {};
    float nearOffset_[4] = {};
    float farOffset_[4] = {};
    float nearStep_[4] = {};              // 1 where the near bound is the upper one
    std::array<std::size_t, 3> nearRow_;  // of a wide node's bounds
};

}  // namespace Quorlan::Tools::Picking
