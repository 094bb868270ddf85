#include "increments/ContentCopier.h"

namespace Quorlan::Tools::Increments {
namespace {

// What the keys of written content begin with.
constexpr char kMaterialKey = 'm';
constexpr char kTextureKey = 't';
constexpr char kLayerKey = 'l';

/// Appends the bytes of a number.
template <class Number>
void Append(std::string& key, Number number) {
    key.append(reinterpret_cast<char const*>(&number), sizeof(number));
}

}  // namespace

ContentCopier::ContentCopier(ModelBuilder& target)
    : target_(target), definitions_(target.GetGeometryDefinitionBuilder()), textures_(target.GetTextureWriter()) {}

CopiedDefinitions ContentCopier::CopyDefinitions(IGeometryReader const& source, std::vector<bool> const& wanted) {
    CopiedDefinitions copied;
    copied.indices.assign(wanted.size(), kInvalidIndex);
    copied.moveOf.assign(wanted.size(), kInvalidIndex);
    definitions_.SetSource(source, wanted);
    for (std::uint32_t definition = 0; definition < wanted.size(); ++definition) {
        if (!wanted[definition]) continue;
        std::optional<DefinitionMove> move;
        copied.indices[definition] = definitions_.Copy(definition, move);
        if (!move) continue;
        copied.moveOf[definition] = static_cast<std::uint32_t>(copied.moves.size());
        copied.moves.push_back(*move);
    }
    return copied;
}

std::vector<std::uint32_t> ContentCopier::CopyMaterials(IGeometryReader const& source,
                                                        std::vector<bool> const& wanted) {
    // A texture index of -1, and any other that leads nowhere, is beyond every count once it is unsigned.
    std::vector<bool> wantedTextures(source.GetTextureCount());
    MaterialRecord material;
    for (std::uint32_t i = 0; i < wanted.size(); ++i) {
        if (!wanted[i]) continue;
        source.GetMaterial(material, i);
        auto const texture = static_cast<std::uint32_t>(material.textureIndex);
        if (texture < wantedTextures.size()) wantedTextures[texture] = true;
    }
    std::vector<std::uint32_t> const textures = CopyTextures(source, wantedTextures);

    std::vector<std::uint32_t> indices(wanted.size(), kInvalidIndex);
    for (std::uint32_t i = 0; i < wanted.size(); ++i) {
        if (!wanted[i]) continue;
        source.GetMaterial(material, i);
        material.textureIndex =
            static_cast<std::int32_t>(LookUp(textures, static_cast<std::uint32_t>(material.textureIndex)));
        std::string key(1, kMaterialKey);
        for (std::uint8_t const channel : material.color) Append(key, channel);
        Append(key, material.textureIndex);
        Append(key, material.twoSided);
        indices[i] = WriteOnce(key, [&] { return target_.GetMaterialWriter().AddMaterial(material); });
    }
    return indices;
}

std::vector<std::uint32_t> ContentCopier::CopyTextures(IGeometryReader const& source, std::vector<bool> const& wanted) {
    std::vector<std::uint32_t> indices(wanted.size(), kInvalidIndex);
    Texture texture;
    for (std::uint32_t i = 0; i < wanted.size(); ++i) {
        if (!wanted[i]) continue;
        source.GetTexture(texture, i);
        std::string key(1, kTextureKey);
        Append(key, texture.getType());
        key.append(texture.getData().data(), texture.getData().size());
        indices[i] = WriteOnce(key, [&] { return textures_.AddTexture(texture.getType(), texture.getData()); });
    }
    return indices;
}

std::vector<std::uint32_t> ContentCopier::CopyLayers(IGeometryReader const& source, std::vector<bool> const& wanted) {
    std::vector<std::uint32_t> indices(wanted.size(), kInvalidIndex);
    std::string name;
    for (std::uint32_t i = 0; i < wanted.size(); ++i) {
        if (!wanted[i]) continue;
        source.GetLayerName(name, i);
        indices[i] = WriteOnce(kLayerKey + name, [&] { return target_.GetLayerWriter().AddLayer(name); });
    }
    return indices;
}

/// RETURNS the index of equal content that was written before, or else what `write` returns for it.
template <class Write>
std::uint32_t ContentCopier::WriteOnce(std::string const& content, Write write) {
    auto const [entry, isNew] = written_.try_emplace(content, kInvalidIndex);
    if (isNew) entry->second = write();
    return entry->second;
}

}  // namespace Quorlan::Tools::Increments
