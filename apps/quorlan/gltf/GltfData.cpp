#include "gltf/GltfData.h"

#include "gltf/TinyGltf.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace QuorlanProgram {
namespace {

/// [bytes] Views and accessors of four-byte components start at multiples of this.
constexpr std::size_t kAlignment = 4;

void Align(std::vector<unsigned char>& bytes) {
    bytes.resize((bytes.size() + kAlignment - 1) / kAlignment * kAlignment);
}

}  // namespace

GltfData::GltfData() = default;

template <class Element>
int GltfData::AddAccessor(View view, std::vector<Element> const& elements) {
    auto& bytes = bytes_[view];
    Align(bytes);
    accessors_.push_back({view, bytes.size(), elements.size(), {}, {}});
    auto const* const first = reinterpret_cast<unsigned char const*>(elements.data());
    bytes.insert(bytes.end(), first, first + elements.size() * sizeof(Element));
    return static_cast<int>(accessors_.size()) - 1;
}

GltfAccessors GltfData::Add(GltfMesh const& mesh) {
    GltfAccessors accessors;
    accessors.positions = AddAccessor(kPositions, mesh.positions);
    auto& bounds = accessors_.back();
    std::copy(mesh.positions[0].begin(), mesh.positions[0].end(), bounds.min.begin());
    bounds.max = bounds.min;
    for (auto const& position : mesh.positions) {
        for (std::size_t i = 0; i < 3; ++i) {
            bounds.min[i] = std::min(bounds.min[i], static_cast<double>(position[i]));
            bounds.max[i] = std::max(bounds.max[i], static_cast<double>(position[i]));
        }
    }
    if (!mesh.normals.empty()) accessors.normals = AddAccessor(kNormals, mesh.normals);
    if (!mesh.uvs.empty()) accessors.uvs = AddAccessor(kUVs, mesh.uvs);
    if (!mesh.triangles.empty()) accessors.indices = AddAccessor(kIndices, mesh.triangles);
    return accessors;
}

int GltfData::AddImage(std::vector<char> const& bytes) {
    images_.push_back(bytes);
    return static_cast<int>(images_.size()) - 1;
}

void GltfData::Finish(tinygltf::Model& model) {
    tinygltf::Buffer buffer;
    auto const addView = [&](unsigned char const* bytes, std::size_t size, int target, std::size_t stride) {
        Align(buffer.data);
        tinygltf::BufferView view;
        view.buffer = 0;
        view.byteOffset = buffer.data.size();
        view.byteLength = size;
        view.target = target;
        view.byteStride = stride;
        buffer.data.insert(buffer.data.end(), bytes, bytes + size);
        model.bufferViews.push_back(std::move(view));
        return static_cast<int>(model.bufferViews.size()) - 1;
    };
    // Images come first: their views are numbered as AddImage said.
    for (auto const& image : images_) {
        addView(reinterpret_cast<unsigned char const*>(image.data()), image.size(), 0, 0);
    }
    std::array<int, kViewCount> viewIndices{};
    for (std::size_t i = 0; i < kViewCount; ++i) {
        // Several accessors share a view of vertices, so the view must say how far its elements are apart.
        bool const isVertexData = i != kIndices;
        int const target = isVertexData ? TINYGLTF_TARGET_ARRAY_BUFFER : TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER;
        std::size_t const stride = !isVertexData ? 0 : sizeof(float) * (i == kUVs ? 2 : 3);
        if (!bytes_[i].empty()) viewIndices[i] = addView(bytes_[i].data(), bytes_[i].size(), target, stride);
    }
    for (auto const& source : accessors_) {
        tinygltf::Accessor accessor;
        accessor.bufferView = viewIndices[source.view];
        accessor.byteOffset = source.offset;
        accessor.count = source.count;
        accessor.componentType =
            source.view == kIndices ? TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT : TINYGLTF_COMPONENT_TYPE_FLOAT;
        accessor.type = source.view == kIndices ? TINYGLTF_TYPE_SCALAR
                        : source.view == kUVs   ? TINYGLTF_TYPE_VEC2
                                                : TINYGLTF_TYPE_VEC3;
        if (source.view == kPositions) {
            accessor.minValues.assign(source.min.begin(), source.min.end());
            accessor.maxValues.assign(source.max.begin(), source.max.end());
        }
        model.accessors.push_back(std::move(accessor));
    }
    if (!buffer.data.empty()) model.buffers.push_back(std::move(buffer));
}

}  // namespace QuorlanProgram
