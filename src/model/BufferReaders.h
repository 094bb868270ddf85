#pragma once

#include "model/ModelView.h"
#include "model/ShapeScan.h"

#include <Quorlan/IModelReader.h>

/// The readers of an opened model buffer. They trust what `OpenUntrustedModel` has checked and test everything else:
/// a reference that leads nowhere reads as none.
namespace Quorlan {

class BufferEntityReader final : public IEntityReader {
public:
    explicit BufferEntityReader(Schema::Model const& model) : entities_(*model.entities()) {}

    std::uint32_t GetCount() const override;
    EntityIdentifier const& GetIdentifier(EntityIdentifier& out, std::uint32_t entity) const override;
    void GetText(std::wstring& out, std::uint32_t textReference) const override;
    void GetGuid(_GUID& out, std::uint32_t reference) const override;
    void GetGuidText(std::string& out, std::uint32_t reference) const override;
    void GetGeometricKey(GeometricKey& out, std::uint32_t reference) const override;
    char const* GetIdentifierText(std::uint32_t reference) const override;
    void GetIdentifierString(std::string& out, std::uint32_t reference) const override;
    void GetPlacementRecord(PlacementRecord& out, std::uint32_t entity) const override;

private:
    Schema::Entities const& entities_;
};

class BufferGeometryReader final : public IGeometryReader {
public:
    explicit BufferGeometryReader(Schema::Model const& model, ShapeScans const* scans)
        : geometry_(*model.geometry()), scans_(scans) {}

    std::uint32_t GetInstanceCount() const override;
    void GetInstance(InstanceRecord& out, std::uint32_t instance) const override;
    std::uint32_t GetDefinitionCount() const override;
    void GetDefinitionBounds(DefinitionBounds& out, std::uint32_t definition) const override;
    std::uint32_t GetMaterialCount() const override;
    void GetMaterial(MaterialRecord& out, std::uint32_t material) const override;
    std::uint32_t GetTextureCount() const override;
    void GetTexture(Texture& out, std::uint32_t texture) const override;
    std::uint32_t GetExtraContentCount() const override;
    void GetLayerName(std::string& out, std::uint32_t layer) const override;
    std::uint32_t GetDefinitionKind(std::uint32_t definition) const override;
    bool GetFacetedBRep(FacetedBRep& out, std::uint32_t definition) const override;
    void GetVertexNormals(std::vector<Vertex>& out, std::uint32_t definition) const override;
    void GetTextureCoordinates(std::vector<std::pair<float, float>>& out, std::uint32_t definition) const override;
    bool GetGraphicsContainer(GraphicsContainer& out, std::uint32_t definition) const override;
    std::uint32_t GetPlacementCount() const override;
    void GetPlacement(AffineTransform& out, std::uint32_t placement) const override;
    void GetPlacementRecord(PlacementRecord& out, std::uint32_t placement) const override;

    /// The tables that the operations read.
    Schema::Geometry const& GetGeometry() const { return geometry_; }

    /// What is known of the buffer's BReps; null for nothing.
    ShapeScans const* GetScans() const { return scans_; }

private:
    Schema::GeometryDefinitionInfo const* FindDefinition(std::uint32_t definition) const;

    Schema::Geometry const& geometry_;
    ShapeScans const* scans_;
};

class BufferPropertyReader final : public IPropertyReader {
public:
    explicit BufferPropertyReader(Schema::Model const& model) : properties_(model.properties()) {}

    std::uint32_t GetPropertyCount(EntityIndex_t entity) const override;
    void GetProperty(PropertyRecord& out, EntityIndex_t entity, std::uint32_t index) const override;

    /// The positions of the entity's entries, first and one behind the last.
    std::pair<std::uint32_t, std::uint32_t> FindEntries(EntityIndex_t entity) const;

private:
    Schema::Properties const* properties_;
};

class BufferOwnerHistoryReader final : public IOwnerHistoryReader {
public:
    explicit BufferOwnerHistoryReader(Schema::Model const& model) : histories_(model.ownerHistories()) {}

