#include "MovedModel.h"

#include <Quorlan/ModelBuilder.h>

#include <cstdint>
#include <string>
#include <utility>

namespace QuorlanProgram {
namespace {

using Quorlan::IGeometryReader;
using Quorlan::ModelBuilder;
using Quorlan::Vertex;

void CopyDefinition(ModelBuilder& builder, IGeometryReader const& geometry, std::uint32_t definition) {
    auto& target = builder.GetGeometryDefinitionBuilder();
    GeometryObjectLib::FacetedBRep shape;
    geometry.GetFacetedBRep(shape, definition);
    switch (geometry.GetDefinitionKind(definition)) {
        case 5: {
            GeometryObjectLib::GraphicsContainer graphics;
            geometry.GetGraphicsContainer(graphics, definition);
            target.AddGraphicsContainer(graphics);
            break;
        }
        case 6: {
            std::vector<std::pair<float, float>> coordinates;
            geometry.GetTextureCoordinates(coordinates, definition);
            target.AddBRepWithUVs({&shape, &coordinates});
            break;
        }
        case 7: {
            std::vector<Vertex> normals;
            geometry.GetVertexNormals(normals, definition);
            target.AddBRepWithNormals({&shape, &normals});
            break;
        }
        default: target.AddBRep(shape); break;  // also a place holder for no shape, so that indices stay
    }
}

void CopyPalette(ModelBuilder& builder, IGeometryReader const& geometry) {
    Quorlan::MaterialRecord material;
    for (std::uint32_t i = 0; i < geometry.GetMaterialCount(); ++i) {
        geometry.GetMaterial(material, i);
        material.textureIndex = -1;
        builder.GetMaterialWriter().AddMaterial(material);
    }
    std::string layer;
    for (std::uint32_t i = 0; i < geometry.GetExtraContentCount(); ++i) {
        geometry.GetLayerName(layer, i);
        builder.GetLayerWriter().AddLayer(layer);
    }
}

void CopyInstances(ModelBuilder& builder, IGeometryReader const& geometry) {
    Quorlan::InstanceRecord instance;
    Quorlan::PlacementRecord placement;
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
        geometry.GetInstance(instance, i);
        geometry.GetPlacementRecord(placement, instance.placementIndex);
        builder.GetInstanceWriter().AddInstanceAt(Quorlan::EntityIndex_t{instance.entityIndex},
                                                  Quorlan::GeometryDefinitionIndex_t{instance.definitionIndex},
                                                  instance.materialIndex, instance.layerIndex, placement);
    }
}

}  // namespace

std::vector<char> MoveModel(Quorlan::IModelReader const& reader, Vertex const& offset) {
    ModelBuilder builder;
    Quorlan::PlacementRecord placement;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); ++i) {
        reader.GetEntities().GetPlacementRecord(placement, i);
        placement.origin = {placement.origin[0] + offset.x, placement.origin[1] + offset.y,
                            placement.origin[2] + offset.z};
        builder.GetEntityWriter().AddEntityAt({}, {}, placement);
    }
    auto const& geometry = reader.GetGeometry();
    CopyPalette(builder, geometry);
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) CopyDefinition(builder, geometry, i);
    CopyInstances(builder, geometry);
    return builder.Create();
}

}  // namespace QuorlanProgram
