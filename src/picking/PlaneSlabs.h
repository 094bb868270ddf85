#pragma once

#include "picking/NodeLanes.h"

#include <GeometryObjectLib/Plane3f.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Plane3f;

/// Four planes against the children of wide nodes. No box that the test in single precision finds on the inner side of
/// a plane is taken to be outside, however either rounds; a few that it finds outside are not.
///
/// With u = 2^-24 and, per plane, size = the greatest height over the plane through the origin that a point of the grid
/// can have + |distance|: the test errs by at most 10 u size, the sums here by 8 u size. `kSlack` is 40 u.
class PlaneSlabs {
public:
    static constexpr double kSlack = 2.4e-6;  ///< [-] of a plane's size: how much further out planes are taken to be

    /// REQUIRES: four planes, relative to the tree's origin.
    PlaneSlabs(std::vector<Plane3f> const& planes, std::array<float, 3> const& halfCell) {
        for (std::size_t i = 0; i < 4; ++i) {
            Vector3f const& n = planes[i].normal;
            float const normal[] = {n.x, n.y, n.z};
            double size = std::abs(double{planes[i].distance});
            for (std::size_t k = 0; k < 3; ++k) {
                double const perCell = 2.0 * halfCell[k] * normal[k];
                size += std::abs(perCell) * 65536;
                perCell_[i][k] = static_cast<float>(perCell);
                row_[i][k] = 2 * k + (normal[k] > 0 ? 0 : 1);  // the side of a box that reaches furthest in
            }
            isUsable_ = isUsable_ && size >= kLeastSize && size <= kGreatestSize;
            slack_[i] = static_cast<float>(kSlack * size);
            reach_[i] = planes[i].distance + slack_[i];
        }
    }

    /// False for numbers so large or so small that the bound above does not hold.
    bool IsUsable() const { return isUsable_; }

    /// How much further out each plane is taken to be.
    Float4 GetSlack() const { return {slack_[0], slack_[1], slack_[2], slack_[3]}; }

    /// The children that are met of each of `count` wide nodes, one bit per child.
    void FindMet(QuantizedAxisAlignedBoxTreeWideNode_s const* wideNodes, std::uint32_t const* indices,
                 std::size_t count, unsigned* met) const {
        for (std::size_t i = 0; i < count; ++i) met[i] = FindMetOf(wideNodes[indices[i]]);
    }

private:
    unsigned FindMetOf(QuantizedAxisAlignedBoxTreeWideNode_s const& wide) const {
        Float4 first[6];
        Float4 second[6];
        float perStep[3];
        float base[6];
        for (std::size_t k = 0; k < 3; ++k) {
            // The upper bound of a box is the end of its last step.
            int const step = 1 << (wide.form >> 4 * k & 15);
            perStep[k] = static_cast<float>(step);
            base[2 * k] = static_cast<float>(wide.base[k]);
            base[2 * k + 1] = static_cast<float>(wide.base[k] + step);
            LoadSteps(wide.bounds[2 * k], first[2 * k], second[2 * k]);
            LoadSteps(wide.bounds[2 * k + 1], first[2 * k + 1], second[2 * k + 1]);
        }
        int met = 255;
        for (std::size_t i = 0; i < 4; ++i) {
            std::size_t const(&row)[3] = row_[i];
            float const(&perCell)[3] = perCell_[i];
            Float4 const x(perCell[0] * perStep[0]), y(perCell[1] * perStep[1]), z(perCell[2] * perStep[2]);
            Float4 const limit(reach_[i] -
                               (perCell[0] * base[row[0]] + perCell[1] * base[row[1]] + perCell[2] * base[row[2]]));
            int const isFirstMet = GetBits(first[row[0]] * x + first[row[1]] * y + first[row[2]] * z <= limit);
            int const isSecondMet = GetBits(second[row[0]] * x + second[row[1]] * y + second[row[2]] * z <= limit);
            met &= isFirstMet | isSecondMet << 4;
        }
        return static_cast<unsigned>(met) & GetChildMask(wide);
    }

    static constexpr double kLeastSize = 1e-25;
    static constexpr double kGreatestSize = 1e25;

    bool isUsable_ = true;
    float perCell_[4][3];
    std::size_t row_[4][3];
    float slack_[4];
    float reach_[4];
};

}  // namespace Quorlan::Tools::Picking
