#pragma once

#include "picking/NodeLanes.h"
#include "picking/NodeLists.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::QuantizedAxisAlignedBoxTree;

/// For each set of eight places, its members in ascending order, and how many they are.
struct PlaceTable {
    std::uint8_t places[256][8] = {};
    std::uint8_t count[256] = {};

    constexpr PlaceTable() {
        for (unsigned set = 0; set < 256; ++set) {
            for (std::uint8_t place = 0; place < 8; ++place) {
                if ((set >> place & 1) != 0) places[set][count[set]++] = place;
            }
        }
    }
};

inline constexpr PlaceTable kPlaceTable;

/// The leaves of a binary tree that something may meet, found by its wide nodes, which lie in memory side by side and
/// need a third of the steps.
class NearLeaves {
public:
    /// With `RaySlabs` or `PlaneSlabs`. REQUIRES: the tree has wide nodes.
    template <class Slabs>
    NearLeaves(QuantizedAxisAlignedBoxTree const& tree, Slabs const& slabs) {
        auto const* const wideNodes = tree.getWideNodes().data();
        IndexList innerList;
        std::uint32_t* inner = innerList.GetData();
        std::uint32_t* leaves = leaves_.GetData();
        std::size_t innerCount = 1;
        inner[0] = 0;
        for (std::size_t next = 0; next < innerCount;) {
            // All of a batch are asked before anything is written: where a write goes depends on the answers before it,
            // and a read behind it would wait for them.
            std::size_t const batch = std::min(kBatch, innerCount - next);
            for (std::size_t i = next + batch; i < std::min(innerCount, next + 2 * batch); ++i) {
                QUORLAN_PREFETCH(wideNodes + inner[i]);
            }
            unsigned met[kBatch];
            slabs.FindMet(wideNodes, inner + next, batch, met);
            for (std::size_t i = 0; i < batch; ++i) {
                std::uint32_t const index = inner[next + i];
                auto const& wide = wideNodes[index];
                bool const isLowest = HasLeaves(wide);
                std::uint32_t* const out = isLowest ? leaves + count_ : inner + innerCount;
                StorePlaces(out, isLowest ? 8 * index : wide.first, kPlaceTable.places[met[i]]);
                std::size_t const count = kPlaceTable.count[met[i]];
                count_ += isLowest ? count : 0;
                innerCount += isLowest ? 0 : count;
            }
            next += batch;
            if (std::max(innerCount, count_) + 8 * kBatch > leaves_.GetCapacity()) {
                innerList.Grow();
                leaves_.Grow();
                inner = innerList.GetData();
                leaves = leaves_.GetData();
            }
        }
        auto const* const nodes = tree.getNodes().data();
        for (std::size_t i = 0; i < count_; ++i) {
            auto const& wide = wideNodes[leaves[i] / 8];
            leaves[i] = wide.first + (wide.leafOffsets >> 4 * (leaves[i] % 8) & 15);
            QUORLAN_PREFETCH(nodes + leaves[i]);
        }
        std::sort(leaves, leaves + count_);
    }

    std::uint32_t const* begin() const { return leaves_.GetData(); }
    std::uint32_t const* end() const { return leaves_.GetData() + count_; }

private:
    static constexpr std::size_t kBatch = 8;

    static bool HasLeaves(QuantizedAxisAlignedBoxTreeWideNode_s const& wide) { return (wide.form >> 15) != 0; }

    IndexList leaves_;
    std::size_t count_ = 0;
};

}  // namespace Quorlan::Tools::Picking
