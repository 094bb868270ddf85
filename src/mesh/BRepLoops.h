#pragma once

#include "model/ModelView.h"

#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

/// A part of the index array of `BRepLoops`.
struct LoopRange {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;

    std::uint32_t GetSize() const { return end - begin; }
};

/// The loops of one BRep in one flat array: outer loops in face order, then holes in stored order.
///
/// What the buffer lacks is not there: indices beyond the vertices are dropped, holes of faces that do not exist too.
class BRepLoops {
public:
    struct Hole {
        std::uint32_t face;
        LoopRange range;
    };

    /// Replaces the contents; memory is kept.
    void Read(BRepView const& brep);

    std::uint32_t GetFaceCount() const { return static_cast<std::uint32_t>(outerLoops_.size()); }
    LoopRange GetOuterLoop(std::uint32_t face) const { return outerLoops_[face]; }
    std::vector<Hole> const& GetHoles() const { return holes_; }

    /// The same holes by ascending face; holes of one face stay in stored order.
    std::vector<Hole> const& GetHolesByFace() const { return holesByFace_; }

    std::uint16_t const* GetIndices() const { return indices_.data(); }

private:
    template <class Vector>
    LoopRange Append(Vector const* loop, std::uint32_t vertexCount);

    std::vector<std::uint16_t> indices_;
    std::vector<LoopRange> outerLoops_;
    std::vector<Hole> holes_;
    std::vector<Hole> holesByFace_;
};

}  // namespace Quorlan::Tools
