#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/corefinement.h>
#include <CGAL/Polygon_mesh_processing/orientation.h>
#include <CGAL/Polygon_mesh_processing/polygon_soup_to_polygon_mesh.h>
#include <CGAL/Polygon_mesh_processing/repair_polygon_soup.h>
#include <CGAL/Polygon_mesh_processing/self_intersections.h>
#include <CGAL/Polygon_mesh_processing/triangulate_faces.h>
#include <CGAL/Surface_mesh.h>

#include <exception>

#include "cut/Boolean.h"

namespace QuorlanProgram::Import {

namespace {

namespace Processing = CGAL::Polygon_mesh_processing;

using Kernel = CGAL::Exact_predicates_exact_constructions_kernel;
using Surface = CGAL::Surface_mesh<Kernel::Point_3>;

/// A closed, outward surface of triangles. RETURNS false if the shape is none.
bool ToSurface(Surface& surface, FacetedBRep const& shape) {
    std::vector<Kernel::Point_3> points;
    points.reserve(shape.vertices.size());
    for (auto const& v : shape.vertices) points.emplace_back(v.x, v.y, v.z);
    std::vector<std::vector<std::size_t>> polygons;
    polygons.reserve(shape.faces.size());
    for (auto const& face : shape.faces) polygons.emplace_back(face.begin(), face.end());
    Processing::repair_polygon_soup(points, polygons);
    Processing::orient_polygon_soup(points, polygons);
    if (!Processing::is_polygon_soup_a_polygon_mesh(polygons)) return false;
    Processing::polygon_soup_to_polygon_mesh(points, polygons, surface);
    if (!Processing::triangulate_faces(surface) || !CGAL::is_closed(surface)) return false;
    if (Processing::does_self_intersect(surface)) return false;
    Processing::orient_to_bound_a_volume(surface);
    return true;
}

FacetedBRep ToShape(Surface const& surface) {
    FacetedBRep shape;
    std::vector<std::uint32_t> place(surface.number_of_vertices() + surface.number_of_removed_vertices());
    for (auto const vertex : surface.vertices()) {
        auto const& p = surface.point(vertex);
        place[vertex.idx()] = static_cast<std::uint32_t>(shape.vertices.size());
        shape.vertices.push_back({CGAL::to_double(p.x()), CGAL::to_double(p.y()), CGAL::to_double(p.z())});
    }
    for (auto const face : surface.faces()) {
        auto& loop = shape.faces.emplace_back();
        for (auto const vertex : CGAL::vertices_around_face(surface.halfedge(face), surface)) {
            loop.push_back(place[vertex.idx()]);
        }
    }
    return shape;
}

}  // namespace

std::optional<FacetedBRep> CombineExactly(FacetedBRep const& a, FacetedBRep const& b, BooleanOperation operation) {
    try {
        Surface first;
        Surface second;
        if (!ToSurface(first, a) || !ToSurface(second, b)) return std::nullopt;
        Surface result;
        auto const isDone = operation == BooleanOperation::kDifference
                                ? Processing::corefine_and_compute_difference(first, second, result)
                                : Processing::corefine_and_compute_intersection(first, second, result);
        if (!isDone) return std::nullopt;
        return ToShape(result);
    } catch (std::bad_alloc const&) {
        throw;
    } catch (std::exception const&) {  // a violated precondition
        return std::nullopt;
    }
}

bool HasExactBooleans() { return true; }

}  // namespace QuorlanProgram::Import
