#pragma once

#include "gltf/GltfData.h"
#include "gltf/TinyGltf.h"

#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <map>
#include <utility>

namespace QuorlanProgram {

/// The materials of a model in a glTF file, each written when it is first asked for.
class GltfMaterials {
public:
    GltfMaterials(Quorlan::IGeometryReader const& geometry, tinygltf::Model& gltf, GltfData& data)
        : geometry_(geometry), gltf_(gltf), data_(data) {}

    /// The index of a material of the file. A mesh without texture coordinates must not have a texture, so a textured
    /// material may be written twice.
    int Find(std::uint32_t material, bool hasUVs);

private:
    int Write(std::uint32_t material, bool hasUVs);

    /// -1 for none, and for an image that glTF does not take.
    int FindTexture(std::int32_t texture);

    Quorlan::IGeometryReader const& geometry_;
    tinygltf::Model& gltf_;
    GltfData& data_;
    std::map<std::pair<std::uint32_t, bool>, int> materials_;
    std::map<std::int32_t, int> textures_;
};

}  // namespace QuorlanProgram
