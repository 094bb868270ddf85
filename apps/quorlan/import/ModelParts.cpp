#include "ModelParts.h"

#include <Tools/Identifiers.h>

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

}  // namespace

void ModelParts::BeginFile(ImportReport& report) {
    report_ = &report;
    repeated_.clear();
    earlierDefinitions_ = writtenVertices_.size();
}

void ModelParts::NoteIdentifier(std::string const& identifier) {
    ++report_->entities;
    auto const isRepeated = !identifiers_.insert(identifier).second;
    if (isRepeated && repeated_.insert(identifier).second) report_->duplicateGuids.push_back(identifier);
}

Quorlan::EntityIndex_t ModelParts::AddEntity(std::string const& guid, std::wstring const& name, Matrix4 const& world) {
    NoteIdentifier(guid);
    auto const placement = AffineTransform::FromMatrix(world);
    _GUID binary{};
    if (Quorlan::Tools::IfcGuidToGuid(guid, binary)) {
        return builder_.GetEntityWriter().AddEntity(binary, name, placement);
    }
    report_->invalidGuids.push_back(guid);
    return builder_.GetEntityWriter().AddEntityWithIdentifierText(guid, name, placement);
}

Quorlan::EntityIndex_t ModelParts::AddNamedEntity(std::string const& identifier, std::wstring const& name,
                                                  Matrix4 const& world) {
    NoteIdentifier(identifier);
    return builder_.GetEntityWriter().AddEntityWithIdentifierText(identifier, name, AffineTransform::FromMatrix(world));
}

ModelParts::Definitions ModelParts::AddShape(FacetedBRep const& shape) {
    Definitions definitions;
    if (shape.faces.empty()) return definitions;
    if (shape.vertices.size() > kVertexLimit) ++report_->splitShapes;
    for (auto& part : SplitShape(shape, kVertexLimit)) definitions.push_back(AddPart(std::move(part)));
    return definitions;
}

ModelParts::Definition ModelParts::AddPart(FacetedBRep part) {
    Vertex const origin = MoveToOrigin(part);
    AffineTransform toDefinition;
    auto const index = uniqueDefinitions_.Add(part, &toDefinition);
    ++report_->shapes;
    NoteDeviation(index, part, toDefinition.matrix);
    return {index, MakeTranslation(origin) * InvertRigid(toDefinition.matrix)};
}

ModelParts::Definitions ModelParts::AddGraphics(Quorlan::GraphicsContainer const& graphics) {
    if (graphics.lines.empty() && graphics.arcs.empty()) return {};
    AffineTransform toDefinition;
    auto const index = uniqueDefinitions_.Add(graphics, &toDefinition);
    ++report_->curveSets;
    if (static_cast<std::size_t>(index) == writtenVertices_.size()) {
        writtenVertices_.emplace_back();
        ++report_->definitions;
    }
    return {{index, InvertRigid(toDefinition.matrix)}};
}

void ModelParts::NoteDeviation(Quorlan::GeometryDefinitionIndex_t index, FacetedBRep const& part,
                               Matrix4 const& toDefinition) {
    auto const number = static_cast<std::size_t>(index);
    if (number == writtenVertices_.size()) {
        auto& written = writtenVertices_.emplace_back();
        written.reserve(part.vertices.size());
        for (auto const& v : part.vertices) written.push_back(TransformPoint(toDefinition, v));
        ++report_->definitions;
    } else if (number < writtenVertices_.size()) {
        if (number < earlierDefinitions_) ++report_->shapesOfEarlierFiles;
        auto const& written = writtenVertices_[number];
        for (std::size_t i = 0; i < written.size(); ++i) {
            double const deviation = Length(TransformPoint(toDefinition, part.vertices[i]) - written[i]);
            report_->largestDeviation = std::max(report_->largestDeviation, deviation);
        }
    }
}

void ModelParts::AddInstances(Quorlan::EntityIndex_t entity, Definitions const& definitions, Matrix4 const& placement,
                              std::optional<MaterialRecord> const& material, std::string const& layer) {
    if (definitions.empty()) return;
    auto const materialIndex = GetMaterial(material);
    auto const layerIndex = GetLayer(layer);
    for (auto const& definition : definitions) {
        if (definition.index == kNoDefinition) continue;
        auto const placed = AffineTransform::FromMatrix(placement * definition.placement);
        builder_.GetInstanceWriter().AddInstance(entity, definition.index, materialIndex, layerIndex, placed);
        ++report_->instances;
    }
}

std::uint32_t ModelParts::GetMaterial(std::optional<MaterialRecord> const& style) {
    if (!style) return Quorlan::kInvalidIndex;
    auto const& c = style->color;
    std::array<std::uint8_t, 5> const key{c[0], c[1], c[2], c[3], static_cast<std::uint8_t>(style->twoSided)};
    auto const known = materials_.find(key);
    if (known != materials_.end()) return known->second;
    ++report_->materials;
    return materials_[key] = builder_.GetMaterialWriter().AddMaterial(*style);
}

std::uint32_t ModelParts::GetLayer(std::string const& name) {
    if (name.empty()) return Quorlan::kInvalidIndex;
    auto const known = layers_.find(name);
    if (known != layers_.end()) return known->second;
    ++report_->layers;
    return layers_[name] = builder_.GetLayerWriter().AddLayer(name);
}

}  // namespace QuorlanProgram::Import
