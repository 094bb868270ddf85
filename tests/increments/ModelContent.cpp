#include "increments/ModelContent.h"

#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace Quorlan::Testing {
namespace {

using GeometryObjectLib::Matrix4;

/// The entity's frame after the instance's.
Matrix4 GetWorldMatrix(IModelReader const& reader, InstanceRecord const& instance) {
    EntityIdentifier entity;
    reader.GetEntities().GetIdentifier(entity, instance.entityIndex);
    AffineTransform placement;
    reader.GetGeometry().GetPlacement(placement, instance.placementIndex);
    return entity.placement.matrix * placement.matrix;
}

void ReadGraphics(InstanceContent& out, IGeometryReader const& geometry, std::uint32_t definition) {
    GraphicsContainer graphics;
    if (!geometry.GetGraphicsContainer(graphics, definition)) return;
    for (auto const& line : graphics.lines) {
        out.points.push_back(line.start);
        out.points.push_back(line.end);
    }
    for (auto const& arc : graphics.arcs) {
        out.points.push_back(arc.center);
        out.directions.push_back(arc.axis);
        out.directions.push_back(arc.startDirection);
        out.radii.push_back(arc.radius);
        out.radii.push_back(arc.sweepAngle);
    }
}

void ReadBRep(InstanceContent& out, IGeometryReader const& geometry, std::uint32_t definition) {
    FacetedBRep shape;
    if (!geometry.GetFacetedBRep(shape, definition)) return;
    out.points = shape.vertices;
    out.loops = shape.faces;
    for (auto const& [face, loops] : shape.holes) {
        for (auto const& loop : loops) {
            out.loops.push_back({static_cast<std::uint32_t>(face)});
            out.loops.push_back(loop);
        }
    }
    geometry.GetVertexNormals(out.directions, definition);
    geometry.GetTextureCoordinates(out.uvs, definition);
}

MaterialContent ReadMaterial(IGeometryReader const& geometry, std::uint32_t index) {
    MaterialRecord record;
    geometry.GetMaterial(record, index);
    MaterialContent content{record.color, record.twoSided, {}};
    if (record.textureIndex >= 0) {
        Texture texture;
        geometry.GetTexture(texture, static_cast<std::uint32_t>(record.textureIndex));
        content.texture.emplace(texture.getType(), texture.getData());
    }
    return content;
}

InstanceContent ReadInstance(IModelReader const& reader, InstanceRecord const& instance) {
    IGeometryReader const& geometry = reader.GetGeometry();
    InstanceContent content;
    content.kind = geometry.GetDefinitionKind(instance.definitionIndex);
    if (content.kind == 5) {
        ReadGraphics(content, geometry, instance.definitionIndex);
    } else {
        ReadBRep(content, geometry, instance.definitionIndex);
    }
    Matrix4 const world = GetWorldMatrix(reader, instance);
    for (Vertex& point : content.points) point = TransformPoint(world, point);
    for (Vertex& direction : content.directions) direction = TransformDirection(world, direction);
    if (instance.materialIndex < geometry.GetMaterialCount()) {
        content.material = ReadMaterial(geometry, instance.materialIndex);
    }
    if (instance.layerIndex < geometry.GetExtraContentCount()) {
        geometry.GetLayerName(content.layer.emplace(), instance.layerIndex);
    }
    return content;
}

EntityContent ReadEntity(IModelReader const& reader, EntityIdentifier const& identifier, std::uint32_t entity) {
    EntityContent content;
    reader.GetEntities().GetGuid(content.guid, identifier.reference);
    reader.GetEntities().GetText(content.text, identifier.textReference);
    reader.GetEntities().GetPlacementRecord(content.placement, entity);

    IOwnerHistoryReader const& histories = reader.GetOwnerHistories();
    std::uint32_t reference = kInvalidIndex;
    OwnerHistoryLink link;
    for (std::uint32_t i = 0; i < histories.GetLinkCount(); ++i) {
        histories.GetLink(link, i);
        if (link.entity == EntityIndex_t{entity}) reference = link.reference;
    }
    histories.GetOwnerHistory(content.history, histories.GetOwnerHistoryIndex(reference));
    histories.GetOwnerPart(content.owner, histories.GetOwnerPartIndex(reference));
    histories.GetOwnerHistoryLinkRecord(content.link, reference);

    for (std::uint32_t i = 0; i < reader.GetProperties().GetPropertyCount(EntityIndex_t{entity}); ++i) {
        reader.GetProperties().GetProperty(content.properties.emplace_back(), EntityIndex_t{entity}, i);
    }
    return content;
}

double GetSize(std::vector<Vertex> const& points) {
    double size = 0;
    for (Vertex const& p : points) size = std::max(size, Length(p - points[0]));
    return size;
}

bool AreClose(std::vector<Vertex> const& a, std::vector<Vertex> const& b, double tolerance) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [tolerance](Vertex const& p, Vertex const& q) { return Length(p - q) <= tolerance; });
}

