#pragma once

#include "model/LargePages.h"
#include "model/ModelView.h"
#include "model/ShapeBlock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan {

/// Measures of a shape that all its rigid copies share.
///
/// A copy has, position by position, the distances between the vertices of the shape, to two tolerances each, and the
/// same loops. Each of the two lengths is the sum of two distances.
struct ShapeSketch {
    std::uint64_t topology = 0;  ///< a hash of the numbers of faces, holes, vertices and indices
    double lengths[2] = {0, 0};  ///< [model units]
};

/// What one pass over a stored BRep tells.
struct ShapeScan {
    ShapeCounts counts;
    ShapeSketch sketch;
    Schema::Vector3 min;
    Schema::Vector3 max;
    std::uint32_t indexCount = 0;  ///< of all loops of a run; of others modulo 2^32
    bool isSound = false;          ///< has vertices, and all indices are in range
    bool isFinite = false;         ///< all positions are finite numbers
    bool isStorable = false;  ///< sound, with at least 3 vertices and no more than a buffer holds, and with the holes
                              ///< in the order of their faces
    bool isRun = false;       ///< stands as one run of bytes, as `ShapeWriter` writes it
};

/// The BReps of a buffer: by kind, then by index within the kind. Of shapes that are no runs, and where too many share
/// their bytes, nothing is known: `isRun` is false.
using ShapeScans = std::array<LargeVector<ShapeScan>, 8>;

/// Scans the shapes of one buffer.
class ShapeScanner {
public:
    /// REQUIRES: the shape has passed the verifier.
    ShapeScan Scan(BRepView const& shape);

private:
    class Walk;

    KnownLayout shapeLayout_{ShapeLayouts::GetShapeLayout()};
    KnownLayout faceLayout_{ShapeLayouts::GetFaceLayout()};
    KnownLayout holeLayout_{ShapeLayouts::GetHoleLayout()};
};

/// Scans shapes that stand as one run of bytes and have not been verified: where every part stands where the run has
/// it, and the run ends inside the buffer, the structure is sound. One walk thus verifies and scans.
///
/// It reads no more than about twice the buffer: shapes that share their bytes are not scanned again and again.
class RunScanner {
public:
    explicit RunScanner(std::vector<char> const& buffer)
        : bytes_(reinterpret_cast<std::uint8_t const*>(buffer.data())),
          size_(buffer.size()),
          bytesLeft_(buffer.size()) {}

    /// RETURNS false, with `scan` empty, if the shape is no run, has more faces than `maxFaces`, or its tables have
    /// layouts that have not been learned. Tables of holes are not counted as the verifier does.
    /// REQUIRES: `table` has passed the verifier's VerifyTableStart.
    bool Scan(void const* table, std::uint32_t stride, std::size_t maxFaces, ShapeScan& scan);

    /// Gets to know the layouts of a shape's tables. RETURNS whether one is new. REQUIRES: the shape has passed the
    /// verifier.
    bool Learn(BRepView const& shape);

private:
    struct Progress;

    static constexpr std::size_t kTableSize = 16;

    template <class T>
    T Read(std::size_t at) const {
        return flatbuffers::ReadScalar<T>(bytes_ + at);
    }
    std::size_t CountWordsBehind(std::size_t at) const { return at > size_ ? 0 : (size_ - at) / 4; }
    bool Follow(std::size_t shape, std::uint32_t stride, std::size_t maxFaces, Progress& progress,
                ShapeScan& scan) const;
    bool BeginVector(Progress& progress, std::size_t field, std::uint32_t& count) const;
    bool FollowPart(Progress& progress, std::size_t slot, std::size_t layout, std::size_t tableSize) const;
    bool FollowHoles(Progress& progress, std::size_t field, std::uint32_t& count, bool& isSorted) const;

    std::uint8_t const* bytes_;
    std::size_t size_;
    std::size_t bytesLeft_;  ///< that may be read before scanning stops
    KnownLayout shapeLayout_{ShapeLayouts::GetShapeLayout()};
    KnownLayout faceLayout_{ShapeLayouts::GetFaceLayout()};
    KnownLayout holeLayout_{ShapeLayouts::GetHoleLayout()};
};

}  // namespace Quorlan
