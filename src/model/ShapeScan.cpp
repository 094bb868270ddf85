#include "model/ShapeScan.h"

#include "geometry/Lanes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Quorlan {
namespace {

using GeometryObjectLib::Float4;
using LoopVector = flatbuffers::Vector<std::uint16_t>;

constexpr std::uint32_t kMinVertexCount = 3;
constexpr std::uint32_t kMaxVertexCount = 65536;

std::uint64_t Mix(std::uint64_t value) {
    value = (value ^ value >> 32) * 0xD6E8FEB86659FD93;  // odd, half of its bits set
    return value ^ value >> 32;
}

/// The position at an address, with whatever follows it in the fourth lane.
Float4 LoadPosition(std::uint8_t const* bytes) {
    static_assert(sizeof(Float4) == 4 * sizeof(float));
    Float4 position;
    std::memcpy(&position, bytes, sizeof(position));
    return position;
}

/// The bounds of positions, and a sum that is zero if all are finite.
struct PositionRange {
    Float4 lo{std::numeric_limits<float>::infinity()};
    Float4 hi{-std::numeric_limits<float>::infinity()};
    Float4 sum{0.0f};

    void Add(Float4 const& position) {
        lo = Min(lo, position);
        hi = Max(hi, position);
        sum = sum + position * Float4(0.0f);
    }
};

/// Of equal bounds the first counts, which only zeros of both signs tell apart.
void SetZeroBounds(BRepView const& shape, float* lo, float* hi) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (lo[axis] != 0 && hi[axis] != 0) continue;
        float value = 1;
        std::uint8_t const* bytes = shape.vertices + axis * sizeof(float);
        for (; value != 0; bytes += shape.vertexStride) std::memcpy(&value, bytes, sizeof(value));
        if (lo[axis] == 0) lo[axis] = value;
        if (hi[axis] == 0) hi[axis] = value;
    }
}

/// Bounds as `StoredBounds` finds them, and whether all positions are finite.
void ScanPositions(BRepView const& shape, ShapeScan& scan) {
    // Two at a time, side by side: each step of one waits for the step before.
    PositionRange even;
    PositionRange odd;
    std::size_t const stride = shape.vertexStride;
    std::uint32_t const last = shape.vertexCount - 1;
    std::uint8_t const* bytes = shape.vertices;
    for (std::uint32_t i = 0; i < last / 2; ++i, bytes += 2 * stride) {
        even.Add(LoadPosition(bytes));
        odd.Add(LoadPosition(bytes + stride));
    }
    if (last % 2 == 1) even.Add(LoadPosition(bytes));
    Vector3f const end = shape.GetPosition(last);
    odd.Add({end.x, end.y, end.z, 0});

    float lo[4];
    float hi[4];
    float sum[4];
    Store(Min(even.lo, odd.lo), lo);
    Store(Max(even.hi, odd.hi), hi);
    Store(even.sum + odd.sum, sum);
    scan.isFinite = sum[0] == 0 && sum[1] == 0 && sum[2] == 0;
    if (scan.isFinite) SetZeroBounds(shape, lo, hi);
    scan.min = {lo[0], lo[1], lo[2]};
    scan.max = {hi[0], hi[1], hi[2]};
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

/// What a scan finds out from the parts that it has followed.
void Complete(ShapeScan& scan, BRepView const& shape, std::uint64_t indexCount, std::uint32_t largestIndex,
              bool isSorted) {
    scan.indexCount = static_cast<std::uint32_t>(indexCount);
    scan.isSound = indexCount == 0 || largestIndex < shape.vertexCount;
    scan.isStorable =
        scan.isSound && isSorted && shape.vertexCount >= kMinVertexCount && shape.vertexCount <= kMaxVertexCount;
    if (shape.vertexCount >= 2) {
        ScanPositions(shape, scan);
        MeasureLengths(shape, scan.sketch);
    }
    ShapeCounts const& counts = scan.counts;
    scan.sketch.topology = Mix(
        Mix((std::uint64_t{counts.faces} << 32 | counts.vertices) ^ std::uint64_t{counts.holes} << 48) ^ indexCount);
}

/// The largest of indices that come in loops of a few words of two.
class IndexMaximum {
public:
    /// `readable`: how many words may be read, of which only the first `words` count.
    void Add(std::uint8_t const* indices, std::size_t words, std::size_t readable) {
#if QUORLAN_HAS_SSE2
        constexpr std::size_t kWords = 4;
        if (words <= kWords && readable >= kWords) {  // nearly always: one step without a loop
            static constexpr std::uint32_t kMasks[2 * kWords] = {~0u, ~0u, ~0u, ~0u, 0, 0, 0, 0};
            __m128i const mask = _mm_loadu_si128(reinterpret_cast<__m128i const*>(kMasks + kWords - words));
            __m128i const all = _mm_loadu_si128(reinterpret_cast<__m128i const*>(indices));
            __m128i const wanted = _mm_and_si128(all, mask);
            lanes_ = _mm_adds_epu16(_mm_subs_epu16(wanted, lanes_), lanes_);
            return;
        }
#endif
        static_cast<void>(readable);
        for (std::size_t i = 0; i < words; ++i) {
            auto const word = flatbuffers::ReadScalar<std::uint32_t>(indices + 4 * i);
            largest_ = std::max({largest_, word & 0xFFFF, word >> 16});
        }
    }

    std::uint32_t Get() const {
        std::uint32_t largest = largest_;
#if QUORLAN_HAS_SSE2
        std::uint16_t lanes[8];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), lanes_);
        for (std::uint16_t const lane : lanes) largest = std::max<std::uint32_t>(largest, lane);
#endif
        return largest;
    }

