#include "mesh/BRepLoops.h"

#include <algorithm>

namespace Quorlan::Tools {

template <class Vector>
LoopRange BRepLoops::Append(Vector const* loop, std::uint32_t vertexCount) {
    LoopRange range;
    range.begin = static_cast<std::uint32_t>(indices_.size());
    for (std::uint32_t i = 0; i < CountOf(loop); ++i) {
        std::uint16_t const index = loop->Get(i);
        if (index < vertexCount) indices_.push_back(index);
    }
    range.end = static_cast<std::uint32_t>(indices_.size());
    return range;
}

void BRepLoops::Read(BRepView const& brep) {
    indices_.clear();
    outerLoops_.clear();
    holes_.clear();
    for (std::uint32_t f = 0; f < CountOf(brep.faces); ++f) {
        outerLoops_.push_back(Append(brep.faces->Get(f)->outerLoop(), brep.vertexCount));
    }
    for (std::uint32_t h = 0; h < CountOf(brep.holes); ++h) {
        auto const* const hole = brep.holes->Get(h);
        if (hole->face() >= outerLoops_.size()) continue;
        holes_.push_back({hole->face(), Append(hole->innerLoop(), brep.vertexCount)});
    }
    holesByFace_ = holes_;
    auto const byFace = [](Hole const& a, Hole const& b) { return a.face < b.face; };
    if (!std::is_sorted(holesByFace_.begin(), holesByFace_.end(), byFace)) {
        std::stable_sort(holesByFace_.begin(), holesByFace_.end(), byFace);
    }
}

}  // namespace Quorlan::Tools
