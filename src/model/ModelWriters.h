#pragma once

#include "model/LargePages.h"
#include "model/ShapeBlock.h"
#include "model/TextPool.h"

#include <Quorlan/ModelBuilder.h>

#include <optional>
#include <string>
#include <string_view>
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

    /// An entity of kind 0 as a buffer holds it; no text if it is empty.
    EntityIndex_t AddStored(Schema::Guid const& guid, std::string_view utf8Text, Schema::Placement const& placement);

    LargeVector<Schema::EntityRecord> records;
    LargeVector<Schema::Guid> guids;
    TextPool texts;
    TextPool identifierTexts;
    std::vector<Schema::GeometricKey> geometricKeys;

private:
    EntityIndex_t AddRecord(std::uint32_t kind, std::size_t reference, std::string_view utf8Text,
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

    TextPool names;
};

class TextureWriter final : public ITextureWriter {
public:
    std::uint32_t AddTexture(TextureType type, std::vector<char> const& data) override;

    std::vector<std::pair<TextureType, std::vector<char>>> textures;
};

/// A faceted BRep that is to be written: in the writer's own bytes, or in a model buffer that outlives the writer.
struct StoredShape {
    void const* borrowed = nullptr;  ///< the table
    std::uint32_t position = 0;      ///< of the table in the writer's bytes, where none is borrowed
    bool isRun = true;               ///< stands as one run of bytes, as all of the writer's own do
    ShapeCounts counts;
};

/// The run of elements of one container.
struct StoredRun {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// The three kinds of faceted BReps, in the order of their vectors in the buffer.
enum class BRepKind : std::uint8_t { kPlain, kWithUV, kWithNormal };

/// [bytes] From one vertex to the next.
constexpr std::size_t StrideOf(BRepKind kind) {
    switch (kind) {
        case BRepKind::kWithUV: return sizeof(Schema::UVVertex);
        case BRepKind::kWithNormal: return sizeof(Schema::NormalVertex);
        default: return sizeof(Schema::PositionVertex);
    }
}

/// The BRep of a table.
BRepView MakeView(BRepKind kind, void const* table);

class DefinitionWriter final : public IGeometryDefinitionBuilder {
public:
    DefinitionWriter() { bytes_.Align(4, 0); }

    GeometryDefinitionIndex_t AddBRepWithNormals(
        std::pair<FacetedBRep const*, std::vector<Vertex> const*> shape) override;
    GeometryDefinitionIndex_t AddBRepWithUVs(
        std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*> shape) override;
    GeometryDefinitionIndex_t AddGraphicsContainer(GraphicsContainer const& graphics) override;
    GeometryDefinitionIndex_t AddBRep(FacetedBRep const& shape) override;

    /// A BRep's table as a buffer holds it, with its counts and bounds; as one run of bytes if `isRun`.
    /// REQUIRES: it has at most 65,536 vertices, its indices are in range and its holes in the order of their faces.
    GeometryDefinitionIndex_t AddStored(BRepKind kind, void const* table, ShapeCounts const& counts, bool isRun,
                                        Schema::Vector3 const& min, Schema::Vector3 const& max);

    /// From now on the bytes of what `AddStored` is given outlive the writer, which does not copy them.
    void BorrowStored() { isBorrowing_ = true; }

    /// Makes room for this many more shapes of a kind.
    void Reserve(BRepKind kind, std::size_t count);

    /// The BRep of a definition that this writer holds; empty for line graphics.
    std::optional<BRepView> FindShape(GeometryDefinitionIndex_t definition) const;
    BRepView GetShape(BRepKind kind, std::size_t index) const {
        return MakeView(kind, GetTable(GetShapes(kind)[index]));
    }

    /// Appends a shape to a buffer with these layouts.
    void WriteShape(BufferSink& sink, ShapeLayouts const& layouts, BRepKind kind, std::size_t index) const;

    LargeVector<StoredShape> const& GetShapes(BRepKind kind) const { return shapes_[static_cast<std::size_t>(kind)]; }

    /// The segments and the arcs of one container.
    struct StoredGraphics {
        StoredRun segments;
        StoredRun arcs;
    };

    LargeVector<Schema::GeometryDefinitionInfo> definitions;
    std::vector<StoredGraphics> graphics;
    std::vector<Schema::LineSegment> segments;
    std::vector<Schema::ArcSegment> arcs;

private:
    /// Writes a shape, whose attributes of vertex i `writeAttributes(i, out)` fills.
    template <class WriteAttributes>
    GeometryDefinitionIndex_t AddShape(BRepKind kind, FacetedBRep const& shape, WriteAttributes const& writeAttributes);

    GeometryDefinitionIndex_t AddDefinition(DefinitionKind kind, std::size_t kindIndex, Schema::Vector3 const& min,
                                            Schema::Vector3 const& max);

    void const* GetTable(StoredShape const& shape) const {
        return shape.borrowed != nullptr ? shape.borrowed : bytes_.At(shape.position);
    }

    BufferSink bytes_{0};
    ShapeLayouts layouts_{bytes_};
    bool isBorrowing_ = false;
    LargeVector<StoredShape> shapes_[3];
};

class InstanceWriter final : public IInstanceWriter {
public:
    InstanceWriter(EntityWriter const& entities, DefinitionWriter const& definitions)
        : entities_(entities), definitions_(definitions) {}

    void AddInstance(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                     std::uint32_t layer, AffineTransform const& placement) override;
    void AddInstanceAt(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                       std::uint32_t layer, PlacementRecord const& placement) override;

    /// The same with a placement as a buffer holds it.
    void Add(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material, std::uint32_t layer,
             Schema::Placement const& placement);

    /// Placement i belongs to instance i.
    LargeVector<Schema::Instance> instances;
    LargeVector<Schema::Placement> placements;

private:
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

    /// [bytes] Longer texts are written each time: what a buffer shares stays small beside what shares it.
    static constexpr std::size_t kLongestSharedText = 256;

    static bool IsShared(std::string_view text) { return text.size() <= kLongestSharedText; }
    std::uint32_t AddText(std::string_view text) { return IsShared(text) ? texts.Add(text) : texts.AddApart(text); }

    /// An owner history whose texts are in `texts`.
    std::uint32_t Add(std::uint32_t part, std::uint32_t record, std::uint32_t user, std::uint32_t application) {
        histories.push_back({part, record, user, application});
        return static_cast<std::uint32_t>(histories.size() - 1);
    }

    struct StoredPart {
        std::uint32_t user;  ///< into `texts`, as the other texts
        std::uint32_t organization;
        std::uint32_t application;
    };

    struct StoredHistory {
        std::uint32_t part;
        std::uint32_t record;
        std::uint32_t lastModifyingUser;
        std::uint32_t lastModifyingApplication;
    };

    std::vector<StoredPart> parts;
    LargeVector<Schema::OwnerHistoryRecord> records;
    LargeVector<StoredHistory> histories;
    LargeVector<Schema::OwnerHistoryLink> links;
    UniqueTexts texts;
};

/// Texts recur in nearly every entity (set names, property names), so each distinct one is stored once.
class PropertyWriter final : public IPropertyWriter {
public:
    void AddProperty(EntityIndex_t entity, PropertyRecord const& property) override;

    LargeVector<Schema::PropertyEntry> entries;
    UniqueTexts strings;
};

}  // namespace Quorlan