private:
    std::uint32_t largest_ = 0;
#if QUORLAN_HAS_SSE2
    __m128i lanes_ = _mm_setzero_si128();
#endif
};

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
    std::uint32_t GetLargestIndex() const { return largest_; }
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
    scan.isRun = walk.IsRun();
    Complete(scan, shape, walk.GetIndexCount(), walk.GetLargestIndex(), isSorted);
    return scan;
}

/// Where a run has been followed to, and what its loops hold.
struct RunScanner::Progress {
    std::size_t next;
    IndexMaximum largestIndex = {};
    std::uint64_t indexCount = 0;
    std::size_t loopWords = 0;
};

bool RunScanner::Scan(void const* table, std::uint32_t stride, std::size_t maxFaces, ShapeScan& scan) {
    if (bytesLeft_ == 0 || !shapeLayout_.Accepts(table)) return false;
    std::size_t const shape = static_cast<std::size_t>(static_cast<std::uint8_t const*>(table) - bytes_);
    Progress progress{shape + kTableSize};
    bool const isRun = Follow(shape, stride, maxFaces, progress, scan);
    std::size_t const read = kTableSize + 4 * progress.loopWords + 16 * std::size_t{scan.counts.faces} +
                             std::size_t{scan.counts.vertices} * stride;
    bytesLeft_ -= std::min(bytesLeft_, read);
    if (!isRun) scan = ShapeScan();
    return isRun;
}

bool RunScanner::Follow(std::size_t shape, std::uint32_t stride, std::size_t maxFaces, Progress& progress,
                        ShapeScan& scan) const {
    if (CountWordsBehind(shape) < kTableSize / 4) return false;
    ShapeCounts& counts = scan.counts;
    if (!BeginVector(progress, shape + 4, counts.faces) || counts.faces > maxFaces) return false;
    std::size_t slot = progress.next - 4 * std::size_t{counts.faces};
    auto const* const faceLayout = faceLayout_.GetAccepted();
    std::size_t const layout = static_cast<std::size_t>(faceLayout - bytes_);
    if (counts.faces != 0 && faceLayout == nullptr) return false;
    for (std::uint32_t i = 0; i < counts.faces; ++i, slot += 4) {
        if (!FollowPart(progress, slot, layout, 8)) return false;
    }
    bool isSorted = true;
    if (!FollowHoles(progress, shape + 8, counts.holes, isSorted)) return false;

    std::size_t const vertices = shape + 12 + Read<std::uint32_t>(shape + 12);
    if (vertices != progress.next || CountWordsBehind(vertices) < 1) return false;
    std::uint32_t const vertexCount = Read<std::uint32_t>(vertices);
    if (std::uint64_t{vertexCount} * (stride / 4) > CountWordsBehind(vertices + 4)) return false;
    BRepView view;
    view.vertices = bytes_ + vertices + 4;
    view.vertexCount = counts.vertices = vertexCount;
    view.vertexStride = stride;
    counts.loopWords = static_cast<std::uint32_t>(progress.loopWords);
    scan.isRun = true;
    Complete(scan, view, progress.indexCount, progress.largestIndex.Get(), isSorted);
    return true;
}