    std::uint32_t GetLinkCount() const override;
    void GetLink(OwnerHistoryLink& out, std::uint32_t link) const override;
    std::uint32_t GetReferenceCount() const override;
    std::uint32_t GetOwnerPartIndex(std::uint32_t reference) const override;
    std::uint32_t GetOwnerHistoryIndex(std::uint32_t reference) const override;
    void GetOwnerHistoryLinkRecord(OwnerHistoryLinkRecord& out, std::uint32_t reference) const override;
    void GetOwnerPart(OwnerPart& out, std::uint32_t index) const override;
    void GetOwnerHistory(OwnerHistoryRecord& out, std::uint32_t index) const override;

private:
    Schema::OwnerHistory const* FindHistory(std::uint32_t reference) const;

    Schema::OwnerHistories const* histories_;
};

class BufferModelReader final : public IModelReader {
public:
    /// REQUIRES: `scans`, where not null, are those of the model's BReps and outlive the reader.
    explicit BufferModelReader(Schema::Model const& model, ShapeScans const* scans = nullptr)
        : model_(model), entities_(model), geometry_(model, scans), properties_(model), ownerHistories_(model) {}

    /// The tables that the readers read.
    Schema::Model const& GetModel() const { return model_; }
    BufferPropertyReader const& GetStoredProperties() const { return properties_; }

    IEntityReader const& GetEntities() const override { return entities_; }
    IGeometryReader const& GetGeometry() const override { return geometry_; }
    IPropertyReader const& GetProperties() const override { return properties_; }
    IOwnerHistoryReader const& GetOwnerHistories() const override { return ownerHistories_; }

private:
    Schema::Model const& model_;
    BufferEntityReader entities_;
    BufferGeometryReader geometry_;
    BufferPropertyReader properties_;
    BufferOwnerHistoryReader ownerHistories_;
};

/// The element at `index`, or null where the vector or the element is not there.
template <class T>
auto FindElement(flatbuffers::Vector<T> const* vector, std::uint32_t index) -> decltype(vector->Get(index)) {
    return index < CountOf(vector) ? vector->Get(index) : nullptr;
}

/// The GUID as it is stored; all zero where it is not there.
inline _GUID ToGuid(Schema::Guid const* guid) {
    _GUID out{};
    if (guid == nullptr) return out;
#if FLATBUFFERS_LITTLEENDIAN
    static_assert(sizeof(out) == sizeof(*guid));
    std::memcpy(&out, guid, sizeof(out));  // the stored words are the bytes in order
#else
    out.Data1 = guid->data1();
    out.Data2 = guid->data2();
    out.Data3 = guid->data3();
    std::uint32_t const words[2] = {guid->data4a(), guid->data4b()};
    for (unsigned i = 0; i < 8; ++i) out.Data4[i] = static_cast<unsigned char>(words[i / 4] >> (8 * (i % 4)));
#endif
    return out;
}

inline void Assign(std::string& out, flatbuffers::String const* text) {
    if (text == nullptr) {
        out.clear();
    } else {
        out.assign(text->c_str(), text->size());
    }
}

/// The placement as it is stored; the identity where it is not there.
inline PlacementRecord ToRecord(Schema::Placement const* placement) {
    if (placement == nullptr) return {};
    auto const& x = placement->xAxis();
    auto const& y = placement->yAxis();
    return {{placement->x(), placement->y(), placement->z()}, {x.x(), x.y(), x.z()}, {y.x(), y.y(), y.z()}};
}

/// Its orthonormal frame as a transform; the identity where it is not there.
inline AffineTransform ToTransform(Schema::Placement const* placement) {
    if (placement == nullptr) return {};
    return AffineTransform::FromMatrix(ToDoubleFrame(*placement).ToMatrix());
}

}  // namespace Quorlan
