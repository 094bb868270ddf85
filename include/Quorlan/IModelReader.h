#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/GraphicsContainer.h>
#include <Quorlan/Guid.h>
#include <Quorlan/ModelTypes.h>
#include <Quorlan/Texture.h>
#include <Tools/Export.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Read access to one opened model.
///
/// All operations are const and may run on several threads at once. Results go into records of the caller, so that one
/// record serves a whole loop without allocation. A reference that leads nowhere reads as none: the all-zero GUID, an
/// empty text, no material, no shape.
///
/// Readers of other models than buffers can be written against this interface; operations with a default may be left
/// out there.
namespace Quorlan {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;

/// The entities: who they are and where they stand.
class QUORLAN_TOOLS_API IEntityReader {
public:
    virtual ~IEntityReader() = default;

    virtual std::uint32_t GetCount() const = 0;

    /// Fills and returns the entity's record. The matrix of the placement is its orthonormal frame in double precision.
    virtual EntityIdentifier const& GetIdentifier(EntityIdentifier& out, std::uint32_t entity) const = 0;

    /// The wide text at a record's `textReference`.
    virtual void GetText(std::wstring& out, std::uint32_t textReference) const = 0;

    /// The GUID at the reference of a record of kind 0.
    virtual void GetGuid(_GUID& out, std::uint32_t reference) const = 0;

    /// The same GUID in the 22-character compressed form of IFC.
    virtual void GetGuidText(std::string& out, std::uint32_t reference) const = 0;

    /// The geometric key at the reference of a record of kind 2.
    virtual void GetGeometricKey(GeometricKey& out, std::uint32_t reference) const = 0;

    /// The identifier text at the reference of a record of kind 3, zero-terminated, owned by the model; never null.
    virtual char const* GetIdentifierText(std::uint32_t reference) const = 0;

    /// The identifier text at the reference of a record of kind 1.
    virtual void GetIdentifierString(std::string& out, std::uint32_t reference) const = 0;

    /// The entity's placement as it is stored. DEFAULT: the placement of `GetIdentifier`, with its axes rounded.
    virtual void GetPlacementRecord(PlacementRecord& out, std::uint32_t entity) const;
};

/// Instances, shapes, materials, textures and layers.
class QUORLAN_TOOLS_API IGeometryReader {
public:
    virtual ~IGeometryReader() = default;

    virtual std::uint32_t GetInstanceCount() const = 0;
    virtual void GetInstance(InstanceRecord& out, std::uint32_t instance) const = 0;

    virtual std::uint32_t GetDefinitionCount() const = 0;
    virtual void GetDefinitionBounds(DefinitionBounds& out, std::uint32_t definition) const = 0;

    virtual std::uint32_t GetMaterialCount() const = 0;
    virtual void GetMaterial(MaterialRecord& out, std::uint32_t material) const = 0;

    virtual std::uint32_t GetTextureCount() const = 0;
    virtual void GetTexture(Texture& out, std::uint32_t texture) const = 0;

    /// The number of layers, the further kind of geometry content.
    virtual std::uint32_t GetExtraContentCount() const = 0;

    /// The UTF-8 name of a layer.
    virtual void GetLayerName(std::string& out, std::uint32_t layer) const = 0;

    /// 1 faceted BRep, 5 line graphics, 6 BRep with texture coordinates, 7 BRep with vertex normals; 0 for no shape.
    virtual std::uint32_t GetDefinitionKind(std::uint32_t definition) const = 0;

    /// The shape of a definition of kind 1, 6 or 7. RETURNS false, with `out` empty, if it has none.
    virtual bool GetFacetedBRep(FacetedBRep& out, std::uint32_t definition) const = 0;

    /// One normal per vertex of a definition of kind 7; empty for any other.
    virtual void GetVertexNormals(std::vector<Vertex>& out, std::uint32_t definition) const = 0;

    /// One (u, v) pair per vertex of a definition of kind 6; empty for any other.
    virtual void GetTextureCoordinates(std::vector<std::pair<float, float>>& out, std::uint32_t definition) const = 0;

    /// The lines and arcs of a definition of kind 5. RETURNS false, with `out` empty, if it has none.
    virtual bool GetGraphicsContainer(GraphicsContainer& out, std::uint32_t definition) const = 0;

    /// DEFAULT: one more than the largest index that an instance names.
    virtual std::uint32_t GetPlacementCount() const;

    /// Told before instance placements are read one by one: a reader that loads on demand may load them now. DEFAULT:
    /// nothing.
    virtual void PreparePlacements() const;

    /// An instance placement. Its matrix is the orthonormal frame in double precision.
    virtual void GetPlacement(AffineTransform& out, std::uint32_t placement) const = 0;

    /// An instance placement as it is stored. DEFAULT: that of `GetPlacement`, with its axes rounded.
    virtual void GetPlacementRecord(PlacementRecord& out, std::uint32_t placement) const;
};

/// The property sets of the entities.
class QUORLAN_TOOLS_API IPropertyReader {
public:
    virtual ~IPropertyReader() = default;

    virtual std::uint32_t GetPropertyCount(EntityIndex_t entity) const = 0;

    /// Properties of an entity keep the order in which they were written.
    virtual void GetProperty(PropertyRecord& out, EntityIndex_t entity, std::uint32_t index) const = 0;
};

/// Owner histories: a link names an entity and an owner history, which joins an owner part and a record.
class QUORLAN_TOOLS_API IOwnerHistoryReader {
public:
    virtual ~IOwnerHistoryReader() = default;

    virtual std::uint32_t GetLinkCount() const = 0;
    virtual void GetLink(OwnerHistoryLink& out, std::uint32_t link) const = 0;

    /// The number of owner histories that the references of links count through. DEFAULT: one more than the largest.
    virtual std::uint32_t GetReferenceCount() const;

    virtual std::uint32_t GetOwnerPartIndex(std::uint32_t reference) const = 0;
    virtual std::uint32_t GetOwnerHistoryIndex(std::uint32_t reference) const = 0;
    virtual void GetOwnerHistoryLinkRecord(OwnerHistoryLinkRecord& out, std::uint32_t reference) const = 0;
    virtual void GetOwnerPart(OwnerPart& out, std::uint32_t index) const = 0;
    virtual void GetOwnerHistory(OwnerHistoryRecord& out, std::uint32_t index) const = 0;
};

/// The model: one sub-reader per kind of content. The sub-readers live as long as the model.
class QUORLAN_TOOLS_API IModelReader {
public:
    virtual ~IModelReader() = default;

    virtual IEntityReader const& GetEntities() const = 0;
    virtual IGeometryReader const& GetGeometry() const = 0;
    virtual IPropertyReader const& GetProperties() const = 0;
    virtual IOwnerHistoryReader const& GetOwnerHistories() const = 0;
};

}  // namespace Quorlan
