#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include "mesh/GeometryMatcher.h"
#include "mesh/GraphicsSkeleton.h"

#include <GeometryObjectLib/AxisAlignedBox3.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::Length;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::TransformDirection;

using UV_t = std::pair<float, float>;

constexpr double kPositionTolerance = 1e-5;          ///< [model units]
constexpr double kTexturedPositionTolerance = 1e-7;  ///< [model units]
constexpr double kNormalTolerance = 1e-5;            ///< [-] length of the difference of two unit normals
constexpr float kTextureTolerance = 1e-5f;           ///< [texture widths]
constexpr double kAxisTolerance = 1e-5;              ///< [-] smaller turns of an axis count as none
constexpr double kTranslationTolerance = 1e-5;       ///< [model units] shorter moves count as none
constexpr double kLargestRelativeDistance = 100.0;   ///< [box diagonals] farther shapes are re-centred

constexpr std::size_t kSmallestVertexCount = 3;
constexpr auto kInvalidDefinition = static_cast<GeometryDefinitionIndex_t>(kInvalidIndex);

/// The centre of the vertices' box if it lies far from the origin, measured in diagonals of the box.
std::optional<Vertex> FindFarCenter(std::vector<Vertex> const& vertices) {
    Vertex lo = vertices[0];
    Vertex hi = vertices[0];
    for (Vertex const& v : vertices) {
        lo = {std::min(lo.x, v.x), std::min(lo.y, v.y), std::min(lo.z, v.z)};
        hi = {std::max(hi.x, v.x), std::max(hi.y, v.y), std::max(hi.z, v.z)};
    }
    Vertex const center = AxisAlignedBox3::FromCorners(lo, hi).center;
    if (Length(center) / Length(hi - lo) > kLargestRelativeDistance) return center;
    return std::nullopt;
}

/// `transform` applied after a move by -center.
AffineTransform AfterMovingToOrigin(AffineTransform const& transform, Vertex const& center) {
    Matrix4 move;
    move(0, 3) = -center.x;
    move(1, 3) = -center.y;
    move(2, 3) = -center.z;
    return AffineTransform::FromMatrix(transform.matrix * move);
}

/// The rotation of `transform` is applied to the stored normal although `transform` leads the other way, from the given
/// shape to the stored one. Definitions that were written by this rule stay comparable only if it is kept.
bool HasSameNormals(std::vector<Vertex> const& given, std::vector<Vertex> const& stored,
                    AffineTransform const& transform) {
    for (std::size_t i = 0; i < stored.size(); ++i) {
        Vertex const difference = given[i] - TransformDirection(transform.matrix, stored[i]);
        if (!(Length(difference) <= kNormalTolerance)) return false;
    }
    return true;
}

bool HasSameUVs(std::vector<UV_t> const& given, std::vector<UV_t> const& stored) {
    return std::equal(given.begin(), given.end(), stored.begin(), [](UV_t const& a, UV_t const& b) {
        return std::abs(a.first - b.first) <= kTextureTolerance && std::abs(a.second - b.second) <= kTextureTolerance;
    });
}

/// Whether `stored` holds what belongs to a known key, or ends where a new key begins. It does unless an allocation
/// failed between a matcher's answer and the storing of what belongs to it.
template <class Stored>
bool HasRoomFor(std::uint64_t key, bool isKnown, std::vector<Stored> const& stored) {
    return isKnown ? key < stored.size() : key == stored.size();
}

/// The definitions of a matcher's shapes, by key.
class DefinitionsByKey {
public:
    /// Keys come in ascending order; a key that is present keeps its index.
    void Record(std::uint64_t key, GeometryDefinitionIndex_t index) {
        if (key < indices_.size()) return;
        indices_.resize(key, kInvalidDefinition);
        indices_.push_back(index);
    }

    /// Invalid for a shape that the target did not accept.
    GeometryDefinitionIndex_t Get(std::uint64_t key) const {
        return key < indices_.size() ? indices_[key] : kInvalidDefinition;
    }

private:
    std::vector<GeometryDefinitionIndex_t> indices_;
};

}  // namespace

struct UniqueGeometryDefinitionBuilder::State {
    explicit State(IGeometryDefinitionBuilder& definitionTarget) : target(definitionTarget) {}

    QUORLAN_TOOLS_LOCAL GeometryDefinitionIndex_t AddPlain(std::vector<Vertex> const& vertices,
                                                           FacetedBRep const& shape, AffineTransform& transform);
    QUORLAN_TOOLS_LOCAL void Classify(AffineTransform const& transform);

    IGeometryDefinitionBuilder& target;

    GeometryMatcher shapeMatcher{kPositionTolerance};
    GeometryMatcher normalMatcher{kPositionTolerance};
    GeometryMatcher uvMatcher{kTexturedPositionTolerance};
    GeometryMatcher graphicsMatcher{kPositionTolerance};
    DefinitionsByKey shapeDefinitions;
    DefinitionsByKey normalDefinitions;
    DefinitionsByKey uvDefinitions;
    DefinitionsByKey graphicsDefinitions;
    std::vector<std::vector<Vertex>> storedNormals;  ///< by key
    std::vector<std::vector<UV_t>> storedUVs;        ///< by key

    std::uint32_t transformedCount = 0;
    std::uint32_t translatedCount = 0;
    std::uint32_t identicalCount = 0;

    std::vector<Vertex> centeredVertices;  ///< of the shape at hand; kept for its storage
    FacetedBRep skeleton;                  ///< of the graphics at hand; kept for its storage
};

