#pragma once

#include <GeometryObjectLib/Vector3f.h>
#include <Quorlan/IModelReader.h>
#include <Tools/VertexNormalBuilder.h>

#include <array>
#include <cstdint>
#include <vector>

namespace QuorlanProgram {

/// The render mesh of one geometry definition, in definition coordinates: triangles over corners.
struct Mesh {
    std::vector<GeometryObjectLib::Vector3f> positions;  ///< by corner
    std::vector<GeometryObjectLib::Vector3f> normals;    ///< by corner, of unit length
    std::vector<std::array<float, 2>> uvs;               ///< by corner; empty for shapes without
    std::vector<std::array<std::uint32_t, 3>> triangles;
};

/// Makes one mesh after the other. REQUIRES: `model` is a trusted model buffer that outlives the maker.
class MeshMaker {
public:
    explicit MeshMaker(std::vector<char> const& model) : model_(model) {}

    /// A mesh without triangles for a definition that is no solid.
    Mesh Make(std::uint32_t definition, std::uint32_t kind);

private:
    std::vector<char> const& model_;
    Quorlan::Tools::VertexNormalBuilder builder_;
};

}  // namespace QuorlanProgram
