#include "peers/CgalMesh.h"

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/compute_normal.h>
#include <CGAL/Polygon_mesh_processing/measure.h>
#include <CGAL/Surface_mesh.h>

namespace Quorlan::Benchmarks {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using SurfaceMesh = CGAL::Surface_mesh<Kernel::Point_3>;
namespace Processing = CGAL::Polygon_mesh_processing;

}  // namespace

struct CgalMesh::Mesh {
    SurfaceMesh surface;
    SurfaceMesh::Property_map<SurfaceMesh::Vertex_index, Kernel::Vector_3> vertexNormals;
    SurfaceMesh::Property_map<SurfaceMesh::Face_index, Kernel::Vector_3> faceNormals;
};

CgalMesh::CgalMesh(std::vector<TrianglePoint> const& points, std::vector<TriangleIndices> const& triangles)
    : mesh_(std::make_unique<Mesh>()) {
    auto& surface = mesh_->surface;
    for (auto const& p : points) surface.add_vertex({p[0], p[1], p[2]});
    for (auto const& t : triangles) {
        surface.add_face(SurfaceMesh::Vertex_index(t[0]), SurfaceMesh::Vertex_index(t[1]),
                         SurfaceMesh::Vertex_index(t[2]));
    }
    mesh_->vertexNormals =
        surface.add_property_map<SurfaceMesh::Vertex_index, Kernel::Vector_3>("v:normals", CGAL::NULL_VECTOR).first;
    mesh_->faceNormals =
        surface.add_property_map<SurfaceMesh::Face_index, Kernel::Vector_3>("f:normals", CGAL::NULL_VECTOR).first;
}

CgalMesh::CgalMesh(CgalMesh&&) noexcept = default;
CgalMesh::~CgalMesh() = default;

double CgalMesh::MeasureQuantities() const {
    auto const& surface = mesh_->surface;
    auto const centroid = Processing::centroid(surface);
    return Processing::area(surface) + Processing::volume(surface) + centroid.x() + centroid.y() + centroid.z();
}

double CgalMesh::ComputeNormals() {
    Processing::compute_normals(mesh_->surface, mesh_->vertexNormals, mesh_->faceNormals);
    return mesh_->vertexNormals[SurfaceMesh::Vertex_index(0)].x();
}

}  // namespace Quorlan::Benchmarks
