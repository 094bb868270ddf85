#include "diff/ShapeStore.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;

constexpr std::uint32_t kGraphics = 5;
constexpr std::uint32_t kWithUVs = 6;
constexpr std::uint32_t kWithNormals = 7;
constexpr std::size_t kMinVertices = 3;

void AppendLoop(std::vector<std::uint32_t>& structure, std::vector<std::uint32_t> const& loop) {
    structure.push_back(static_cast<std::uint32_t>(loop.size()));
    structure.insert(structure.end(), loop.begin(), loop.end());
}

void ReadFaces(PlainShape& out, GeometryObjectLib::FacetedBRep shape) {
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        AppendLoop(out.structure, shape.faces[face]);
        auto const holes = shape.GetInnerLoopCount(face);
        out.structure.push_back(static_cast<std::uint32_t>(holes));
        for (std::size_t i = 0; i < holes; ++i) AppendLoop(out.structure, shape.GetInnerLoop(face, i));
    }
    out.points = std::move(shape.vertices);
}

void ReadGraphics(PlainShape& out, GeometryObjectLib::GraphicsContainer const& graphics) {
    for (auto const& line : graphics.lines) out.points.insert(out.points.end(), {line.start, line.end});
    for (auto const& arc : graphics.arcs) {
        out.points.insert(out.points.end(), {arc.center, arc.center + arc.radius * arc.startDirection,
                                             arc.center + arc.radius * arc.axis});
        out.scalars.push_back(arc.sweepAngle);
    }
    out.structure = {static_cast<std::uint32_t>(graphics.lines.size()),
                     static_cast<std::uint32_t>(graphics.arcs.size())};
}

double DiagonalOf(std::vector<Vertex> const& points) {
    if (points.empty()) return 0;
    auto lo = points.front(), hi = points.front();
    for (auto const& p : points) {
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
    }
    return std::hypot(hi.x - lo.x, hi.y - lo.y, hi.z - lo.z);
}

template <typename T>
void AddToHash(std::uint64_t& hash, std::vector<T> const& values) {
    constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15;
    hash = (hash ^ values.size()) * kPrime;
    auto const* const words = reinterpret_cast<unsigned char const*>(values.data());
    for (std::size_t i = 0; i + 4 <= values.size() * sizeof(T); i += 4) {
        std::uint32_t word;
        std::memcpy(&word, words + i, 4);
        hash = (hash ^ word) * kPrime;
        hash ^= hash >> 29;
    }
}

std::uint64_t HashOf(PlainShape const& shape) {
    std::uint64_t hash = shape.kind;
    AddToHash(hash, shape.points);
    AddToHash(hash, shape.directions);
    AddToHash(hash, shape.scalars);
    AddToHash(hash, shape.structure);
    return hash;
}

template <typename T>
bool AreSameBits(std::vector<T> const& a, std::vector<T> const& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

bool AreSameBits(PlainShape const& a, PlainShape const& b) {
    return a.kind == b.kind && AreSameBits(a.points, b.points) && AreSameBits(a.directions, b.directions) &&
           AreSameBits(a.scalars, b.scalars) && AreSameBits(a.structure, b.structure);
}

}  // namespace

PlainShape ReadShape(Quorlan::IGeometryReader const& geometry, std::uint32_t definition) {
    PlainShape out;
    out.kind = geometry.GetDefinitionKind(definition);
    if (out.kind == kGraphics) {
        GeometryObjectLib::GraphicsContainer graphics;
        if (geometry.GetGraphicsContainer(graphics, definition)) ReadGraphics(out, graphics);
    } else {
        GeometryObjectLib::FacetedBRep shape;
        if (geometry.GetFacetedBRep(shape, definition)) ReadFaces(out, std::move(shape));
    }
    if (out.kind == kWithNormals) geometry.GetVertexNormals(out.directions, definition);
    if (out.kind == kWithUVs) {
        std::vector<std::pair<float, float>> pairs;
        geometry.GetTextureCoordinates(pairs, definition);
        for (auto const& [u, v] : pairs) out.scalars.insert(out.scalars.end(), {u, v});
    }
    out.size = DiagonalOf(out.points);
    return out;
}

std::uint32_t ShapeStore::AddShape(PlainShape shape) {
    if (shape.points.empty() || (shape.kind != kGraphics && shape.points.size() < kMinVertices)) return kNoShape;
    auto const hash = HashOf(shape);
    auto const [begin, end] = shapesByHash_.equal_range(hash);
    for (auto entry = begin; entry != end; ++entry) {
        if (AreSameBits(shapes_[entry->second], shape)) return entry->second;
    }
    auto const index = static_cast<std::uint32_t>(shapes_.size());
    shapesByHash_.emplace(hash, index);
    shapes_.push_back(std::move(shape));
    return index;
}

std::vector<std::uint32_t> ShapeStore::AddShapes(Quorlan::IGeometryReader const& geometry) {
    std::vector<std::uint32_t> numbers(geometry.GetDefinitionCount());
    for (std::uint32_t i = 0; i < numbers.size(); ++i) numbers[i] = AddShape(ReadShape(geometry, i));
    return numbers;
}

std::vector<std::uint32_t> ShapeStore::AddMaterials(Quorlan::IGeometryReader const& geometry) {
    std::vector<std::int32_t> textures(geometry.GetTextureCount());
    Quorlan::Texture texture;
    for (std::uint32_t i = 0; i < textures.size(); ++i) {
        geometry.GetTexture(texture, i);
        auto const number = static_cast<std::int32_t>(textureIndex_.size());
        textures[i] =
            textureIndex_.try_emplace({static_cast<std::uint32_t>(texture.getType()), texture.getData()}, number)
                .first->second;
    }
    std::vector<std::uint32_t> numbers(geometry.GetMaterialCount());
    Quorlan::MaterialRecord material;
    for (std::uint32_t i = 0; i < numbers.size(); ++i) {
        geometry.GetMaterial(material, i);
        bool const hasTexture =
            material.textureIndex >= 0 && static_cast<std::size_t>(material.textureIndex) < textures.size();
        material.textureIndex = hasTexture ? textures[static_cast<std::size_t>(material.textureIndex)] : -1;
        auto const [entry, isNew] = materialIndex_.try_emplace(
            {material.color, material.textureIndex, material.twoSided}, static_cast<std::uint32_t>(materials_.size()));
        if (isNew) materials_.push_back(material);
        numbers[i] = entry->second;
    }
    return numbers;
}

}  // namespace QuorlanProgram
