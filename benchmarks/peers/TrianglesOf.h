#pragma once

#include "peers/CgalMesh.h"
#include "support/MeshShapes.h"

#include <Tools/VertexNormalBuilder.h>

#include <vector>

namespace Quorlan::Benchmarks {

/// The triangles of a shape, for peers that want them given.
struct Triangles {
    std::vector<TrianglePoint> points;
    std::vector<TriangleIndices> indices;
};

inline Triangles TrianglesOf(Testing::RawBRep const& shape) {
    Tools::VertexNormalBuilder mesh;
    mesh.BuildBRep(Testing::ModelOf(shape), 0, 0.5F);
    Triangles triangles;
    for (auto const& p : mesh.GetPositions()) triangles.points.push_back({p.x, p.y, p.z});
    auto const& corners = mesh.GetCorners();
    for (auto const& t : mesh.GetTriangles()) {
        triangles.indices.push_back({corners[t.a].position, corners[t.b].position, corners[t.c].position});
    }
    return triangles;
}

/// The same shape with a triangle for each face.
inline Testing::RawBRep Triangulated(Testing::RawBRep const& shape) {
    Testing::RawBRep result;
    result.vertices = shape.vertices;
    for (auto const& t : TrianglesOf(shape).indices) {
        result.faces->push_back(std::vector<std::uint16_t>{
            static_cast<std::uint16_t>(t[0]), static_cast<std::uint16_t>(t[1]), static_cast<std::uint16_t>(t[2])});
    }
    return result;
}

}  // namespace Quorlan::Benchmarks
