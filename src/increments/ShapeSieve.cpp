#include "increments/ShapeSieve.h"

#include "geometry/Lanes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Quorlan::Tools::Increments {
namespace {

using GeometryObjectLib::Float4;
using LoopVector = flatbuffers::Vector<std::uint16_t>;

constexpr std::uint32_t kMinVertexCount = 3;
constexpr std::uint32_t kMaxVertexCount = 65536;

/// A length is the sum of two distances, each of which may differ by two tolerances from shape to copy. Two shapes with
/// a common copy thus differ by at most eight; the rest is for rounding.
constexpr double kRadiusInTolerances = 8.1;

/// Width of a cell in tolerances. Wide against the radius, so that mostly one cell is looked at.
constexpr double kCellWidthInTolerances = 128;

std::uint64_t Mix(std::uint64_t value) {
    value = (value ^ value >> 32) * 0xD6E8FEB86659FD93;  // odd, half of its bits set
    return value ^ value >> 32;
}

/// The position at an address, with whatever follows it in the fourth lane.
Float4 LoadPosition(std::uint8_t const* bytes) {
    float values[4];
    std::memcpy(values, bytes, sizeof(values));
    return {values[0], values[1], values[2], values[3]};
}

/// Bounds as `StoredBounds` finds them, and whether all positions are finite.
void ScanPositions(BRepView const& shape, ShapeScan& scan) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Float4 const zero(0.0f);
    Float4 lo(kInfinity);
    Float4 hi(-kInfinity);
    Float4 sum = zero;
    auto const add = [&](Float4 const& position) {
        lo = Min(lo, position);
        hi = Max(hi, position);
        sum = sum + position * zero;
    };
    std::uint32_t const last = shape.vertexCount - 1;
    std::uint8_t const* bytes = shape.vertices;
    for (std::uint32_t i = 0; i < last; ++i, bytes += shape.vertexStride) add(LoadPosition(bytes));
    Vector3f const end = shape.GetPosition(last);
    add({end.x, end.y, end.z, 0});

    float corners[3][4];
    Store(lo, corners[0]);
    Store(hi, corners[1]);
    Store(sum, corners[2]);
    scan.min = {corners[0][0], corners[0][1], corners[0][2]};
    scan.max = {corners[1][0], corners[1][1], corners[1][2]};
    scan.isFinite = corners[2][0] == 0 && corners[2][1] == 0 && corners[2][2] == 0;
}

void MeasureLengths(BRepView const& shape, ShapeSketch& sketch) {
    std::uint32_t const middle = shape.vertexCount / 2;
    std::uint32_t const last = shape.vertexCount - 1;
    auto const distance = [&shape](std::uint32_t a, std::uint32_t b) {
        using GeometryObjectLib::ToVertex;
        return Length(ToVertex(shape.GetPosition(a)) - ToVertex(shape.GetPosition(b)));
    };
    sketch.lengths[0] = distance(last, 0) + distance(middle, 1);
    sketch.lengths[1] = distance(middle, 0) + distance(last, 1);
}

}  // namespace

/// Follows the parts of a shape and compares where they stand with where `ShapeWriter` puts them.
class ShapeScanner::Walk {
public:
    Walk(ShapeScanner& scanner, BRepView const& shape)
        : scanner_(scanner), next_(static_cast<std::uint8_t const*>(shape.table) + kShapeTableSize) {
        isRun_ = scanner_.shapeLayout_.Accepts(shape.table);
    }

    template <class Vector>
    void VisitVector(Vector const* vector) {
        Expect(vector);
        next_ += 4 + 4 * std::size_t{CountOf(vector)};
    }

