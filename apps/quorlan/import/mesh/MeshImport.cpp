#include <Tools/Identifiers.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <assimp/Importer.hpp>
#include <chrono>
#include <cmath>
#include <map>
#include <optional>

#include "ImportSources.h"
#include "ModelParts.h"
#include "mesh/NameGuid.h"
#include "mesh/NodeExtras.h"
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

/// Colours are stored as sRGB (IEC 61966-2-1).
float ToSrgb(float linear) {
    return linear <= 0.0031308F ? linear * 12.92F : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

/// Nothing of the material that the library makes up for meshes without one. The colours of glTF are linear.
std::optional<MaterialRecord> ToMaterial(aiMaterial const& source, bool isLinear) {
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
    auto const encode = [&](float share) { return ToByte(isLinear ? ToSrgb(share) : share); };
    material.color = {encode(colour.r), encode(colour.g), encode(colour.b), ToByte(colour.a)};
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

/// Writes the nodes of a scene, each with its meshes as one entity; those with the same GUID in their extras as one.
class NodeWriter {
public:
    NodeWriter(aiScene const& scene, bool isGltf, ModelParts& parts, ImportOptions const& options, ImportReport& report)
        : scene_(scene), isGltf_(isGltf), parts_(parts), options_(options), report_(report) {}

    void Write(aiNode const& node, Matrix4 const& worldOfParent, std::string const& pathOfParent, int depth = 0) {
        if (depth == kDeepestNode) return;
        auto const world = worldOfParent * ToMatrix(node.mTransformation);
        std::string const name = node.mName.C_Str();
        auto const path = pathOfParent.empty() ? name : pathOfParent + '/' + name;
        if (node.mNumMeshes > 0) WriteMeshes(node, world, path);
        for (unsigned i = 0; i < node.mNumChildren; ++i) Write(*node.mChildren[i], world, path, depth + 1);
    }

private:
    struct Entity {
        Quorlan::EntityIndex_t index;
        Matrix4 world;  ///< rigid
    };

    void WriteMeshes(aiNode const& node, Matrix4 const& world, std::string const& path) {
        ++report_.products;
        if (options_.progress) options_.progress("meshes", report_.products, std::max(scene_.mNumMeshes, 1u));
        auto const extras = ReadExtras(node);
        auto const isRigid = IsRigid(world);
        auto const entity = FindEntity(node, extras.guid, path, isRigid ? world : Matrix4());
        auto const toEntity = InvertRigid(entity.world) * world;
        auto const written = report_.instances;
        for (unsigned i = 0; i < node.mNumMeshes; ++i) {
            auto const& mesh = *scene_.mMeshes[node.mMeshes[i]];
            auto const material = ToMaterial(*scene_.mMaterials[mesh.mMaterialIndex], isGltf_);
            for (auto const& definitions : AddMesh(mesh, path, isRigid ? Matrix4() : toEntity)) {
                parts_.AddInstances(entity.index, definitions, isRigid ? toEntity : Matrix4(), material, extras.layer);
            }
        }
        if (report_.instances == written) report_.productsWithoutShape.push_back(path);
    }

    Entity FindEntity(aiNode const& node, std::string const& guid, std::string const& path, Matrix4 const& world) {
        if (guid.empty()) return {AddEntity(node.mName.C_Str(), MakeUnique(path), world), world};
        auto const known = entities_.find(guid);
        if (known != entities_.end()) return known->second;
        Entity const entity{parts_.AddEntity(guid, ToWide(node.mName.C_Str()), world), world};
        return entities_.emplace(guid, entity).first->second;
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

    /// The faces of a mesh and its lines, both after `baked`.
    std::array<ModelParts::Definitions, 2> AddMesh(aiMesh const& mesh, std::string const& path, Matrix4 const& baked) {
        auto content = ReadMesh(mesh);
        Transform(content.shape, baked);
        for (auto& line : content.lines.lines) {
            line = {TransformPoint(baked, line.start), TransformPoint(baked, line.end)};
        }
        if (options_.joinsFaces) content.shape = JoinCoplanarFaces(content.shape);
        if (content.droppedFaces > 0) report_.droppedFaces[path] += content.droppedFaces;
        if (!content.shape.faces.empty()) NoteShape(content.shape);
        return {parts_.AddShape(content.shape), parts_.AddGraphics(content.lines)};
    }

    /// A mesh does not say that it is a solid; one that is closed is.
    void NoteShape(FacetedBRep& shape) {
        ++(options_.joinsFaces ? report_.joinedShapes : report_.modelledShapes);
        if (!IsClosed(shape)) return;
        ++report_.solids;
        if (GetVolume(shape) < 0) Flip(shape);
    }

    aiScene const& scene_;
    bool isGltf_;
    ModelParts& parts_;
    ImportOptions const& options_;
    ImportReport& report_;
    std::map<std::string, std::size_t> paths_;
    std::map<std::string, Entity> entities_;  ///< by the GUID in their extras
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
    auto const& root = *scene->mRootNode;
    auto const world = MakeTranslation(ReadExtras(root).offset) * ToWorld(isGltf, options.metresPerUnit);
    NodeWriter(*scene, isGltf, parts, options, report).Write(root, world, {});
    report.secondsShape = SecondsSince(start) - report.secondsRead;
    return {};
}

}  // namespace QuorlanProgram::Import
