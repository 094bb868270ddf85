#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace GeometryObjectLib {

/// Tells whether earcut can be trusted with a face that has holes.
///
/// Earcut links every hole to the outer ring by a bridge and drops points on straight lines around it. Where a hole
/// touches the ring it may drop the very end of the bridge, and then goes round a ring that it never leaves; and it
/// sorts holes by coordinates that have to be numbers. This takes the same steps on the same numbers and counts them.
class HoleLinkCheck {
public:
    /// `rings` are the outer ring and its holes, as earcut takes them. RETURNS false if linking would not end, would
    /// leave a broken ring, or a coordinate is not finite. COST: that of linking.
    template <class Rings>
    bool IsSafe(Rings const& rings) {
        corners_.clear();
        ends_.clear();
        for (std::size_t r = 0; r < rings.size(); ++r) {
            for (std::size_t i = 0; i < rings[r].size(); ++i) {
                corners_.push_back({static_cast<double>(rings[r][i][0]), static_cast<double>(rings[r][i][1]), 0, 0});
            }
            ends_.push_back(corners_.size());
        }
        return LinkAll();
    }

private:
    struct Corner {
        double x;
        double y;
        std::uint32_t previous;
        std::uint32_t next;
        bool isAlone = false;  ///< a hole of one point, which is never dropped
    };
    using Index = std::uint32_t;
    static constexpr Index kNone = 0xFFFFFFFF;

    bool LinkAll();
    Index MakeRing(std::size_t ring, bool isOuter);
    Index FindLeftmost(Index start) const;
    Index FindBridge(Index hole, Index outer);
    Index Split(Index a, Index b);
    Index DropStraight(Index start, Index end);
    bool LinkHole(Index hole, Index& outer);
    bool IsRing(Index start) const;

    double Area(Index p, Index q, Index r) const;
    bool IsLocallyInside(Index a, Index b) const;
    void Remove(Index corner);

    /// Whether a walk may go on: a walk that ends does so within a round.
    bool Step(std::size_t& steps) const { return ++steps <= 2 * corners_.size() + 8; }

    std::vector<Corner> corners_;
    std::vector<std::size_t> ends_;
    std::vector<Index> leftmost_;
    std::size_t dropped_ = 0;  ///< corners, around the bridge at hand
};

}  // namespace GeometryObjectLib