/// The vector of offsets that a field of the shape must lead to. Moves behind the offsets.
bool RunScanner::BeginVector(Progress& progress, std::size_t field, std::uint32_t& count) const {
    if (field + Read<std::uint32_t>(field) != progress.next || CountWordsBehind(progress.next) < 1) return false;
    count = Read<std::uint32_t>(progress.next);
    progress.next += 4;
    if (count > CountWordsBehind(progress.next)) return false;
    progress.next += 4 * std::size_t{count};
    return true;
}

/// A face or a hole that `slot` must lead to, whose last field must lead to the loop behind its table.
inline bool RunScanner::FollowPart(Progress& progress, std::size_t slot, std::size_t layout,
                                   std::size_t tableSize) const {
    std::size_t const part = progress.next;
    std::size_t const loop = part + tableSize;
    if (CountWordsBehind(loop) < 1 || slot + Read<std::uint32_t>(slot) != part) return false;
    if (part - static_cast<std::size_t>(Read<flatbuffers::soffset_t>(part)) != layout) return false;
    if (Read<std::uint32_t>(loop - 4) != 4) return false;
    std::uint32_t const count = Read<std::uint32_t>(loop);
    std::size_t const words = ShapeCounts::ToWords(count);
    std::size_t const wordsBehind = CountWordsBehind(loop + 4);
    if (words > wordsBehind) return false;

    // What rounds up an odd number of indices must be zero, and changes no maximum.
    if (count % 2 == 1 && Read<std::uint16_t>(loop + 4 + 2 * std::size_t{count}) != 0) return false;
    progress.largestIndex.Add(bytes_ + loop + 4, words, wordsBehind);
    progress.indexCount += count;
    progress.loopWords += words;
    progress.next = loop + 4 + 4 * words;
    return true;
}

bool RunScanner::FollowHoles(Progress& progress, std::size_t field, std::uint32_t& count, bool& isSorted) const {
    if (!BeginVector(progress, field, count)) return false;
    if (count == 0) return true;
    auto const* const holeLayout = holeLayout_.GetAccepted();
    if (holeLayout == nullptr) return false;
    std::size_t const layout = static_cast<std::size_t>(holeLayout - bytes_);
    std::size_t slot = progress.next - 4 * std::size_t{count};
    std::uint16_t previousFace = 0;
    for (std::uint32_t i = 0; i < count; ++i, slot += 4) {
        std::size_t const hole = progress.next;
        if (!FollowPart(progress, slot, layout, 12)) return false;
        if (Read<std::uint16_t>(hole + 6) != 0) return false;
        auto const face = Read<std::uint16_t>(hole + 4);
        isSorted &= previousFace <= face;
        previousFace = face;
    }
    return true;
}

bool RunScanner::Learn(BRepView const& shape) {
    auto const learn = [](KnownLayout& layout, auto const* parts) {
        auto const* const known = layout.GetAccepted();
        return CountOf(parts) != 0 && layout.Accepts(parts->Get(0)) && layout.GetAccepted() != known;
    };
    bool const isFaceNew = learn(faceLayout_, shape.faces);
    return learn(holeLayout_, shape.holes) || isFaceNew;
}

}  // namespace Quorlan
