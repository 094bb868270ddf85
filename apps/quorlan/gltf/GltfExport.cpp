#include "gltf/GltfExport.h"

#include "EntityLabel.h"
#include "ModelFile.h"
#include "gltf/GltfMaterials.h"
#include "gltf/ShapeMeshes.h"

#include <Tools/LodLineBuilder.h>
#include <Tools/PlacementBuilder.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

constexpr std::uint32_t kGraphicsContainer = 5;
constexpr unsigned kCylinderSides = 12;

/// [m] A matrix with a zero scale is not invertible, which glTF does not allow; thinner and shorter lines are shown
/// with this.
constexpr double kMinExtent = 1e-4;

/// Builds one glTF file.
class GltfExporter {
public:
    GltfExporter(std::vector<char> const& model, Quorlan::IModelReader const& reader, GltfOptions const& options)
        : model_(model),
          reader_(reader),
          options_(options),
          meshes_(model, options.creaseAngle),
          materials_(reader.GetGeometry(), gltf_, data_),
          labels_(LabelsOf(reader.GetEntities())) {
        auto const bounds = Unite(ComputeWorldBoxes(model));
        if (bounds) center_ = bounds->center;
    }

    std::string Run(GltfReport& report) {
        AddRoot();
        if (options_.levelOfDetailLines) {
            AddLines();
        } else {
            AddInstances();
        }
        data_.Finish(gltf_);
        report_.meshes = gltf_.meshes.size();
        report_.nodes = gltf_.nodes.size() - 1;
        report_.lostTriangles = meshes_.GetLostTriangleCount();
        report = report_;
        return Write();
    }

private:
    void AddRoot() {
        gltf_.asset.version = "2.0";
        gltf_.asset.generator = "quorlan";
        tinygltf::Node root;
        root.name = "model";
        double const half = std::sqrt(0.5);
        root.rotation = {-half, 0, 0, half};  // a quarter turn about X: Z up becomes Y up
        tinygltf::Value::Array const offset{tinygltf::Value(center_.x), tinygltf::Value(center_.y),
                                            tinygltf::Value(center_.z)};
        root.extras = tinygltf::Value(tinygltf::Value::Object{{"offset", tinygltf::Value(offset)}});
        gltf_.nodes.push_back(std::move(root));
        tinygltf::Scene scene;
        scene.nodes = {0};
        gltf_.scenes.push_back(std::move(scene));
        gltf_.defaultScene = 0;
    }

    void AddInstances() {
        Quorlan::Tools::PlacementBuilder placements;
        placements.Build(model_.data());
        for (std::uint32_t i = 0; i < placements.getPlacements().size(); ++i) {
            Quorlan::InstanceRecord instance;
            reader_.GetGeometry().GetInstance(instance, i);
            int const mesh = FindMesh(instance.definitionIndex, instance.materialIndex);
            if (mesh >= 0) AddNode(i, instance, mesh, placements.getPlacements()[i]);
        }
    }

    void AddLines() {
        Quorlan::Tools::LodLineBuilder builder;
        builder.Build(model_.data());
        auto const lines = builder.GetLodLines();
        for (std::uint32_t i = 0; i < lines.size(); ++i) {
            Quorlan::InstanceRecord instance;
            reader_.GetGeometry().GetInstance(instance, i);
            AddNode(i, instance, FindCylinder(lines[i].materialIndex), PlaceCylinder(lines[i]));
        }
    }

    /// Maps the unit cylinder onto the line.
    static Matrix4 PlaceCylinder(Quorlan::Tools::LodLine const& line) {
        Vertex const axis = line.end - line.start;
        double const length = std::max(Length(axis), kMinExtent);
        double const radius = std::max(line.radius, kMinExtent);
        Vertex const z = Length(axis) > 0 ? axis / Length(axis) : Vertex{0, 0, 1};
        Vertex const other = std::abs(z.x) < 0.5 ? Vertex{1, 0, 0} : Vertex{0, 1, 0};
        Vertex const cross = Cross(other, z);
        Vertex const x = cross / Length(cross);
        Vertex const y = Cross(z, x);
        Matrix4 matrix;
        matrix.m = {radius * x.x,
                    radius * y.x,
                    length * z.x,
                    line.start.x,
                    radius * x.y,
                    radius * y.y,
                    length * z.y,
                    line.start.y,
                    radius * x.z,
                    radius * y.z,
                    length * z.z,
                    line.start.z,
                    0,
                    0,
                    0,
                    1};
        return matrix;
    }

