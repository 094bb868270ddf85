#pragma once

#include <IfcImport.h>
#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace Quorlan::Testing {

/// An import that succeeded, opened.
class ImportedModel {
public:
    explicit ImportedModel(std::string const& text, QuorlanProgram::Import::ImportOptions const& options = {})
        : result_(QuorlanProgram::Import::ImportIfc(text, options)), storage_(ModelStorage::FromBuffer(result_.model)) {
        EXPECT_EQ(result_.error, "");
        EXPECT_TRUE(ModelValidator().Build(result_.model));
    }

    QuorlanProgram::Import::ImportReport const& GetReport() const { return result_.report; }
    IModelReader const& GetReader() const { return storage_.GetModelReader(); }
    IGeometryReader const& GetGeometry() const { return GetReader().GetGeometry(); }

    EntityIdentifier GetEntity(std::uint32_t entity) const {
        EntityIdentifier identifier;
        GetReader().GetEntities().GetIdentifier(identifier, entity);
        return identifier;
    }

    InstanceRecord GetInstance(std::uint32_t instance) const {
        InstanceRecord record;
        GetGeometry().GetInstance(record, instance);
        return record;
    }

    FacetedBRep GetShape(std::uint32_t instance) const {
        FacetedBRep shape;
        EXPECT_TRUE(GetGeometry().GetFacetedBRep(shape, GetInstance(instance).definitionIndex));
        return shape;
    }

    AffineTransform GetPlacement(std::uint32_t instance) const {
        AffineTransform placement;
        GetGeometry().GetPlacement(placement, GetInstance(instance).placementIndex);
        return placement;
    }

    /// "none" for no layer.
    std::string GetLayer(std::uint32_t instance) const {
        auto const layer = GetInstance(instance).layerIndex;
        if (layer == kInvalidIndex) return "none";
        std::string name;
        GetGeometry().GetLayerName(name, layer);
        return name;
    }

    MaterialRecord GetMaterial(std::uint32_t instance) const {
        MaterialRecord material;
        GetGeometry().GetMaterial(material, GetInstance(instance).materialIndex);
        return material;
    }

    /// The properties of an entity by "set.name".
    std::map<std::string, decltype(PropertyRecord::value)> GetProperties(std::uint32_t entity) const {
        std::map<std::string, decltype(PropertyRecord::value)> properties;
        auto const& reader = GetReader().GetProperties();
        for (std::uint32_t i = 0; i < reader.GetPropertyCount(EntityIndex_t{entity}); ++i) {
            PropertyRecord record;
            reader.GetProperty(record, EntityIndex_t{entity}, i);
            properties[record.set + "." + record.name] = record.value;
        }
        return properties;
    }

private:
    QuorlanProgram::Import::ImportResult result_;
    ModelStorage storage_;
};

}  // namespace Quorlan::Testing
