#include "increments/ShapeSieve.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorlan::Tools::Increments {
namespace {

/// A length is the sum of two distances, each of which may differ by two tolerances from shape to copy. Two shapes with
/// a common copy thus differ by at most eight; the rest is for rounding.
constexpr double kRadiusInTolerances = 8.1;

/// Width of a cell in tolerances. Wide against the radius, so that mostly one cell is looked at.
constexpr double kCellWidthInTolerances = 128;

std::uint64_t Mix(std::uint64_t value) {
    value = (value ^ value >> 32) * 0xD6E8FEB86659FD93;  // odd, half of its bits set
    return value ^ value >> 32;
}

}  // namespace

ShapeSieve::ShapeSieve(double tolerance)
    : cellsPerUnit_(1 / (kCellWidthInTolerances * tolerance)), radius_(kRadiusInTolerances * tolerance), cells_(64) {}

bool ShapeSieve::FindSimilar(ShapeSketch const& sketch, std::vector<GeometryDefinitionIndex_t>& waiting) {
    bool isSimilar = false;
    found_.clear();
    std::int64_t const last0 = CellOf(sketch.lengths[0] + radius_);
    std::int64_t const last1 = CellOf(sketch.lengths[1] + radius_);
    for (std::int64_t i = CellOf(sketch.lengths[0] - radius_); i <= last0; ++i) {
        for (std::int64_t j = CellOf(sketch.lengths[1] - radius_); j <= last1; ++j) {
            Cell& cell = cells_[SlotOf(CellKey(sketch.topology, i, j))];
            if (cell.key == kFree) continue;
            isSimilar |= cell.isTaken;
            if (cell.first != kNone) isSimilar |= TakeSimilar(cell, sketch);
        }
    }
    std::sort(found_.begin(), found_.end());
    for (std::uint32_t const shape : found_) waiting.push_back(shapes_[shape].definition);
    return isSimilar;
}

/// Takes the similar shapes of a cell from those that wait. RETURNS whether there are any.
bool ShapeSieve::TakeSimilar(Cell& cell, ShapeSketch const& sketch) {
    bool hasTaken = false;
    std::uint32_t* link = &cell.first;
    while (*link != kNone) {
        Waiting& shape = shapes_[*link];
        bool const isSimilar = std::abs(shape.lengths[0] - sketch.lengths[0]) <= radius_ &&
                               std::abs(shape.lengths[1] - sketch.lengths[1]) <= radius_;
        if (isSimilar) {
            found_.push_back(*link);
            *link = std::exchange(shape.next, kNone);
            cell.isTaken = true;
            hasTaken = true;
        } else {
            link = &shape.next;
        }
    }
    return hasTaken;
}

void ShapeSieve::Wait(ShapeSketch const& sketch, GeometryDefinitionIndex_t definition) {
    Cell& cell = FindOrAdd(CellKey(sketch));
    shapes_.push_back({{sketch.lengths[0], sketch.lengths[1]}, definition, cell.first});
    cell.first = static_cast<std::uint32_t>(shapes_.size() - 1);
}

void ShapeSieve::ReleaseAll(std::vector<GeometryDefinitionIndex_t>& waiting) {
    found_.clear();
    for (Cell& cell : cells_) {
        for (std::uint32_t shape = std::exchange(cell.first, kNone); shape != kNone; shape = shapes_[shape].next) {
            found_.push_back(shape);
            cell.isTaken = true;
        }
    }
    std::sort(found_.begin(), found_.end());
    for (std::uint32_t const shape : found_) waiting.push_back(shapes_[shape].definition);
}

void ShapeSieve::Reserve(std::size_t shapeCount) {
    ReserveMore(shapes_, shapeCount);
    std::size_t size = cells_.size();
    while (size < 2 * (occupiedCount_ + shapeCount)) size *= 2;
    if (size > cells_.size()) GrowTo(size);
}

std::int64_t ShapeSieve::CellOf(double length) const {
    constexpr double kLastCell = 4611686018427387904.0;  // 2^62
    return static_cast<std::int64_t>(std::min(kLastCell, length * cellsPerUnit_));
}

std::uint64_t ShapeSieve::CellKey(std::uint64_t topology, std::int64_t cell0, std::int64_t cell1) {
    return Mix(Mix(topology ^ static_cast<std::uint64_t>(cell0)) ^ static_cast<std::uint64_t>(cell1)) | 1;
}

/// The slot of the key, or the free one where it belongs.
std::size_t ShapeSieve::SlotOf(std::uint64_t key) const {
    std::size_t const mask = cells_.size() - 1;
    std::size_t slot = FirstSlotOf(key);
    while (cells_[slot].key != kFree && cells_[slot].key != key) slot = (slot + 1) & mask;
    return slot;
}

ShapeSieve::Cell& ShapeSieve::FindOrAdd(std::uint64_t key) {
    if (2 * (occupiedCount_ + 1) > cells_.size()) GrowTo(2 * cells_.size());
    Cell& cell = cells_[SlotOf(key)];
    if (cell.key == kFree) {
        cell.key = key;
        ++occupiedCount_;
    }
    return cell;
}

void ShapeSieve::GrowTo(std::size_t size) {
    LargeVector<Cell> const old = std::exchange(cells_, LargeVector<Cell>(size));
    for (Cell const& cell : old) {
        if (cell.key != kFree) cells_[SlotOf(cell.key)] = cell;
    }
}

}  // namespace Quorlan::Tools::Increments