UniqueGeometryDefinitionBuilder::UniqueGeometryDefinitionBuilder(IGeometryDefinitionBuilder& target)
    : state_(std::make_unique<State>(target)) {}

UniqueGeometryDefinitionBuilder::~UniqueGeometryDefinitionBuilder() = default;

std::uint32_t UniqueGeometryDefinitionBuilder::GetTransformedCount() const { return state_->transformedCount; }
std::uint32_t UniqueGeometryDefinitionBuilder::GetTranslatedCount() const { return state_->translatedCount; }
std::uint32_t UniqueGeometryDefinitionBuilder::GetIdenticalCount() const { return state_->identicalCount; }

void UniqueGeometryDefinitionBuilder::State::Classify(AffineTransform const& transform) {
    Matrix4 const& matrix = transform.matrix;
    bool const rotates = Length(matrix.GetColumn(0) - Vertex{1, 0, 0}) > kAxisTolerance ||
                         Length(matrix.GetColumn(1) - Vertex{0, 1, 0}) > kAxisTolerance ||
                         Length(matrix.GetColumn(2) - Vertex{0, 0, 1}) > kAxisTolerance;
    if (rotates) {
        ++transformedCount;
    } else if (Length(matrix.GetColumn(3)) > kTranslationTolerance) {
        ++translatedCount;
    } else {
        ++identicalCount;
    }
}

GeometryDefinitionIndex_t UniqueGeometryDefinitionBuilder::State::AddPlain(std::vector<Vertex> const& vertices,
                                                                           FacetedBRep const& shape,
                                                                           AffineTransform& transform) {
    std::uint64_t key = 0;
    if (shapeMatcher.Query(vertices, shape, key, transform)) {
        Classify(transform);
        return shapeDefinitions.Get(key);
    }
    auto const index = &vertices == &shape.vertices ? target.AddBRep(shape)
                                                    : target.AddBRep(FacetedBRep{vertices, shape.faces, shape.holes});
    shapeDefinitions.Record(key, index);
    return index;
}

GeometryDefinitionIndex_t UniqueGeometryDefinitionBuilder::Add(FacetedBRep const& shape, AffineTransform* transform) {
    if (shape.vertices.size() < kSmallestVertexCount) return kInvalidDefinition;
    auto const center = FindFarCenter(shape.vertices);
    if (!center) return state_->AddPlain(shape.vertices, shape, *transform);

    auto& centered = state_->centeredVertices;
    centered.clear();
    for (Vertex const& v : shape.vertices) centered.push_back(v - *center);
    AffineTransform fromCentered;
    auto const index = state_->AddPlain(centered, shape, fromCentered);
    *transform = AfterMovingToOrigin(fromCentered, *center);
    return index;
}

GeometryDefinitionIndex_t UniqueGeometryDefinitionBuilder::Add(
    std::pair<FacetedBRep, std::vector<Vertex>> const& shapeWithNormals, AffineTransform* transform) {
    auto const& [shape, normals] = shapeWithNormals;
    if (shape.vertices.size() < kSmallestVertexCount || normals.size() != shape.vertices.size()) {
        return kInvalidDefinition;
    }
    std::uint64_t key = 0;
    bool const isKnown = state_->normalMatcher.Query(shape, key, *transform);
    if (!HasRoomFor(key, isKnown, state_->storedNormals)) return kInvalidDefinition;
    if (isKnown && HasSameNormals(normals, state_->storedNormals[key], *transform)) {
        state_->Classify(*transform);
        return state_->normalDefinitions.Get(key);
    }
    *transform = AffineTransform();
    if (!isKnown) state_->storedNormals.push_back(normals);
    auto const index = state_->target.AddBRepWithNormals({&shape, &normals});
    if (!isKnown) state_->normalDefinitions.Record(key, index);
    return index;
}

GeometryDefinitionIndex_t UniqueGeometryDefinitionBuilder::Add(
    std::pair<FacetedBRep, std::vector<UV_t>> const& shapeWithUVs, AffineTransform* transform) {
    auto const& [shape, uvs] = shapeWithUVs;
    if (shape.vertices.size() < kSmallestVertexCount || uvs.size() != shape.vertices.size()) return kInvalidDefinition;

    std::uint64_t key = 0;
    bool const isKnown = state_->uvMatcher.Query(shape, key, *transform);
    if (!HasRoomFor(key, isKnown, state_->storedUVs)) return kInvalidDefinition;
    if (isKnown && HasSameUVs(uvs, state_->storedUVs[key])) {
        state_->Classify(*transform);
        return state_->uvDefinitions.Get(key);
    }
    *transform = AffineTransform();
    if (!isKnown) state_->storedUVs.push_back(uvs);
    auto const index = state_->target.AddBRepWithUVs({&shape, &uvs});
    if (!isKnown) state_->uvDefinitions.Record(key, index);
    return index;
}

GeometryDefinitionIndex_t UniqueGeometryDefinitionBuilder::Add(GeometryObjectLib::GraphicsContainer const& graphics,
                                                               AffineTransform* transform) {
    if (graphics.lines.empty() && graphics.arcs.empty()) return kInvalidDefinition;
    MakeSkeleton(graphics, state_->skeleton);
    std::uint64_t key = 0;
    if (state_->graphicsMatcher.Query(state_->skeleton, key, *transform)) {
        state_->Classify(*transform);
        return state_->graphicsDefinitions.Get(key);
    }
    auto const index = state_->target.AddGraphicsContainer(graphics);
    state_->graphicsDefinitions.Record(key, index);
    return index;
}

}  // namespace Quorlan::Tools
