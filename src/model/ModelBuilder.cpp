#include "model/BufferWriter.h"

#include <Quorlan/ModelBuilder.h>

namespace Quorlan {

struct ModelBuilder::Writers {
    EntityWriter entities;
    OwnerHistoryWriter ownerHistories;
    MaterialWriter materials;
    LayerWriter layers;
    TextureWriter textures;
    DefinitionWriter definitions;
    InstanceWriter instances{entities, definitions};
    PropertyWriter properties;
};

ModelBuilder::ModelBuilder() : writers_(std::make_unique<Writers>()) {}
ModelBuilder::~ModelBuilder() = default;

std::vector<char> ModelBuilder::Create() const {
    Writers const& w = *writers_;
    return WriteModelBuffer(
        {w.entities, w.ownerHistories, w.materials, w.layers, w.textures, w.definitions, w.instances, w.properties});
}

ILayerWriter& ModelBuilder::GetLayerWriter() { return writers_->layers; }
IPropertyWriter& ModelBuilder::GetPropertyWriter() { return writers_->properties; }
IEntityWriter& ModelBuilder::GetEntityWriter() { return writers_->entities; }
IMaterialWriter& ModelBuilder::GetMaterialWriter() { return writers_->materials; }
ITextureWriter& ModelBuilder::GetTextureWriter() { return writers_->textures; }
IGeometryDefinitionBuilder& ModelBuilder::GetGeometryDefinitionBuilder() { return writers_->definitions; }
IInstanceWriter& ModelBuilder::GetInstanceWriter() { return writers_->instances; }
IOwnerHistoryWriter& ModelBuilder::GetOwnerHistoryWriter() { return writers_->ownerHistories; }

}  // namespace Quorlan
