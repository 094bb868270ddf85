#include "model/ShapeBlock.h"

#include <initializer_list>

namespace Quorlan {
namespace {

using LoopVector = flatbuffers::Vector<std::uint16_t>;

/// The tables of the three kinds have one layout.
template <class Table>
constexpr bool kHasShapeLayout = Table::VT_FACES == 4 && Table::VT_HOLES == 6 && Table::VT_VERTICES == 8;

static_assert(kHasShapeLayout<Schema::FacetedBRepTable> && kHasShapeLayout<Schema::FacetedBRepWithUVTable> &&
              kHasShapeLayout<Schema::FacetedBRepWithNormalTable>);

void CopyLoop(char* out, LoopVector const* loop) {
    std::uint32_t const count = CountOf(loop);
    if (count != 0) std::memcpy(out, loop->Data(), count * sizeof(std::uint16_t));
}

constexpr std::initializer_list<flatbuffers::voffset_t> kShapeFields = {
    Schema::FacetedBRepTable::VT_FACES, Schema::FacetedBRepTable::VT_HOLES, Schema::FacetedBRepTable::VT_VERTICES};
constexpr std::initializer_list<flatbuffers::voffset_t> kFaceFields = {Schema::FaceTable::VT_OUTERLOOP};
constexpr std::initializer_list<flatbuffers::voffset_t> kHoleFields = {Schema::HoleTable::VT_FACE,
                                                                       Schema::HoleTable::VT_INNERLOOP};

std::vector<char> MakeLayout(std::initializer_list<flatbuffers::voffset_t> fields) {
    BufferSink sink(0);
    sink.AppendLayout(fields);
    return sink.Take();
}

/// Lets the tables that a vector of a run leads to lead to their layout.
void SetLayouts(BufferSink& sink, std::size_t vector, std::size_t count, std::size_t layout) {
    char* const bytes = sink.At(vector);
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const slot = 4 + 4 * i;
        std::size_t const table = slot + flatbuffers::ReadScalar<flatbuffers::uoffset_t>(bytes + slot);
        flatbuffers::WriteScalar(bytes + table, static_cast<flatbuffers::soffset_t>(vector + table - layout));
    }
}

}  // namespace

ShapeLayouts::ShapeLayouts(BufferSink& sink)
    : shape(sink.AppendLayout(kShapeFields)),
      face(sink.AppendLayout(kFaceFields)),
      hole(sink.AppendLayout(kHoleFields)) {}

std::vector<char> ShapeLayouts::GetShapeLayout() { return MakeLayout(kShapeFields); }
std::vector<char> ShapeLayouts::GetFaceLayout() { return MakeLayout(kFaceFields); }
std::vector<char> ShapeLayouts::GetHoleLayout() { return MakeLayout(kHoleFields); }

ShapeWriter::ShapeWriter(BufferSink& sink, ShapeLayouts const& layouts, ShapeCounts const& counts,
                         std::size_t vertexStride)
    : layouts_(layouts),
      counts_(counts),
      position_(sink.GetSize()),
      block_(sink.Append(counts.GetBlockSize(vertexStride))) {
    Set(0, position_ - layouts.shape);
}

std::size_t ShapeWriter::BeginVector(std::size_t slot, std::size_t count) {
    std::size_t const field = 4 + 4 * slot;
    Set(field, cursor_ - field);
    Set(cursor_, count);
    std::size_t const first = cursor_ + 4;
    cursor_ = first + 4 * count;
    return first;
}

char* ShapeWriter::BeginVertices() {
    Set(12, cursor_ - 12);
    Set(cursor_, counts_.vertices);
    return block_ + cursor_ + 4;
}

void CopyShape(BufferSink& sink, ShapeLayouts const& layouts, BRepView const& shape, ShapeCounts const& counts) {
    ShapeWriter writer(sink, layouts, counts, shape.vertexStride);
    writer.BeginFaces();
    for (std::uint32_t i = 0; i < counts.faces; ++i) {
        LoopVector const* const loop = shape.faces->Get(i)->outerLoop();
        CopyLoop(writer.AddFace(CountOf(loop)), loop);
    }
    writer.BeginHoles();
    for (std::uint32_t i = 0; i < counts.holes; ++i) {
        auto const* const hole = shape.holes->Get(i);
        CopyLoop(writer.AddHole(hole->face(), CountOf(hole->innerLoop())), hole->innerLoop());
    }
    char* const vertices = writer.BeginVertices();
    if (counts.vertices != 0) std::memcpy(vertices, shape.vertices, counts.vertices * std::size_t{shape.vertexStride});
}

void CopyRun(BufferSink& sink, ShapeLayouts const& layouts, void const* run, ShapeCounts const& counts,
             std::size_t vertexStride) {
    std::size_t const table = sink.GetSize();
    sink.AppendCopy(run, counts.GetBlockSize(vertexStride));
    flatbuffers::WriteScalar(sink.At(table), static_cast<flatbuffers::soffset_t>(table - layouts.shape));
    SetLayouts(sink, table + 16, counts.faces, layouts.face);
    if (counts.holes == 0) return;
    std::size_t const holes = table + 8 + flatbuffers::ReadScalar<flatbuffers::uoffset_t>(sink.At(table + 8));
    SetLayouts(sink, holes, counts.holes, layouts.hole);
}

}  // namespace Quorlan
