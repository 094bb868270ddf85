#pragma once

#include "model/ShapeStore.h"

#include <Quorlan/ModelBuilder.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// The writers of a model builder. Each collects its part of the model in the form in which the buffer holds it.
namespace Quorlan {

class EntityWriter final : public IEntityWriter {
public:
    EntityIndex_t AddEntity(_GUID const& guid, std::wstring const& text, AffineTransform const& placement) override;
    EntityIndex_t AddEntityAt(_GUID const& guid, std::wstring const& text, PlacementRecord const& placement) override;
    EntityIndex_t AddEntityWithIdentifierText(std::string const& identifier, std::wstring const& text,
                                              AffineTransform const& placement) override;
    EntityIndex_t AddEntityWithGeometricKey(GeometricKey const& key, std::wstring const& text,
                                            AffineTransform const& placement) override;
    EntityIndex_t AddEntityWithoutIdentifier(std::wstring const& text, AffineTransform const& placement) override;

    std::vector<Schema::EntityRecord> records;
    std::vector<Schema::Guid> guids;
    std::vector<std::string> texts;
    std::vector<std::string> identifierTexts;
    std::vector<Schema::GeometricKey> geometricKeys;

private:
    EntityIndex_t AddRecord(std::uint32_t kind, std::size_t reference, std::wstring const& text,
                            Schema::Placement const& placement);
};

class MaterialWriter final : public IMaterialWriter {
public:
    std::uint32_t AddMaterial(MaterialRecord const& material) override;

    std::vector<Schema::Material> materials;
};

class LayerWriter final : public ILayerWriter {
public:
    std::uint32_t AddLayer(std::string const& utf8Name) override;

    std::vector<std::string> names;
};

class TextureWriter final : public ITextureWriter {
public:
    std::uint32_t AddTexture(TextureType type, std::vector<char> const& data) override;

    std::vector<std::pair<TextureType, std::vector<char>>> textures;
};

class DefinitionWriter final : public IGeometryDefinitionBuilder {
public:
    GeometryDefinitionIndex_t AddBRepWithNormals(
        std::pair<FacetedBRep const*, std::vector<Vertex> const*> shape) override;
    GeometryDefinitionIndex_t AddBRepWithUVs(
        std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*> shape) override;
    GeometryDefinitionIndex_t AddGraphicsContainer(GraphicsContainer const& graphics) override;
    GeometryDefinitionIndex_t AddBRep(FacetedBRep const& shape) override;

    /// The segments and the arcs of one container.
    struct StoredGraphics {
        StoredRun segments;
        StoredRun arcs;
    };

    std::vector<Schema::GeometryDefinitionInfo> definitions;
    ShapeStore<0> breps;
    ShapeStore<2> brepsWithUV;
    ShapeStore<3> brepsWithNormal;
    std::vector<StoredGraphics> graphics;
    std::vector<Schema::LineSegment> segments;
    std::vector<Schema::ArcSegment> arcs;

private:
    GeometryDefinitionIndex_t AddDefinition(DefinitionKind kind, std::size_t kindIndex, Schema::Vector3 const& min,
                                            Schema::Vector3 const& max);
};

class InstanceWriter final : public IInstanceWriter {
public:
    InstanceWriter(EntityWriter const& entities, DefinitionWriter const& definitions)
        : entities_(entities), definitions_(definitions) {}

    void AddInstance(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                     std::uint32_t layer, AffineTransform const& placement) override;
    void AddInstanceAt(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                       std::uint32_t layer, PlacementRecord const& placement) override;

    /// Placement i belongs to instance i.
    std::vector<Schema::Instance> instances;
    std::vector<Schema::Placement> placements;

private:
    void Add(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material, std::uint32_t layer,
             Schema::Placement const& placement);

    EntityWriter const& entities_;
    DefinitionWriter const& definitions_;
};

class OwnerHistoryWriter final : public IOwnerHistoryWriter {
public:
    std::uint32_t AddOwnerPart(OwnerPart const& part) override;
    std::uint32_t AddOwnerHistoryRecord(OwnerHistoryRecord const& record) override;
    std::uint32_t AddOwnerHistory(std::uint32_t part, std::uint32_t record,
                                  OwnerHistoryLinkRecord const& link) override;
    void LinkOwnerHistory(EntityIndex_t entity, std::uint32_t ownerHistory) override;

    struct StoredHistory {
        std::uint32_t part;
        std::uint32_t record;
        OwnerHistoryLinkRecord link;
    };

    std::vector<OwnerPart> parts;
    std::vector<Schema::OwnerHistoryRecord> records;
    std::vector<StoredHistory> histories;
    std::vector<Schema::OwnerHistoryLink> links;
};

/// Texts recur in nearly every entity (set names, property names), so each distinct one is stored once.
class PropertyWriter final : public IPropertyWriter {
public:
    void AddProperty(EntityIndex_t entity, PropertyRecord const& property) override;

    std::vector<Schema::PropertyEntry> entries;
    std::vector<std::string> strings;

private:
    std::uint32_t AddString(std::string const& text);

    std::unordered_map<std::string, std::uint32_t> stringIndices_;
};

}  // namespace Quorlan
