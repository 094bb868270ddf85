#pragma once

#include <Quorlan/IModelReader.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

/// Calls every operation of a model's readers, for tests and fuzzers of what reading must survive.
namespace TestSupport {

using namespace Quorlan;

inline std::size_t ReadEntity(IModelReader const& reader, std::uint32_t entity) {
    auto const& entities = reader.GetEntities();
    EntityIdentifier identifier;
    std::wstring text;
    _GUID guid;
    std::string guidText;
    std::string identifierText;
    GeometricKey key;
    PlacementRecord placement;
    entities.GetIdentifier(identifier, entity);
    entities.GetText(text, identifier.textReference);
    entities.GetGuid(guid, identifier.reference);
    entities.GetGuidText(guidText, identifier.reference);
    entities.GetGeometricKey(key, identifier.reference);
    entities.GetIdentifierString(identifierText, identifier.reference);
    entities.GetPlacementRecord(placement, entity);
    std::size_t sum = text.size() + guidText.size() + identifierText.size() +
                      std::strlen(entities.GetIdentifierText(identifier.reference));

    auto const& properties = reader.GetProperties();
    for (std::uint32_t i = 0; i <= properties.GetPropertyCount(EntityIndex_t{entity}); ++i) {
        PropertyRecord property;
        properties.GetProperty(property, EntityIndex_t{entity}, i);
        sum += property.set.size() + property.name.size();
    }
    return sum;
}

inline std::size_t ReadInstance(IGeometryReader const& geometry, std::uint32_t index) {
    InstanceRecord instance;
    AffineTransform placement;
    PlacementRecord stored;
    MaterialRecord material;
    std::string layer;
    geometry.GetInstance(instance, index);
    geometry.GetPlacement(placement, instance.placementIndex);
    geometry.GetPlacementRecord(stored, instance.placementIndex);
    geometry.GetMaterial(material, instance.materialIndex);
    geometry.GetLayerName(layer, instance.layerIndex);
    return layer.size();
}

/// Also true to its promise that every loop of a shape leads to its vertices.
inline std::size_t ReadDefinition(IGeometryReader const& geometry, std::uint32_t definition) {
    DefinitionBounds bounds;
    FacetedBRep shape;
    GraphicsContainer graphics;
    std::vector<Vertex> normals;
    std::vector<std::pair<float, float>> uvs;
    geometry.GetDefinitionBounds(bounds, definition);
    geometry.GetFacetedBRep(shape, definition);
    geometry.GetGraphicsContainer(graphics, definition);
    geometry.GetVertexNormals(normals, definition);
    geometry.GetTextureCoordinates(uvs, definition);
    std::size_t sum = shape.vertices.size() + graphics.lines.size() + graphics.arcs.size();
    for (auto const& loop : shape.faces) {
        for (auto const index : loop) sum += static_cast<std::size_t>(shape.vertices.at(index).x > 0);
    }
    return sum + normals.size() + uvs.size() + geometry.GetDefinitionKind(definition);
}

inline std::size_t ReadLink(IOwnerHistoryReader const& histories, std::uint32_t index) {
    OwnerHistoryLink link;
    OwnerPart part;
    OwnerHistoryRecord record;
    OwnerHistoryLinkRecord linkRecord;
    histories.GetLink(link, index);
    histories.GetOwnerPart(part, histories.GetOwnerPartIndex(link.reference));
    histories.GetOwnerHistory(record, histories.GetOwnerHistoryIndex(link.reference));
    histories.GetOwnerHistoryLinkRecord(linkRecord, link.reference);
    return part.user.size() + linkRecord.lastModifyingUser.size();
}

/// Reads every element of every kind, and one behind the last. RETURNS a sum of what came back.
inline std::size_t ReadEverything(IModelReader const& reader) {
    std::size_t sum = 0;
    auto const& geometry = reader.GetGeometry();
    auto const& histories = reader.GetOwnerHistories();
    for (std::uint32_t i = 0; i <= reader.GetEntities().GetCount(); ++i) sum += ReadEntity(reader, i);
    for (std::uint32_t i = 0; i <= geometry.GetInstanceCount(); ++i) sum += ReadInstance(geometry, i);
    for (std::uint32_t i = 0; i <= geometry.GetDefinitionCount(); ++i) sum += ReadDefinition(geometry, i);
    for (std::uint32_t i = 0; i <= geometry.GetTextureCount(); ++i) {
        Texture texture;
        geometry.GetTexture(texture, i);
        sum += texture.getData().size();
    }
    for (std::uint32_t i = 0; i <= histories.GetLinkCount(); ++i) sum += ReadLink(histories, i);
    return sum;
}

}  // namespace TestSupport
