#include "model/ModelWriters.h"

#include "model/PropertyValue.h"
#include "model/WideText.h"

#include <cstring>

namespace Quorlan {
namespace {

Schema::Vector3 Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

Schema::Placement Store(AffineTransform const& transform) {
    Vertex const origin = transform.matrix.GetColumn(3);
    return {origin.x, origin.y, origin.z, Narrow(transform.matrix.GetColumn(0)), Narrow(transform.matrix.GetColumn(1))};
}

Schema::Placement Store(PlacementRecord const& placement) {
    auto const& o = placement.origin;
    auto const& x = placement.xAxis;
    auto const& y = placement.yAxis;
    return {o[0], o[1], o[2], {x[0], x[1], x[2]}, {y[0], y[1], y[2]}};
}

Schema::Guid Store(_GUID const& guid) {
    std::uint32_t words[2] = {0, 0};
    for (unsigned i = 0; i < 8; ++i) words[i / 4] |= static_cast<std::uint32_t>(guid.Data4[i]) << (8 * (i % 4));
    return {guid.Data1, guid.Data2, guid.Data3, words[0], words[1]};
}

template <class Elements>
std::uint32_t LastIndexOf(Elements const& elements) {
    return static_cast<std::uint32_t>(elements.size() - 1);
}

}  // namespace

EntityIndex_t EntityWriter::AddRecord(std::uint32_t kind, std::size_t reference, std::string_view utf8Text,
                                      Schema::Placement const& placement) {
    std::uint32_t const textReference = utf8Text.empty() ? kInvalidIndex : texts.Add(utf8Text);
    records.emplace_back(kind, static_cast<std::uint32_t>(reference), textReference, 0u, placement);
    return static_cast<EntityIndex_t>(LastIndexOf(records));
}

EntityIndex_t EntityWriter::AddStored(Schema::Guid const& guid, std::string_view utf8Text,
                                      Schema::Placement const& placement) {
    guids.push_back(guid);
    return AddRecord(0, guids.size() - 1, utf8Text, placement);
}

EntityIndex_t EntityWriter::AddEntity(_GUID const& guid, std::wstring const& text, AffineTransform const& placement) {
    return AddStored(Store(guid), ToUtf8(text), Store(placement));
}

EntityIndex_t EntityWriter::AddEntityAt(_GUID const& guid, std::wstring const& text, PlacementRecord const& placement) {
    return AddStored(Store(guid), ToUtf8(text), Store(placement));
}

EntityIndex_t EntityWriter::AddEntityWithIdentifierText(std::string const& identifier, std::wstring const& text,
                                                        AffineTransform const& placement) {
    return AddRecord(1, identifierTexts.Add(identifier), ToUtf8(text), Store(placement));
}

EntityIndex_t EntityWriter::AddEntityWithGeometricKey(GeometricKey const& key, std::wstring const& text,
                                                      AffineTransform const& placement) {
    auto const& p = key.position;
    auto const& s = key.shape;
    geometricKeys.emplace_back(p[0], p[1], p[2], s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7]);
    return AddRecord(2, geometricKeys.size() - 1, ToUtf8(text), Store(placement));
}

EntityIndex_t EntityWriter::AddEntityWithoutIdentifier(std::wstring const& text, AffineTransform const& placement) {
    return AddRecord(4, kInvalidIndex, ToUtf8(text), Store(placement));
}

std::uint32_t MaterialWriter::AddMaterial(MaterialRecord const& material) {
    auto const& color = material.color;
    materials.emplace_back(color[0], color[1], color[2], color[3], material.textureIndex,
                           static_cast<std::uint8_t>(material.twoSided ? 1 : 0), 0u, 0u);
    return LastIndexOf(materials);
}

std::uint32_t LayerWriter::AddLayer(std::string const& utf8Name) { return names.Add(utf8Name); }

std::uint32_t TextureWriter::AddTexture(TextureType type, std::vector<char> const& data) {
    textures.emplace_back(type, data);
    return LastIndexOf(textures);
}

void InstanceWriter::Add(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                         std::uint32_t layer, Schema::Placement const& placement) {
    auto const entityIndex = static_cast<std::uint32_t>(entity);
    auto const definitionIndex = static_cast<std::uint32_t>(definition);
    if (entityIndex >= entities_.records.size() || definitionIndex >= definitions_.definitions.size()) return;
    placements.push_back(placement);
    instances.emplace_back(LastIndexOf(placements), entityIndex, definitionIndex, material, layer);
}

void InstanceWriter::AddInstance(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                                 std::uint32_t layer, AffineTransform const& placement) {
    Add(entity, definition, material, layer, Store(placement));
}

void InstanceWriter::AddInstanceAt(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                                   std::uint32_t layer, PlacementRecord const& placement) {
    Add(entity, definition, material, layer, Store(placement));
}

std::uint32_t OwnerHistoryWriter::AddOwnerPart(OwnerPart const& part) {
    parts.push_back({AddText(part.user), AddText(part.organization), AddText(part.application)});
    return LastIndexOf(parts);
}

std::uint32_t OwnerHistoryWriter::AddOwnerHistoryRecord(OwnerHistoryRecord const& record) {
    records.emplace_back(record.state, static_cast<std::uint32_t>(record.changeAction), record.creationDate,
                         record.lastModifiedDate);
    return LastIndexOf(records);
}

std::uint32_t OwnerHistoryWriter::AddOwnerHistory(std::uint32_t part, std::uint32_t record,
                                                  OwnerHistoryLinkRecord const& link) {
    std::uint32_t const user = AddText(link.lastModifyingUser);
    return Add(part, record, user, AddText(link.lastModifyingApplication));
}

void OwnerHistoryWriter::LinkOwnerHistory(EntityIndex_t entity, std::uint32_t ownerHistory) {
    links.emplace_back(static_cast<std::uint32_t>(entity), ownerHistory);
}

void PropertyWriter::AddProperty(EntityIndex_t entity, PropertyRecord const& property) {
    std::uint32_t const set = strings.Add(property.set);
    std::uint32_t const name = strings.Add(property.name);
    std::uint64_t value = 0;
    if (auto const* const text = std::get_if<std::string>(&property.value)) {
        value = strings.Add(*text);
    } else if (auto const* const number = std::get_if<double>(&property.value)) {
        std::memcpy(&value, number, sizeof(value));
    } else if (auto const* const integer = std::get_if<std::int64_t>(&property.value)) {
        value = static_cast<std::uint64_t>(*integer);
    } else {
        value = std::get<bool>(property.value) ? 1 : 0;
    }
    entries.emplace_back(static_cast<std::uint32_t>(entity), set, name,
                         static_cast<std::uint32_t>(property.value.index()), value);
}

}  // namespace Quorlan
