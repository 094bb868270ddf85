#include "gltf/GltfMaterials.h"

#include <cmath>
#include <string>

namespace QuorlanProgram {
namespace {

constexpr double kRoughness = 0.85;  ///< [-] plaster, concrete, wood: nothing shines

/// glTF factors are linear, stored colours are sRGB (IEC 61966-2-1).
double ToLinear(std::uint8_t value) {
    double const c = value / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

char const* MimeTypeOf(Quorlan::TextureType type) {
    switch (type) {
        case Quorlan::TextureType::PNG: return "image/png";
        case Quorlan::TextureType::JPEG: return "image/jpeg";
        default: return nullptr;
    }
}

}  // namespace

int GltfMaterials::Find(std::uint32_t material, bool hasUVs) {
    Quorlan::MaterialRecord record;
    if (material < geometry_.GetMaterialCount()) geometry_.GetMaterial(record, material);
    bool const isTextured = hasUVs && record.textureIndex >= 0;
    auto const key =
        std::make_pair(material < geometry_.GetMaterialCount() ? material : Quorlan::kInvalidIndex, isTextured);
    auto const entry = materials_.find(key);
    return entry != materials_.end() ? entry->second : materials_[key] = Write(key.first, isTextured);
}

int GltfMaterials::Write(std::uint32_t material, bool hasUVs) {
    Quorlan::MaterialRecord record;
    record.color = {204, 204, 204, 255};
    if (material != Quorlan::kInvalidIndex) geometry_.GetMaterial(record, material);

    tinygltf::Material gltf;
    gltf.name = material == Quorlan::kInvalidIndex ? "none" : "material " + std::to_string(material);
    auto& pbr = gltf.pbrMetallicRoughness;
    pbr.baseColorFactor = {ToLinear(record.color[0]), ToLinear(record.color[1]), ToLinear(record.color[2]),
                           record.color[3] / 255.0};
    pbr.metallicFactor = 0;
    pbr.roughnessFactor = kRoughness;
    if (hasUVs) pbr.baseColorTexture.index = FindTexture(record.textureIndex);
    gltf.doubleSided = record.twoSided;
    if (record.color[3] < 255) gltf.alphaMode = "BLEND";
    gltf_.materials.push_back(std::move(gltf));
    return static_cast<int>(gltf_.materials.size()) - 1;
}

int GltfMaterials::FindTexture(std::int32_t texture) {
    auto const entry = textures_.find(texture);
    if (entry != textures_.end()) return entry->second;

    int& index = textures_[texture] = -1;
    Quorlan::Texture source;
    geometry_.GetTexture(source, static_cast<std::uint32_t>(texture));
    char const* const mimeType = MimeTypeOf(source.getType());
    if (mimeType == nullptr || source.getData().empty()) return index;

    tinygltf::Image image;
    image.mimeType = mimeType;
    image.bufferView = data_.AddImage(source.getData());
    gltf_.images.push_back(std::move(image));
    tinygltf::Texture gltf;
    gltf.source = static_cast<int>(gltf_.images.size()) - 1;
    gltf_.textures.push_back(std::move(gltf));
    return index = static_cast<int>(gltf_.textures.size()) - 1;
}

}  // namespace QuorlanProgram
