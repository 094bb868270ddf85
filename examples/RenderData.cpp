/// Prepares what a renderer draws: one mesh per shape, and per instance the shape, a world matrix and a colour.

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/VertexNormalBuilder.h>

#include <cstdio>
#include <fstream>
#include <iterator>

using namespace Quorlan::Tools;

namespace {

struct Mesh {
    std::vector<float> positionsAndNormals;  ///< 6 numbers per vertex
    std::vector<std::uint16_t> indices;      ///< 3 per triangle
};

struct DrawCall {
    std::uint32_t mesh;
    Matrix4 worldFromMesh;
    std::array<std::uint8_t, 4> color;
};

/// A corner is what a renderer calls a vertex: one position with one normal.
Mesh MakeMesh(VertexNormalBuilder& builder, bool hasStoredNormals) {
    Mesh mesh;
    for (auto const& corner : builder.GetCorners()) {
        auto const& p = builder.GetPositions()[corner.position];
        auto const& n = builder.GetNormals()[hasStoredNormals ? corner.position : corner.normal];
        mesh.positionsAndNormals.insert(mesh.positionsAndNormals.end(), {p.x, p.y, p.z, n.x, n.y, n.z});
    }
    for (auto const& t : builder.GetTriangles()) mesh.indices.insert(mesh.indices.end(), {t.a, t.b, t.c});
    return mesh;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: RenderData IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});
    if (!Quorlan::ModelValidator().Build(model)) return std::fprintf(stderr, "%s is no sound model\n", argv[1]), 1;
    auto const storage = Quorlan::ModelStorage::FromBuffer(model);
    auto const& geometry = storage.GetModelReader().GetGeometry();

    // Shapes are shared: a mesh is made once, however often it is drawn. Edges sharper than 0.5 rad stay sharp.
    std::vector<Mesh> meshes(geometry.GetDefinitionCount());
    VertexNormalBuilder builder;
    for (std::uint32_t i = 0; i < meshes.size(); ++i) {
        if (builder.Build(model, i, 0.5f)) meshes[i] = MakeMesh(builder, geometry.GetDefinitionKind(i) == 7);
    }

    PlacementBuilder placements;
    if (!placements.Build(model.data())) return 1;
    std::vector<DrawCall> calls;
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
        geometry.GetInstance(instance, i);
        Quorlan::MaterialRecord material;
        material.color = {200, 200, 200, 255};
        if (instance.materialIndex != Quorlan::kInvalidIndex) geometry.GetMaterial(material, instance.materialIndex);
        calls.push_back({instance.definitionIndex, placements.getPlacements()[i], material.color});
    }

    std::size_t stored = 0, drawn = 0;
    for (auto const& mesh : meshes) stored += mesh.indices.size() / 3;
    for (auto const& call : calls) drawn += meshes[call.mesh].indices.size() / 3;
    std::printf("%zu meshes of %zu triangles, %zu draw calls of %zu\n", meshes.size(), stored, calls.size(), drawn);
    return drawn == 0 ? 1 : 0;
}
