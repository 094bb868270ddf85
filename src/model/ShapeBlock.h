#pragma once

#include "model/BufferSink.h"
#include "model/ModelView.h"

#include <GeometryObjectLib/FacetedBRep.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

/// The tables of one faceted BRep, as they stand in a buffer: one run of bytes that leads nowhere but to the layouts.
///
/// The run is the shape's table, the vector of faces, each face with its loop, the vector of holes, each hole with its
/// loop, and the vertices.
namespace Quorlan {

/// Where the layouts of the three tables stand.
struct ShapeLayouts {
    std::size_t shape = 0;
    std::size_t face = 0;
    std::size_t hole = 0;

    explicit ShapeLayouts(BufferSink& sink);

    /// The bytes of the layouts.
    static std::vector<char> GetShapeLayout();
    static std::vector<char> GetFaceLayout();
    static std::vector<char> GetHoleLayout();
};

/// Tells whether tables of a buffer have a layout that is ours. Nearly all tables of a kind share one layout, which is
/// compared once.
class KnownLayout {
public:
    explicit KnownLayout(std::vector<char> bytes) : bytes_(std::move(bytes)) {}

    /// REQUIRES: the table has passed the verifier.
    bool Accepts(void const* table) {
        auto const* const layout = static_cast<flatbuffers::Table const*>(table)->GetVTable();
        if (layout == accepted_) return true;
        if (flatbuffers::ReadScalar<flatbuffers::voffset_t>(layout) != bytes_.size()) return false;
        if (std::memcmp(layout, bytes_.data(), bytes_.size()) != 0) return false;
        accepted_ = layout;
        return true;
    }

    /// Where the layout stands that was accepted last; null for none.
    std::uint8_t const* GetAccepted() const { return accepted_; }

private:
    std::vector<char> bytes_;
    std::uint8_t const* accepted_ = nullptr;
};

/// How many of its parts a shape has.
struct ShapeCounts {
    std::uint32_t faces = 0;
    std::uint32_t holes = 0;
    std::uint32_t vertices = 0;
    std::uint32_t loopWords = 0;  ///< words of 4 bytes that all indices take, each loop rounded up

    static std::size_t ToWords(std::size_t indexCount) { return (indexCount + 1) / 2; }

    /// [bytes] The size of the run.
    std::size_t GetBlockSize(std::size_t vertexStride) const {
        return 16 + 4 + std::size_t{faces} * (4 + 8 + 4) + 4 + std::size_t{holes} * (4 + 12 + 4) +
               4 * std::size_t{loopWords} + 4 + vertices * vertexStride;
    }
};

/// Appends a shape. The parts are written in the order of the run; the number of each must be that of `counts`.
class ShapeWriter {
public:
    ShapeWriter(BufferSink& sink, ShapeLayouts const& layouts, ShapeCounts const& counts, std::size_t vertexStride);

    /// Begin the faces, the holes and the vertices.
    void BeginFaces() { nextOffset_ = BeginVector(0, counts_.faces); }
    void BeginHoles() { nextOffset_ = BeginVector(1, counts_.holes); }
    char* BeginVertices();

    /// RETURNS where the loop's indices are to be written.
    char* AddFace(std::size_t loopLength) {
        BeginPart(layouts_.face);
        Set(cursor_ + 4, 4);
        return BeginLoop(cursor_ + 8, loopLength);
    }

    char* AddHole(std::uint16_t face, std::size_t loopLength) {
        BeginPart(layouts_.hole);
        flatbuffers::WriteScalar(block_ + cursor_ + 4, face);
        Set(cursor_ + 8, 4);
        return BeginLoop(cursor_ + 12, loopLength);
    }

private:
    void Set(std::size_t at, std::size_t value) {
        flatbuffers::WriteScalar(block_ + at, static_cast<std::uint32_t>(value));
    }

    std::size_t BeginVector(std::size_t slot, std::size_t count);

    /// The table at the cursor, which the next offset of the vector leads to.
    void BeginPart(std::size_t layout) {
        Set(nextOffset_, cursor_ - nextOffset_);
        nextOffset_ += 4;
        Set(cursor_, position_ + cursor_ - layout);
    }

    char* BeginLoop(std::size_t at, std::size_t length) {
        Set(at, length);
        cursor_ = at + 4 + 4 * ShapeCounts::ToWords(length);
        return block_ + at + 4;
    }

    ShapeLayouts const& layouts_;
    ShapeCounts const& counts_;
    std::size_t position_;     ///< of the run in the buffer
    char* block_;              ///< the run
    std::size_t cursor_ = 16;  ///< in the run
    std::size_t nextOffset_ = 0;
};

/// Appends a shape that is held as tables already. REQUIRES: `counts` are its own.
void CopyShape(BufferSink& sink, ShapeLayouts const& layouts, BRepView const& shape, ShapeCounts const& counts);

/// Appends a shape that stands as a run. REQUIRES: `counts` are its own.
void CopyRun(BufferSink& sink, ShapeLayouts const& layouts, void const* run, ShapeCounts const& counts,
             std::size_t vertexStride);

}  // namespace Quorlan