std::string Compare(InstanceContent const& actual, InstanceContent const& expected) {
    if (actual.kind != expected.kind) return "kind";
    if (!AreClose(actual.points, expected.points, 1e-5 * std::max(1.0, GetSize(expected.points)))) return "points";
    if (!AreClose(actual.directions, expected.directions, 1e-5)) return "directions";
    if (actual.loops != expected.loops) return "loops";
    if (actual.uvs != expected.uvs) return "texture coordinates";
    if (actual.radii != expected.radii) return "radii";
    if (actual.material != expected.material) return "material";
    if (actual.layer != expected.layer) return "layer";
    return {};
}

bool AreEqual(PropertyRecord const& a, PropertyRecord const& b) {
    return a.set == b.set && a.name == b.name && a.value == b.value;
}

}  // namespace

std::vector<EntityContent> ReadContent(IModelReader const& reader) {
    std::vector<EntityContent> contents;
    std::vector<std::uint32_t> contentOf(reader.GetEntities().GetCount(), kInvalidIndex);
    for (std::uint32_t entity = 0; entity < contentOf.size(); ++entity) {
        EntityIdentifier identifier;
        if (reader.GetEntities().GetIdentifier(identifier, entity).kind != 0) continue;
        contentOf[entity] = static_cast<std::uint32_t>(contents.size());
        contents.push_back(ReadEntity(reader, identifier, entity));
    }
    for (std::uint32_t i = 0; i < reader.GetGeometry().GetInstanceCount(); ++i) {
        InstanceRecord instance;
        reader.GetGeometry().GetInstance(instance, i);
        std::uint32_t const content = contentOf[instance.entityIndex];
        if (content != kInvalidIndex) contents[content].instances.push_back(ReadInstance(reader, instance));
    }
    return contents;
}

std::vector<EntityContent> ReadContent(std::vector<char> const& buffer) {
    ModelStorage const storage = ModelStorage::FromBuffer(buffer);
    EXPECT_FALSE(storage.HasError());
    if (storage.HasError()) return {};
    return ReadContent(storage.GetModelReader());
}

std::string Compare(EntityContent const& actual, EntityContent const& expected) {
    if (actual.guid != expected.guid) return "GUID";
    if (actual.text != expected.text) return "text";
    if (std::memcmp(&actual.placement, &expected.placement, 48) != 0) return "placement";
    if (actual.history.state != expected.history.state) return "state";
    if (actual.history.creationDate != expected.history.creationDate) return "creation date";
    if (actual.history.lastModifiedDate != expected.history.lastModifiedDate) return "last modified date";
    if (actual.owner.user != expected.owner.user) return "user";
    if (actual.owner.organization != expected.owner.organization) return "organization";
    if (actual.owner.application != expected.owner.application) return "application";
    if (actual.link.lastModifyingUser != expected.link.lastModifyingUser) return "last modifying user";
    if (actual.link.lastModifyingApplication != expected.link.lastModifyingApplication) return "last application";
    if (!std::equal(actual.properties.begin(), actual.properties.end(), expected.properties.begin(),
                    expected.properties.end(), AreEqual)) {
        return "properties";
    }
    if (actual.instances.size() != expected.instances.size()) return "number of instances";
    for (std::size_t i = 0; i < actual.instances.size(); ++i) {
        std::string const difference = Compare(actual.instances[i], expected.instances[i]);
        if (!difference.empty()) return "instance " + std::to_string(i) + ": " + difference;
    }
    return {};
}

_GUID MakeGuid(std::uint32_t number) {
    return {number, 0x4711, 0x0815, {1, 2, 3, 4, 5, 6, 7, static_cast<unsigned char>(number % 251)}};
}

bool GuidLess::operator()(_GUID const& a, _GUID const& b) const { return std::memcmp(&a, &b, sizeof(a)) < 0; }

}  // namespace Quorlan::Testing
