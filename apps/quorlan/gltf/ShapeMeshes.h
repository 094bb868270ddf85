#pragma once

#include "gltf/GltfData.h"

#include <GeometryObjectLib/GraphicsContainer.h>
#include <Tools/VertexNormalBuilder.h>

#include <cstdint>
#include <vector>

namespace QuorlanProgram {

/// Makes render meshes of the definitions of one model.
class ShapeMeshes {
public:
    /// `creaseAngle` [rad]; the model is kept by reference.
    ShapeMeshes(std::vector<char> const& model, float creaseAngle) : model_(model), creaseAngle_(creaseAngle) {}

    /// The mesh of a definition of kind 1, 6 or 7: one vertex per corner, normals of unit length. Triangles that name a
    /// corner beyond the 16-bit limit or a position that is not finite are left out.
    GltfMesh BuildSolid(std::uint32_t definition, std::uint32_t kind);

    /// [-] Triangles left out so far.
    std::uint64_t GetLostTriangleCount() const { return lostTriangleCount_; }

private:
    std::vector<char> const& model_;
    float creaseAngle_;
    Quorlan::Tools::VertexNormalBuilder builder_;
    std::uint64_t lostTriangleCount_ = 0;
};

/// Line graphics as a list of segments; arcs become chords that keep within `chordTolerance` [m] of them.
GltfMesh BuildLineList(GeometryObjectLib::GraphicsContainer const& graphics, double chordTolerance);

/// The lateral surface of the cylinder of radius 1 from z = 0 to z = 1, with both caps.
GltfMesh BuildUnitCylinder(unsigned sides);

}  // namespace QuorlanProgram
