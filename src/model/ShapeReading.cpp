#include "model/ShapeReading.h"

#include <algorithm>

namespace Quorlan {
namespace {

using GeometryObjectLib::FacetedBRep;
using LoopVector = flatbuffers::Vector<std::uint16_t>;

/// Copies a loop; an absent one is empty. RETURNS false at an index beyond the vertices.
bool ReadLoop(std::vector<std::uint32_t>& out, LoopVector const* loop, std::uint32_t vertexCount) {
    out.clear();
    if (loop == nullptr) return true;
    out.assign(loop->begin(), loop->end());
    return std::all_of(out.begin(), out.end(), [vertexCount](std::uint32_t index) { return index < vertexCount; });
}

bool ReadFaces(FacetedBRep& out, BRepView const& shape) {
    out.faces.resize(CountOf(shape.faces));
    for (std::uint32_t i = 0; i < out.faces.size(); ++i) {
        if (!ReadLoop(out.faces[i], shape.faces->Get(i)->outerLoop(), shape.vertexCount)) return false;
    }
    out.holes.clear();
    for (std::uint32_t i = 0; i < CountOf(shape.holes); ++i) {
        auto const* const hole = shape.holes->Get(i);
        auto& loops = out.holes[hole->face()];
        loops.emplace_back();
        if (!ReadLoop(loops.back(), hole->innerLoop(), shape.vertexCount)) return false;
    }
    return true;
}

/// The stored vertices, whose form the caller knows.
template <class StoredVertex>
std::pair<StoredVertex const*, StoredVertex const*> VerticesOf(BRepView const& shape) {
    auto const* const first = reinterpret_cast<StoredVertex const*>(shape.vertices);
    return {first, first + shape.vertexCount};
}

}  // namespace

bool ReadShape(FacetedBRep& out, BRepView const& shape) {
    if (shape.vertices == nullptr || !ReadFaces(out, shape)) return false;
    out.vertices.resize(shape.vertexCount);
    for (std::uint32_t i = 0; i < shape.vertexCount; ++i) {
        out.vertices[i] = GeometryObjectLib::ToVertex(shape.GetPosition(i));
    }
    return true;
}

void ReadNormals(std::vector<Vertex>& out, BRepView const& shape) {
    out.clear();
    out.reserve(shape.vertexCount);
    auto const [first, last] = VerticesOf<Schema::NormalVertex>(shape);
    for (auto const* v = first; v != last; ++v) out.push_back({v->nx(), v->ny(), v->nz()});
}

void ReadTextureCoordinates(std::vector<std::pair<float, float>>& out, BRepView const& shape) {
    out.clear();
    out.reserve(shape.vertexCount);
    auto const [first, last] = VerticesOf<Schema::UVVertex>(shape);
    for (auto const* v = first; v != last; ++v) out.emplace_back(v->u(), v->v());
}

}  // namespace Quorlan
