#include <Tools/Identifiers.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <chrono>
#include <cmath>
#include <map>
#include <optional>

#include "ImportSources.h"
#include "ModelParts.h"
#include "mesh/NameGuid.h"
#include "shape/CoplanarFaces.h"
#include "step/WideText.h"

namespace QuorlanProgram::Import {

namespace {

constexpr int kDeepestNode = 1000;

Matrix4 ToMatrix(aiMatrix4x4 const& m) {
    Matrix4 matrix;
    matrix.m = {m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, 0, 0, 0, 1};
    return matrix;
}

/// The format's own axes and unit in metres with Z up: glTF is in metres and Y is up.
Matrix4 ToWorld(bool isGltf, double metresPerUnit) {
    Matrix4 matrix;
    if (isGltf) {
        matrix.m = {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    } else {
        matrix.m = {metresPerUnit, 0, 0, 0, 0, metresPerUnit, 0, 0, 0, 0, metresPerUnit, 0, 0, 0, 0, 1};
    }
    return matrix;
}

std::uint8_t ToByte(float share) { return static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.F, 1.F) * 255)); }

/// Nothing of the material that the library makes up for meshes without one.
std::optional<MaterialRecord> ToMaterial(aiMaterial const& source) {
    aiString name;
    if (source.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS && name == aiString(AI_DEFAULT_MATERIAL_NAME)) return {};
    aiColor4D colour;
    auto const isBase = source.Get(AI_MATKEY_BASE_COLOR, colour) == aiReturn_SUCCESS;
    if (!isBase && source.Get(AI_MATKEY_COLOR_DIFFUSE, colour) != aiReturn_SUCCESS) return {};
    float opacity = 1;
    if (!isBase && source.Get(AI_MATKEY_OPACITY, opacity) == aiReturn_SUCCESS) colour.a = opacity;
    int isTwoSided = 0;
    source.Get(AI_MATKEY_TWOSIDED, isTwoSided);
    MaterialRecord material;
    material.color = {ToByte(colour.r), ToByte(colour.g), ToByte(colour.b), ToByte(colour.a)};
    material.twoSided = isTwoSided != 0;
    return material;
}

/// A mesh, in the coordinates of its node.
struct MeshContent {
    FacetedBRep shape;
    Quorlan::GraphicsContainer lines;
    std::size_t droppedFaces = 0;
};

MeshContent ReadMesh(aiMesh const& mesh) {
    MeshContent content;
    ShapeBuilder builder;
    auto const at = [&](unsigned index) -> Vertex {
        auto const& v = mesh.mVertices[index];
        return {v.x, v.y, v.z};
    };
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        auto const& face = mesh.mFaces[i];
        Loop loop;
        for (unsigned j = 0; j < face.mNumIndices; ++j) loop.push_back(at(face.mIndices[j]));
        if (loop.size() == 2) {
            content.lines.lines.push_back({loop[0], loop[1]});
        } else if (loop.size() > 2) {
            builder.AddFace(loop);
        }
    }
    content.shape = builder.Take();
    content.droppedFaces = builder.GetDroppedCount();
    return content;
}

/// Writes the nodes of a scene, each with its meshes as one entity.
class NodeWriter {
public:
    NodeWriter(aiScene const& scene, ModelParts& parts, ImportOptions const& options, ImportReport& report)
        : scene_(scene), parts_(parts), options_(options), report_(report) {}

