#pragma once

#include <array>
#include <memory>
#include <vector>

namespace Quorlan::Benchmarks {

using TrianglePoint = std::array<float, 3>;
using TriangleIndices = std::array<unsigned, 3>;

/// A closed triangle mesh in CGAL's `Surface_mesh` with double coordinates (the kernel of inexact constructions).
class CgalMesh {
public:
    CgalMesh(std::vector<TrianglePoint> const& points, std::vector<TriangleIndices> const& triangles);
    CgalMesh(CgalMesh&&) noexcept;
    ~CgalMesh();

    /// The sum of area, volume and the centroid's coordinates, by `Polygon_mesh_processing`.
    double MeasureQuantities() const;

    /// `compute_vertex_normals` with face normals that are computed first; it knows no creases. Returns one of them.
    double ComputeNormals();

private:
    struct Mesh;
    std::unique_ptr<Mesh> mesh_;
};

}  // namespace Quorlan::Benchmarks
