#include "BodyWriter.h"

#include <ifcpp/IFC4/include/IfcRepresentationItem.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace QuorlanProgram::Import {

namespace {

using Quorlan::AffineTransform;

constexpr std::size_t kVertexLimit = 65536;  ///< of a definition, whose indices have 16 bits

/// [m] Single precision resolves 0.06 mm here; shapes that reach farther from the origin of their item get an origin of
/// their own.
constexpr double kFarCoordinate = 1000;

constexpr auto kNoDefinition = static_cast<Quorlan::GeometryDefinitionIndex_t>(Quorlan::kInvalidIndex);

/// Moves a shape that lies far from the origin to it. RETURNS where it was, in whole metres.
Vertex MoveToOrigin(FacetedBRep& shape) {
    constexpr auto kMax = std::numeric_limits<double>::max();
    Vertex lo{kMax, kMax, kMax};
    Vertex hi{-kMax, -kMax, -kMax};
    for (auto const& v : shape.vertices) {
        lo = {std::min(lo.x, v.x), std::min(lo.y, v.y), std::min(lo.z, v.z)};
        hi = {std::max(hi.x, v.x), std::max(hi.y, v.y), std::max(hi.z, v.z)};
    }
    auto const reach = std::max({-lo.x, -lo.y, -lo.z, hi.x, hi.y, hi.z});
    if (!(reach > kFarCoordinate)) return {};
    Vertex const origin{std::round((lo.x + hi.x) / 2), std::round((lo.y + hi.y) / 2), std::round((lo.z + hi.z) / 2)};
    for (auto& v : shape.vertices) v = v - origin;
    return origin;
}

Matrix4 MakeTranslation(Vertex const& offset) {
    Matrix4 matrix;
    matrix(0, 3) = offset.x;
    matrix(1, 3) = offset.y;
    matrix(2, 3) = offset.z;
    return matrix;
}

/// The inverse of a rigid transform: the transposed rotation, and the translation turned back.
Matrix4 InvertRigid(Matrix4 const& matrix) {
    Matrix4 rotation;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) rotation(row, column) = matrix(column, row);
    }
    return rotation * MakeTranslation(-1.0 * matrix.GetColumn(3));
}

}  // namespace

std::size_t BodyWriter::Write(Quorlan::EntityIndex_t entity, Body const& body, std::vector<PlacedItem> const& openings,
                              std::optional<MaterialRecord> const& fallback, std::string const& defaultLayer) {
    std::vector<CutShape> cuts(body.items.size());
    if (!openings.empty()) {
        std::vector<PlacedItem> placed;
        for (auto const& item : body.items) placed.push_back(item.placed);
        cuts = geometry_.Cut(placed, openings);
    }
    missedCuts_ = 0;
    for (std::size_t i = 0; i < body.items.size(); ++i) {
        auto const& item = body.items[i];
        missedCuts_ += cuts[i].missedCuts;
        auto const material = GetMaterial(item.style ? item.style : fallback);
        auto const layer = GetLayer(item.layer.empty() ? defaultLayer : item.layer);
        if (cuts[i].isCut) {
            AddInstances(entity, AddShape(std::move(cuts[i].shape), false), {}, material, layer);
        } else if (IsRigid(item.placed.placement)) {
            AddInstances(entity, GetDefinitions(item.placed.item), item.placed.placement, material, layer);
        } else {
            auto converted = Convert(item.placed.item);
            Transform(converted.shape, item.placed.placement);
            AddInstances(entity, AddShape(std::move(converted.shape), converted.isAsModelled), {}, material, layer);
        }
    }
    return missedCuts_;
}

ConvertedShape BodyWriter::Convert(std::shared_ptr<IfcRepresentationItem> const& item) {
    auto converted = geometry_.Convert(item);
    if (converted.shape.faces.empty()) ++report_.unreadItems[item->className()];
    missedCuts_ += converted.missedCuts;
    return converted;
}

BodyWriter::Definitions const& BodyWriter::GetDefinitions(std::shared_ptr<IfcRepresentationItem> const& item) {
    auto const known = definitions_.find(item.get());
    if (known != definitions_.end()) return known->second;
    auto converted = Convert(item);
    return definitions_.emplace(item.get(), AddShape(std::move(converted.shape), converted.isAsModelled)).first->second;
}

BodyWriter::Definitions BodyWriter::AddShape(FacetedBRep shape, bool isAsModelled) {
    Definitions definitions;
    if (shape.faces.empty()) return definitions;
    ++(isAsModelled ? report_.modelledShapes : report_.joinedShapes);
    if (shape.vertices.size() > kVertexLimit) ++report_.splitShapes;
    for (auto& part : SplitShape(shape, kVertexLimit)) {
        definitions.push_back(AddPart(std::move(part)));
    }
    return definitions;
}

BodyWriter::Definition BodyWriter::AddPart(FacetedBRep part) {
    Vertex const origin = MoveToOrigin(part);
    AffineTransform toDefinition;
    auto const index = uniqueDefinitions_.Add(part, &toDefinition);
    ++report_.shapes;
    NoteDeviation(index, part, toDefinition.matrix);
    return {index, MakeTranslation(origin) * InvertRigid(toDefinition.matrix)};
}

void BodyWriter::NoteDeviation(Quorlan::GeometryDefinitionIndex_t index, FacetedBRep const& part,
                               Matrix4 const& toDefinition) {
    auto const number = static_cast<std::size_t>(index);
    if (number == writtenVertices_.size()) {
        auto& written = writtenVertices_.emplace_back();
        for (auto const& v : part.vertices) written.push_back(TransformPoint(toDefinition, v));
        ++report_.definitions;
    } else if (number < writtenVertices_.size()) {
        auto const& written = writtenVertices_[number];
        for (std::size_t i = 0; i < written.size(); ++i) {
            double const deviation = Length(TransformPoint(toDefinition, part.vertices[i]) - written[i]);
            report_.largestDeviation = std::max(report_.largestDeviation, deviation);
        }
    }
}

void BodyWriter::AddInstances(Quorlan::EntityIndex_t entity, Definitions const& definitions, Matrix4 const& placement,
                              std::uint32_t material, std::uint32_t layer) {
    for (auto const& definition : definitions) {
        if (definition.index == kNoDefinition) continue;
        auto const placed = AffineTransform::FromMatrix(placement * definition.placement);
        builder_.GetInstanceWriter().AddInstance(entity, definition.index, material, layer, placed);
        ++report_.instances;
    }
}

std::uint32_t BodyWriter::GetMaterial(std::optional<MaterialRecord> const& style) {
    if (!style) return Quorlan::kInvalidIndex;
    auto const& c = style->color;
    std::array<std::uint8_t, 5> const key{c[0], c[1], c[2], c[3], static_cast<std::uint8_t>(style->twoSided)};
    auto const known = materials_.find(key);
    if (known != materials_.end()) return known->second;
    ++report_.materials;
    return materials_[key] = builder_.GetMaterialWriter().AddMaterial(*style);
}

std::uint32_t BodyWriter::GetLayer(std::string const& name) {
    if (name.empty()) return Quorlan::kInvalidIndex;
    auto const known = layers_.find(name);
    if (known != layers_.end()) return known->second;
    ++report_.layers;
    return layers_[name] = builder_.GetLayerWriter().AddLayer(name);
}

}  // namespace QuorlanProgram::Import
