#pragma once

#include <Quorlan/Guid.h>
#include <Quorlan/IGeometryDefinitionBuilder.h>
#include <Quorlan/ModelTypes.h>
#include <Tools/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Quorlan {

/// Writes entities. `text` is the entity's wide text, its name; a placement must be rigid.
class QUORLAN_TOOLS_API IEntityWriter {
public:
    virtual ~IEntityWriter() = default;

    /// An entity without an identifier of its own (kind 4).
    virtual EntityIndex_t AddEntityWithoutIdentifier(std::wstring const& text, AffineTransform const& placement) = 0;

    /// An entity that a GUID identifies (kind 0).
    virtual EntityIndex_t AddEntity(_GUID const& guid, std::wstring const& text, AffineTransform const& placement) = 0;

    /// The same with a placement as it was read, so that it is stored without rounding again. DEFAULT: `AddEntity`.
    virtual EntityIndex_t AddEntityAt(_GUID const& guid, std::wstring const& text, PlacementRecord const& placement);

    /// An entity that a UTF-8 text identifies (kind 1).
    virtual EntityIndex_t AddEntityWithIdentifierText(std::string const& identifier, std::wstring const& text,
                                                      AffineTransform const& placement) = 0;

    /// An entity that its position and shape identify (kind 2).
    virtual EntityIndex_t AddEntityWithGeometricKey(GeometricKey const& key, std::wstring const& text,
                                                    AffineTransform const& placement) = 0;
};

class QUORLAN_TOOLS_API IMaterialWriter {
public:
    virtual ~IMaterialWriter() = default;
    virtual std::uint32_t AddMaterial(MaterialRecord const& material) = 0;
};

class QUORLAN_TOOLS_API ILayerWriter {
public:
    virtual ~ILayerWriter() = default;
    virtual std::uint32_t AddLayer(std::string const& utf8Name) = 0;
};

class QUORLAN_TOOLS_API ITextureWriter {
public:
    virtual ~ITextureWriter() = default;
    virtual std::uint32_t AddTexture(TextureType type, std::vector<char> const& data) = 0;
};

/// Writes instances. `material` and `layer` may be `kInvalidIndex`; a placement must be rigid.
class QUORLAN_TOOLS_API IInstanceWriter {
public:
    virtual ~IInstanceWriter() = default;

    virtual void AddInstance(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                             std::uint32_t layer, AffineTransform const& placement) = 0;

    /// The same with a placement as it was read, so that it is stored without rounding again. DEFAULT: `AddInstance`.
    virtual void AddInstanceAt(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                               std::uint32_t layer, PlacementRecord const& placement);
};

/// Writes owner histories. Parts and records are written first, joined by an owner history, and then linked.
class QUORLAN_TOOLS_API IOwnerHistoryWriter {
public:
    virtual ~IOwnerHistoryWriter() = default;

    virtual std::uint32_t AddOwnerPart(OwnerPart const& part) = 0;
    virtual std::uint32_t AddOwnerHistoryRecord(OwnerHistoryRecord const& record) = 0;
    virtual std::uint32_t AddOwnerHistory(std::uint32_t part, std::uint32_t record,
                                          OwnerHistoryLinkRecord const& link) = 0;
    virtual void LinkOwnerHistory(EntityIndex_t entity, std::uint32_t ownerHistory) = 0;
};

class QUORLAN_TOOLS_API IPropertyWriter {
public:
    virtual ~IPropertyWriter() = default;
    virtual void AddProperty(EntityIndex_t entity, PropertyRecord const& property) = 0;
};

/// Collects the content of a model and makes a model buffer of it.
///
///     Quorlan::ModelBuilder builder;
///     auto const wall = builder.GetEntityWriter().AddEntity(guid, L"Wall", {});
///     auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(brep);
///     builder.GetInstanceWriter().AddInstance(wall, shape, Quorlan::kInvalidIndex, Quorlan::kInvalidIndex, {});
///     std::vector<char> const model = builder.Create();
///
/// Indices count up from 0 in the order of the calls; nothing that is written twice is stored once. The writers are
/// owned by the builder. The order of the virtual operations is part of the interface: new ones go to the end.
class QUORLAN_TOOLS_API ModelBuilder {
public:
    ModelBuilder();
    ModelBuilder(ModelBuilder const&) = delete;
    ModelBuilder& operator=(ModelBuilder const&) = delete;
    virtual ~ModelBuilder();

    /// The model buffer of everything written so far; of nothing, a valid empty model. May be called at any time and
    /// again. Instances whose definition or entity is `kInvalidIndex` are left out. THROWS
    /// std::bad_array_new_length, a std::bad_alloc, if the buffer would reach 2 GiB.
    virtual std::vector<char> Create() const;

    virtual ILayerWriter& GetLayerWriter();
    virtual IPropertyWriter& GetPropertyWriter();
    virtual IEntityWriter& GetEntityWriter();
    virtual IMaterialWriter& GetMaterialWriter();
    virtual ITextureWriter& GetTextureWriter();
    virtual IGeometryDefinitionBuilder& GetGeometryDefinitionBuilder();
    virtual IInstanceWriter& GetInstanceWriter();
    virtual IOwnerHistoryWriter& GetOwnerHistoryWriter();

private:
    struct Writers;
    std::unique_ptr<Writers> writers_;
};

}  // namespace Quorlan
