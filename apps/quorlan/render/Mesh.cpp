#include "render/Mesh.h"

#include <algorithm>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vector3f;

constexpr float kCreaseAngle = 0.6f;  ///< [rad] above which an edge stays sharp
constexpr std::uint32_t kKindWithNormals = 7;

Vector3f ToVector(glm::vec3 const& v) { return {v.x, v.y, v.z}; }

Vector3f Unit(Vector3f const& v) {
    auto const length = Length(v);
    return length > 0 ? v / length : Vector3f{0, 0, 1};
}

}  // namespace

Mesh MeshMaker::Make(std::uint32_t definition, std::uint32_t kind) {
    Mesh mesh;
    if (!builder_.Build(model_, definition, kCreaseAngle)) return mesh;
    auto const& positions = builder_.GetPositions();
    auto const& normals = builder_.GetNormals();
    auto const& uvs = builder_.GetTexCoords();
    for (auto const& corner : builder_.GetCorners()) {
        auto const normal = kind == kKindWithNormals ? corner.position : corner.normal;  // stored ones go by position
        mesh.positions.push_back(ToVector(positions[corner.position]));
        mesh.normals.push_back(normal < normals.size() ? Unit(ToVector(normals[normal])) : Vector3f{0, 0, 1});
        if (!uvs.empty()) mesh.uvs.push_back({uvs[corner.position].x, uvs[corner.position].y});
    }
    auto const count = mesh.positions.size();
    for (auto const& t : builder_.GetTriangles()) {
        if (std::max({t.a, t.b, t.c}) < count) mesh.triangles.push_back({t.a, t.b, t.c});
    }
    return mesh;
}

}  // namespace QuorlanProgram