    void Write(aiNode const& node, Matrix4 const& worldOfParent, std::string const& pathOfParent, int depth = 0) {
        if (depth == kDeepestNode) return;
        auto const world = worldOfParent * ToMatrix(node.mTransformation);
        std::string const name = node.mName.C_Str();
        auto const path = pathOfParent.empty() ? name : pathOfParent + '/' + name;
        if (node.mNumMeshes > 0) WriteEntity(node, world, path);
        for (unsigned i = 0; i < node.mNumChildren; ++i) Write(*node.mChildren[i], world, path, depth + 1);
    }

private:
    void WriteEntity(aiNode const& node, Matrix4 const& world, std::string const& path) {
        ++report_.products;
        if (options_.progress) options_.progress("meshes", report_.products, std::max(scene_.mNumMeshes, 1u));
        auto const isRigid = IsRigid(world);
        auto const entity = AddEntity(node.mName.C_Str(), MakeUnique(path), isRigid ? world : Matrix4());
        auto const written = report_.instances;
        for (unsigned i = 0; i < node.mNumMeshes; ++i) {
            WriteMesh(entity, path, *scene_.mMeshes[node.mMeshes[i]], isRigid ? Matrix4() : world);
        }
        if (report_.instances == written) report_.productsWithoutShape.push_back(path);
    }

    /// Of several nodes of one path, the later ones get a number.
    std::string MakeUnique(std::string const& path) {
        auto const count = ++paths_[path];
        return count == 1 ? path : path + '#' + std::to_string(count);
    }

    Quorlan::EntityIndex_t AddEntity(std::string const& name, std::string const& path, Matrix4 const& placement) {
        if (!options_.guidSeed) return parts_.AddNamedEntity(path, ToWide(name), placement);
        auto const guid = MakeNameGuid(*options_.guidSeed, path);
        return parts_.AddEntity(Quorlan::Tools::GuidToIfcGuid(guid), ToWide(name), placement);
    }

    void WriteMesh(Quorlan::EntityIndex_t entity, std::string const& path, aiMesh const& mesh, Matrix4 const& baked) {
        auto content = ReadMesh(mesh);
        Transform(content.shape, baked);
        for (auto& line : content.lines.lines) {
            line = {TransformPoint(baked, line.start), TransformPoint(baked, line.end)};
        }
        if (options_.joinsFaces) content.shape = JoinCoplanarFaces(content.shape);
        if (content.droppedFaces > 0) report_.droppedFaces[path] += content.droppedFaces;
        if (!content.shape.faces.empty()) NoteShape(content.shape);
        auto const material = ToMaterial(*scene_.mMaterials[mesh.mMaterialIndex]);
        parts_.AddInstances(entity, parts_.AddShape(content.shape), {}, material, {});
        parts_.AddInstances(entity, parts_.AddGraphics(content.lines), {}, material, {});
    }

    /// A mesh does not say that it is a solid; one that is closed is.
    void NoteShape(FacetedBRep& shape) {
        ++(options_.joinsFaces ? report_.joinedShapes : report_.modelledShapes);
        if (!IsClosed(shape)) return;
        ++report_.solids;
        if (GetVolume(shape) < 0) Flip(shape);
    }

    aiScene const& scene_;
    ModelParts& parts_;
    ImportOptions const& options_;
    ImportReport& report_;
    std::map<std::string, std::size_t> paths_;
};

std::string FirstLine(std::string const& text) { return text.substr(0, text.find('\n')); }

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

std::string AddMeshFile(ModelParts& parts, std::string const& path, ImportOptions const& options,
                        ImportReport& report) {
    auto const start = std::chrono::steady_clock::now();
    if (options.progress) options.progress("reading", 0, 1);
    Assimp::Importer importer;
    // The root's name is the file's for some formats; entities are named by what stands below it.
    auto const* scene = importer.ReadFile(path, aiProcess_ValidateDataStructure);
    if (!scene || !scene->mRootNode)
        return "no mesh can be read from this file: " + FirstLine(importer.GetErrorString());
    auto const ending = path.substr(path.rfind('.'));
    auto const isGltf = ending.find_first_of("gG") == 1;
    report.schema = ending.substr(1);
    report.secondsRead = SecondsSince(start);
    NodeWriter(*scene, parts, options, report).Write(*scene->mRootNode, ToWorld(isGltf, options.metresPerUnit), {});
    report.secondsShape = SecondsSince(start) - report.secondsRead;
    return {};
}

}  // namespace QuorlanProgram::Import
