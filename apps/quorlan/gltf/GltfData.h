#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tinygltf {
class Model;
}

namespace QuorlanProgram {

/// The geometry of one shape as the GPU takes it. Normals and texture coordinates are empty or one per position.
struct GltfMesh {
    std::vector<std::array<float, 3>> positions;
    std::vector<std::array<float, 3>> normals;
    std::vector<std::array<float, 2>> uvs;
    std::vector<std::uint16_t> triangles;  ///< three corner indices each
    bool isLineList = false;               ///< positions are the ends of segments, two by two; no triangles
};

/// Where the accessors of a mesh stand; -1 for what it does not have.
struct GltfAccessors {
    int positions = -1;
    int normals = -1;
    int uvs = -1;
    int indices = -1;
};

/// Collects vertex data in one binary buffer, one view per kind of attribute, so that a file of thousands of shapes has
/// four views and not tens of thousands.
class GltfData {
public:
    GltfData();

    /// REQUIRES: the mesh has at least one position.
    GltfAccessors Add(GltfMesh const& mesh);

    /// A view of an encoded image. RETURNS the index of the buffer view in the finished file.
    int AddImage(std::vector<char> const& bytes);

    /// Moves everything into the model: buffer, views and accessors.
    void Finish(tinygltf::Model& model);

private:
    enum View { kPositions, kNormals, kUVs, kIndices, kViewCount };

    struct Accessor {
        View view;
        std::size_t offset;
        std::size_t count;
        std::array<double, 3> min;
        std::array<double, 3> max;
    };

    template <class Element>
    int AddAccessor(View view, std::vector<Element> const& elements);

    std::array<std::vector<unsigned char>, kViewCount> bytes_;
    std::vector<std::vector<char>> images_;
    std::vector<Accessor> accessors_;
};

}  // namespace QuorlanProgram
