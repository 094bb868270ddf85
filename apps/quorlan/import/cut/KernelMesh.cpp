#include "cut/KernelMesh.h"

namespace QuorlanProgram::Import {

FacetedBRep ToPlainShape(MeshSet const& set) {
    FacetedBRep shape;
    shape.vertices.reserve(set.vertex_storage.size());
    for (auto const& vertex : set.vertex_storage) shape.vertices.push_back({vertex.v.x, vertex.v.y, vertex.v.z});
    for (auto const* mesh : set.meshes) {
        if (!mesh) continue;
        for (auto const* face : mesh->faces) {
            if (!face || !face->edge) continue;
            auto& loop = shape.faces.emplace_back();
            auto const* edge = face->edge;
            do {
                loop.push_back(static_cast<std::uint32_t>(edge->vert - set.vertex_storage.data()));
                edge = edge->next;
            } while (edge && edge != face->edge);
        }
    }
    return shape;
}

MeshSetPointer ToMeshSet(FacetedBRep const& shape) {
    std::vector<carve::geom::vector<3>> points;
    points.reserve(shape.vertices.size());
    for (auto const& v : shape.vertices) points.push_back(carve::geom::VECTOR(v.x, v.y, v.z));
    std::vector<int> faces;
    for (auto const& face : shape.faces) {
        faces.push_back(static_cast<int>(face.size()));
        faces.insert(faces.end(), face.begin(), face.end());
    }
    return std::make_shared<MeshSet>(points, shape.faces.size(), faces);
}

}  // namespace QuorlanProgram::Import
