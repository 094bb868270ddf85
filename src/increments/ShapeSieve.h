#pragma once

#include "geometry/Lanes.h"
#include "model/LargePages.h"
#include "model/ShapeScan.h"

#include <Quorlan/ModelTypes.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Tells which of many shapes may be copies of one another, from their sketches alone, so that the others need not be
/// compared: in a model whose shapes are distinct, that is nearly all of them.
///
/// Two shapes are similar if some third shape could be a copy of both. Shapes stand in a hash table of square cells of
/// lengths. Those that nothing similar came after wait there; once something similar comes, they are handed out, in the
/// order in which they came, and the cell remembers that it has held such.
class ShapeSieve {
public:
    /// `tolerance` [model units]: how far a vertex may lie from its counterpart.
    explicit ShapeSieve(double tolerance);

    /// Lets the processor fetch what the other operations will read for a shape.
    void Prefetch(ShapeSketch const& sketch) const { QUORLAN_PREFETCH(&cells_[FirstSlotOf(CellKey(sketch))]); }

    /// Whether a shape that came before may be similar. Appends the waiting ones, which wait no longer.
    bool FindSimilar(ShapeSketch const& sketch, std::vector<GeometryDefinitionIndex_t>& waiting);

    /// Lets a shape wait. REQUIRES: FindSimilar told that nothing is similar.
    void Wait(ShapeSketch const& sketch, GeometryDefinitionIndex_t definition);

    /// Remembers a shape that does not wait.
    void Remember(ShapeSketch const& sketch) { FindOrAdd(CellKey(sketch)).isTaken = true; }

    /// Appends all shapes that wait, in the order in which they came. Nothing waits afterwards.
    void ReleaseAll(std::vector<GeometryDefinitionIndex_t>& waiting);

    /// Makes room for this many shapes.
    void Reserve(std::size_t shapeCount);

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    struct Waiting {
        double lengths[2];
        GeometryDefinitionIndex_t definition;
        std::uint32_t next;  ///< of the cell; kNone for the last
    };

    struct Cell {
        std::uint64_t key = kFree;
        std::uint32_t first = kNone;  ///< the first that waits
        bool isTaken = false;         ///< has held a shape that does not wait
    };

    /// What no key is, because all keys are odd.
    static constexpr std::uint64_t kFree = 0;

    static std::uint64_t CellKey(std::uint64_t topology, std::int64_t cell0, std::int64_t cell1);
    std::uint64_t CellKey(ShapeSketch const& sketch) const {
        return CellKey(sketch.topology, CellOf(sketch.lengths[0]), CellOf(sketch.lengths[1]));
    }
    std::int64_t CellOf(double length) const;
    std::size_t FirstSlotOf(std::uint64_t key) const { return (key >> 1) & (cells_.size() - 1); }
    std::size_t SlotOf(std::uint64_t key) const;
    Cell& FindOrAdd(std::uint64_t key);
    void GrowTo(std::size_t size);
    bool TakeSimilar(Cell& cell, ShapeSketch const& sketch);

    double cellsPerUnit_;
    double radius_;  ///< [model units] largest difference of the lengths of similar shapes
    std::size_t occupiedCount_ = 0;
    LargeVector<Cell> cells_;
    LargeVector<Waiting> shapes_;
    std::vector<std::uint32_t> found_;  ///< kept for its storage
};

}  // namespace Quorlan::Tools::Increments
