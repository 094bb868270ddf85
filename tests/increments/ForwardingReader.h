#pragma once

#include <Quorlan/IModelReader.h>

namespace Quorlan::Testing {

class ForwardingGeometry final : public IGeometryReader {
public:
    explicit ForwardingGeometry(IGeometryReader const& reader) : reader_(reader) {}

    std::uint32_t GetInstanceCount() const override { return reader_.GetInstanceCount(); }
    void GetInstance(InstanceRecord& out, std::uint32_t i) const override { reader_.GetInstance(out, i); }
    std::uint32_t GetDefinitionCount() const override { return reader_.GetDefinitionCount(); }
    void GetDefinitionBounds(DefinitionBounds& out, std::uint32_t i) const override {
        reader_.GetDefinitionBounds(out, i);
    }
    std::uint32_t GetMaterialCount() const override { return reader_.GetMaterialCount(); }
    void GetMaterial(MaterialRecord& out, std::uint32_t i) const override { reader_.GetMaterial(out, i); }
    std::uint32_t GetTextureCount() const override { return reader_.GetTextureCount(); }
    void GetTexture(Texture& out, std::uint32_t i) const override { reader_.GetTexture(out, i); }
    std::uint32_t GetExtraContentCount() const override { return reader_.GetExtraContentCount(); }
    void GetLayerName(std::string& out, std::uint32_t i) const override { reader_.GetLayerName(out, i); }
    std::uint32_t GetDefinitionKind(std::uint32_t i) const override { return reader_.GetDefinitionKind(i); }
    bool GetFacetedBRep(FacetedBRep& out, std::uint32_t i) const override { return reader_.GetFacetedBRep(out, i); }
    void GetVertexNormals(std::vector<Vertex>& out, std::uint32_t i) const override {
        reader_.GetVertexNormals(out, i);
    }
    void GetTextureCoordinates(std::vector<std::pair<float, float>>& out, std::uint32_t i) const override {
        reader_.GetTextureCoordinates(out, i);
    }
    bool GetGraphicsContainer(GraphicsContainer& out, std::uint32_t i) const override {
        return reader_.GetGraphicsContainer(out, i);
    }
    std::uint32_t GetPlacementCount() const override { return reader_.GetPlacementCount(); }
    void GetPlacement(AffineTransform& out, std::uint32_t i) const override { reader_.GetPlacement(out, i); }
    void GetPlacementRecord(PlacementRecord& out, std::uint32_t i) const override {
        reader_.GetPlacementRecord(out, i);
    }

private:
    IGeometryReader const& reader_;
};

/// Reads a model through another reader, so that it is a reader that the library knows nothing about: what is written
/// from it is read through the public operations alone, shape by shape.
class ForwardingReader final : public IModelReader {
public:
    explicit ForwardingReader(IModelReader const& reader) : reader_(reader), geometry_(reader.GetGeometry()) {}

    IEntityReader const& GetEntities() const override { return reader_.GetEntities(); }
    IGeometryReader const& GetGeometry() const override { return geometry_; }
    IPropertyReader const& GetProperties() const override { return reader_.GetProperties(); }
    IOwnerHistoryReader const& GetOwnerHistories() const override { return reader_.GetOwnerHistories(); }

private:
    IModelReader const& reader_;
    ForwardingGeometry geometry_;
};

}  // namespace Quorlan::Testing