    void AddNode(std::uint32_t index, Quorlan::InstanceRecord const& instance, int mesh, Matrix4 const& placement) {
        bool const isFinite =
            std::all_of(placement.m.begin(), placement.m.end(), [](double value) { return std::isfinite(value); });
        if (!isFinite) return;
        tinygltf::Node node;
        auto const& label = labels_[instance.entityIndex];
        node.name = label.name;
        node.mesh = mesh;
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t row = 0; row < 4; ++row) node.matrix.push_back(placement(row, column));
        }
        node.matrix[12] -= center_.x;
        node.matrix[13] -= center_.y;
        node.matrix[14] -= center_.z;
        tinygltf::Value::Object extras{{"instance", tinygltf::Value(static_cast<int>(index))}};
        if (!label.guid.empty()) extras["guid"] = tinygltf::Value(label.guid);
        if (instance.layerIndex < reader_.GetGeometry().GetExtraContentCount()) {
            std::string layer;
            reader_.GetGeometry().GetLayerName(layer, instance.layerIndex);
            extras["layer"] = tinygltf::Value(layer);
        }
        node.extras = tinygltf::Value(std::move(extras));
        gltf_.nodes[0].children.push_back(static_cast<int>(gltf_.nodes.size()));
        gltf_.nodes.push_back(std::move(node));
    }

    /// The mesh of a definition in a material, written when it is first asked for; -1 for a shape without content.
    int FindMesh(std::uint32_t definition, std::uint32_t material) {
        auto const key = std::make_pair(definition, material);
        auto const entry = meshIndices_.find(key);
        if (entry != meshIndices_.end()) return entry->second;
        auto const& shape = FindShape(definition);
        return meshIndices_[key] = shape ? AddMesh(*shape, material, "definition " + std::to_string(definition)) : -1;
    }

    int FindCylinder(std::uint32_t material) {
        auto const key = std::make_pair(Quorlan::kInvalidIndex, material);
        auto const entry = meshIndices_.find(key);
        if (entry != meshIndices_.end()) return entry->second;
        auto& shape = shapes_[Quorlan::kInvalidIndex];
        if (!shape) shape = Shape{data_.Add(BuildUnitCylinder(kCylinderSides)), false};
        return meshIndices_[key] = AddMesh(*shape, material, "line");
    }

    struct Shape {
        GltfAccessors accessors;
        bool isLineList;
    };

    std::optional<Shape> const& FindShape(std::uint32_t definition) {
        auto const [entry, isNew] = shapes_.try_emplace(definition);
        if (!isNew) return entry->second;
        auto const& geometry = reader_.GetGeometry();
        auto const kind = geometry.GetDefinitionKind(definition);
        GltfMesh mesh;
        if (kind == kGraphicsContainer) {
            GeometryObjectLib::GraphicsContainer graphics;
            geometry.GetGraphicsContainer(graphics, definition);
            mesh = BuildLineList(graphics, options_.chordTolerance);
        } else {
            mesh = meshes_.BuildSolid(definition, kind);
        }
        if (mesh.positions.empty()) {
            ++report_.emptyDefinitions;
        } else {
            entry->second = Shape{data_.Add(mesh), mesh.isLineList};
        }
        return entry->second;
    }

    int AddMesh(Shape const& shape, std::uint32_t material, std::string name) {
        tinygltf::Primitive primitive;
        primitive.attributes["POSITION"] = shape.accessors.positions;
        if (shape.accessors.normals >= 0) primitive.attributes["NORMAL"] = shape.accessors.normals;
        if (shape.accessors.uvs >= 0) primitive.attributes["TEXCOORD_0"] = shape.accessors.uvs;
        primitive.indices = shape.accessors.indices;
        primitive.mode = shape.isLineList ? TINYGLTF_MODE_LINE : TINYGLTF_MODE_TRIANGLES;
        primitive.material = materials_.Find(material, shape.accessors.uvs >= 0);
        tinygltf::Mesh mesh;
        mesh.name = std::move(name);
        mesh.primitives.push_back(std::move(primitive));
        gltf_.meshes.push_back(std::move(mesh));
        return static_cast<int>(gltf_.meshes.size()) - 1;
    }

    std::string Write() {
        std::ostringstream stream;
        tinygltf::TinyGLTF writer;
        if (!writer.WriteGltfSceneToStream(&gltf_, stream, false, true)) {
            throw std::runtime_error("the glTF file could not be put together");
        }
        return stream.str();
    }

    std::vector<char> const& model_;
    Quorlan::IModelReader const& reader_;
    GltfOptions const options_;
    Vertex center_;
    tinygltf::Model gltf_;
    GltfData data_;
    ShapeMeshes meshes_;
    GltfMaterials materials_;
    std::vector<EntityLabel> labels_;
    std::map<std::uint32_t, std::optional<Shape>> shapes_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> meshIndices_;
    GltfReport report_;
};

}  // namespace

std::string ExportGltf(std::vector<char> const& model, Quorlan::IModelReader const& reader, GltfOptions const& options,
                       GltfReport& report) {
    return GltfExporter(model, reader, options).Run(report);
}

}  // namespace QuorlanProgram