    /// A face or a hole, whose table takes `tableSize` bytes.
    void VisitPart(KnownLayout& layout, void const* table, LoopVector const* loop, std::size_t tableSize) {
        Expect(table);
        isRun_ = isRun_ && layout.Accepts(table);
        next_ += tableSize;
        Expect(loop);
        std::uint32_t const count = CountOf(loop);
        std::size_t const words = ShapeCounts::ToWords(count);
        loopWords_ += words;
        indexCount_ += count;
        if (count == 0) {
            next_ += 4;
            return;
        }
        std::uint8_t const* const indices = loop->Data();
        for (std::uint32_t i = 0; i < count; ++i) {
            largest_ = std::max<std::uint32_t>(largest_, flatbuffers::ReadScalar<std::uint16_t>(indices + 2 * i));
        }
        padding_ = count % 2 == 1 ? indices + 2 * count : nullptr;
        next_ += 4 + 4 * words;
    }

    void RequireZero(std::uint8_t const* padding) {
        isRun_ = isRun_ && flatbuffers::ReadScalar<std::uint16_t>(padding) == 0;
    }

    void VisitVertices(std::uint8_t const* vertices) { Expect(vertices - 4); }

    bool IsRun() const { return isRun_; }
    bool IsSound(std::uint32_t vertexCount) const { return indexCount_ == 0 || largest_ < vertexCount; }
    std::size_t GetLoopWords() const { return loopWords_; }
    std::uint64_t GetIndexCount() const { return indexCount_; }

private:
    static constexpr std::size_t kShapeTableSize = 16;

    /// What rounds up the loop before is looked at only once something stands behind it.
    void Expect(void const* part) {
        isRun_ = isRun_ && part == next_;
        if (isRun_ && padding_ != nullptr) RequireZero(padding_);
        padding_ = nullptr;
    }

    ShapeScanner& scanner_;
    std::uint8_t const* next_;
    std::uint8_t const* padding_ = nullptr;  ///< of the loop before, if it has an odd number of indices
    bool isRun_ = false;
    std::uint32_t largest_ = 0;
    std::size_t loopWords_ = 0;
    std::uint64_t indexCount_ = 0;
};

ShapeScan ShapeScanner::Scan(BRepView const& shape) {
    ShapeScan scan;
    if (shape.vertices == nullptr) return scan;
    ShapeCounts& counts = scan.counts;
    counts = {CountOf(shape.faces), CountOf(shape.holes), shape.vertexCount, 0};

    Walk walk(*this, shape);
    walk.VisitVector(shape.faces);
    for (std::uint32_t i = 0; i < counts.faces; ++i) {
        auto const* const face = shape.faces->Get(i);
        walk.VisitPart(faceLayout_, face, face->outerLoop(), 8);
    }
    walk.VisitVector(shape.holes);
    bool isSorted = true;
    std::uint16_t previousFace = 0;
    for (std::uint32_t i = 0; i < counts.holes; ++i) {
        auto const* const hole = shape.holes->Get(i);
        walk.VisitPart(holeLayout_, hole, hole->innerLoop(), 12);
        if (walk.IsRun()) walk.RequireZero(reinterpret_cast<std::uint8_t const*>(hole) + 6);
        isSorted &= previousFace <= hole->face();
        previousFace = hole->face();
    }
    walk.VisitVertices(shape.vertices);
    counts.loopWords = static_cast<std::uint32_t>(walk.GetLoopWords());
    scan.isSound = walk.IsSound(shape.vertexCount);
    scan.isRun = walk.IsRun();
    scan.isStorable =
        scan.isSound && isSorted && shape.vertexCount >= kMinVertexCount && shape.vertexCount <= kMaxVertexCount;
    if (shape.vertexCount >= 2) {
        ScanPositions(shape, scan);
        MeasureLengths(shape, scan.sketch);
    }
    scan.sketch.topology =
        Mix(Mix((std::uint64_t{counts.faces} << 32 | counts.vertices) ^ std::uint64_t{counts.holes} << 48) ^
            walk.GetIndexCount());
    return scan;
}

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
    shapes_.reserve(shapes_.size() + shapeCount);
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
