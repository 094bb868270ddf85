#include <ImportSources.h>
#include <ModelParts.h>
#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/Identifiers.h>
#include <gmock/gmock.h>

#include <filesystem>

#include "mesh/NameGuid.h"
#include "support/FolderTest.h"

/// Meshes: OBJ, PLY, STL and glTF.
namespace Quorlan::Testing {
namespace {

namespace fs = std::filesystem;
using namespace QuorlanProgram::Import;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

/// A unit cube of twelve triangles, from (x, 0, 0), as OBJ; vertices are counted on from `first`.
std::string MakeCube(double x, int first) {
    std::string text;
    for (int i = 0; i < 8; ++i) {
        text +=
            "v " + std::to_string(x + (i & 1)) + ' ' + std::to_string(i >> 1 & 1) + ' ' + std::to_string(i >> 2) + '\n';
    }
    constexpr int kTriangles[12][3] = {{0, 3, 1}, {0, 2, 3}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                                       {2, 7, 3}, {2, 6, 7}, {0, 6, 2}, {0, 4, 6}, {1, 3, 7}, {1, 7, 5}};
    for (auto const& t : kTriangles) {
        text += "f " + std::to_string(first + t[0]) + ' ' + std::to_string(first + t[1]) + ' ' +
                std::to_string(first + t[2]) + '\n';
    }
    return text;
}

class MeshImport : public FolderTest {
protected:
    /// Imports a file and opens the model.
    IModelReader const& Import(fs::path const& path, ImportOptions const& options = {}) {
        ModelParts parts;
        report_ = {};
        parts.BeginFile(report_);
        EXPECT_EQ(AddMeshFile(parts, path.string(), options, report_), "");
        auto const model = parts.Create();
        EXPECT_TRUE(ModelValidator().Build(model));
        storage_ = ModelStorage::FromBuffer(model);
        return storage_->GetModelReader();
    }

    static FacetedBRep GetShape(IModelReader const& model, std::uint32_t definition) {
        FacetedBRep shape;
        EXPECT_TRUE(model.GetGeometry().GetFacetedBRep(shape, definition));
        return shape;
    }

    static InstanceRecord GetInstance(IModelReader const& model, std::uint32_t i) {
        InstanceRecord instance;
        model.GetGeometry().GetInstance(instance, i);
        return instance;
    }

    ImportReport report_;
    std::optional<ModelStorage> storage_;
};

TEST_F(MeshImport, TheObjectsOfAnObjAreEntitiesAndTheirTrianglesPolygons) {
    auto const& model = Import(Write("two.obj", "o left\n" + MakeCube(0, 1) + "o right\n" + MakeCube(3, 9)));
    ASSERT_EQ(model.GetEntities().GetCount(), 2u);
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 2u);
    ASSERT_EQ(model.GetGeometry().GetDefinitionCount(), 1u);  // the second is a moved copy
    auto const cube = GetShape(model, 0);
    EXPECT_THAT(cube.faces, SizeIs(6));
    EXPECT_TRUE(IsClosed(cube));
    EXPECT_NEAR(GetVolume(cube), 1, 1e-6);
    EXPECT_EQ(report_.solids, 2u);
    EXPECT_EQ(report_.CountWarnings(), 0u);
}

TEST_F(MeshImport, TrianglesStayWhereThatIsAsked) {
    ImportOptions options;
    options.joinsFaces = false;
    EXPECT_THAT(GetShape(Import(Write("one.obj", "o a\n" + MakeCube(0, 1)), options), 0).faces, SizeIs(12));
}

TEST_F(MeshImport, TheUnitOfAFormatWithoutOneIsGiven) {
    ImportOptions options;
    options.metresPerUnit = 0.001;
    auto const cube = GetShape(Import(Write("one.obj", "o a\n" + MakeCube(0, 1)), options), 0);
    EXPECT_NEAR(GetVolume(cube), 1e-9, 1e-15);
}

TEST_F(MeshImport, ASeedMakesTheSameGuidsOfTheSameNames) {
    ImportOptions options;
    options.guidSeed = "site";
    auto const path = Write("two.obj", "o left\n" + MakeCube(0, 1) + "o right\n" + MakeCube(3, 9));
    auto const read = [&] {
        auto const& model = Import(path, options);
        std::vector<std::string> guids(2);
        for (std::uint32_t i = 0; i < 2; ++i) {
            EntityIdentifier identifier;
            model.GetEntities().GetIdentifier(identifier, i);
            EXPECT_EQ(identifier.kind, 0u);
            model.GetEntities().GetGuidText(guids[i], identifier.reference);
        }
        return guids;
    };
    auto const first = read();
    EXPECT_EQ(first, read());
    EXPECT_NE(first[0], first[1]);
    options.guidSeed = "other site";
    EXPECT_NE(first, read());
}

TEST_F(MeshImport, WithoutASeedNamesIdentify) {
    auto const& model = Import(Write("one.obj", "o left\n" + MakeCube(0, 1)));
    EntityIdentifier identifier;
    model.GetEntities().GetIdentifier(identifier, 0);
    ASSERT_EQ(identifier.kind, 1u);
    std::string name;
    model.GetEntities().GetIdentifierString(name, identifier.reference);
    EXPECT_THAT(name, HasSubstr("left"));
}

TEST_F(MeshImport, MaterialsKeepTheirColourAndTransparency) {
    Write("colours.mtl", "newmtl glass\nKd 0 0.5 1\nd 0.25\n");
    auto const& model = Import(Write("one.obj", "mtllib colours.mtl\no a\nusemtl glass\n" + MakeCube(0, 1)));
    MaterialRecord material;
    model.GetGeometry().GetMaterial(material, GetInstance(model, 0).materialIndex);
    EXPECT_THAT(material.color, ElementsAre(0, 128, 255, 64));
}

TEST_F(MeshImport, AnStlHasNoMaterial) {
    auto const& model = Import(Write("one.stl",
                                     "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                                     "vertex 0 1 0\nendloop\nendfacet\nendsolid a\n"));
    EXPECT_EQ(GetInstance(model, 0).materialIndex, kInvalidIndex);
    EXPECT_THAT(GetShape(model, 0).faces, SizeIs(1));
    EXPECT_EQ(report_.solids, 0u);
}

TEST_F(MeshImport, APlyKeepsItsPolygons) {
    auto const& model = Import(Write("one.ply",
                                     "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                                     "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                                     "end_header\n0 0 0\n2 0 0\n2 2 0\n0 2 0\n4 0 1 2 3\n"));
    EXPECT_THAT(GetShape(model, 0).faces, ElementsAre(SizeIs(4)));
}

/// A glTF file of one triangle (0,0,0) (1,0,0) (0,1,0) in given nodes, below the scene's root 0.
std::string MakeGltf(std::string const& nodes, std::string const& color) {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[)" + nodes +
           R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]}],)"
           R"("materials":[{"name":"m","doubleSided":true,"pbrMetallicRoughness":{"baseColorFactor":)" +
           color +
           R"(}}],"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],)"
           R"("max":[1,1,0]}],"bufferViews":[{"buffer":0,"byteLength":36}],)"
           R"("buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,)"
           R"(AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]})";
}

TEST_F(MeshImport, AGltfIsTurnedSoThatZIsUpAndItsNodesArePlaced) {
    auto const& model =
        Import(Write("one.gltf", MakeGltf(R"({"name":"tri","mesh":0,"translation":[1,2,3]})", "[1,0,0.2140411,0.5]")));
    EntityIdentifier identifier;
    model.GetEntities().GetIdentifier(identifier, 0);
    EXPECT_DOUBLE_EQ(identifier.placement.offset.x, 1);
    EXPECT_DOUBLE_EQ(identifier.placement.offset.y, -3);
    EXPECT_DOUBLE_EQ(identifier.placement.offset.z, 2);
    auto const up = TransformDirection(identifier.placement.matrix, {0, 1, 0});
    EXPECT_NEAR(up.z, 1, 1e-6);
    MaterialRecord material;
    model.GetGeometry().GetMaterial(material, GetInstance(model, 0).materialIndex);
    EXPECT_THAT(material.color, ElementsAre(255, 0, 127, 128));  // the file's colours are linear
    EXPECT_TRUE(material.twoSided);
}

TEST_F(MeshImport, ExtrasOfAGltfTellGuidsLayersAndWhatWasTakenOffAllPositions) {
    auto const& model = Import(Write(
        "two.gltf",
        MakeGltf(
            R"({"name":"model","children":[1,2,3],"extras":{"offset":[85000.25,446000.5,7]}},)"
            R"({"name":"wall","mesh":0,"translation":[1,2,3],"extras":{"guid":"2O2Fr$t4X7Zf8NOew3FLOH","layer":"Walls"}},)"
            R"({"name":"wall","mesh":0,"translation":[2,2,3],"extras":{"guid":"2O2Fr$t4X7Zf8NOew3FLOH","layer":"Walls"}},)"
            R"({"name":"door","mesh":0,"extras":{"guid":"no GUID"}})",
            "[1,1,1,1]")));
    EXPECT_EQ(model.GetEntities().GetCount(), 2u);
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 3u);
    EntityIdentifier wall;
    model.GetEntities().GetIdentifier(wall, 0);
    std::string guid;
    model.GetEntities().GetGuidText(guid, wall.reference);
    EXPECT_EQ(guid, "2O2Fr$t4X7Zf8NOew3FLOH");
    EXPECT_DOUBLE_EQ(wall.placement.offset.x, 85001.25);
    EXPECT_DOUBLE_EQ(wall.placement.offset.y, 445997.5);
    EXPECT_DOUBLE_EQ(wall.placement.offset.z, 9);

    auto const second = GetInstance(model, 1);
    EXPECT_EQ(second.entityIndex, 0u);
    AffineTransform placement;
    model.GetGeometry().GetPlacement(placement, second.placementIndex);
    EXPECT_NEAR(Length(placement.offset - Vertex{1, 0, 0}), 0, 1e-9);
    std::string layer;
    model.GetGeometry().GetLayerName(layer, second.layerIndex);
    EXPECT_EQ(layer, "Walls");

    EntityIdentifier door;
    model.GetEntities().GetIdentifier(door, 1);
    EXPECT_EQ(door.kind, 1u);  // its path stands for it
    EXPECT_EQ(GetInstance(model, 2).layerIndex, kInvalidIndex);
}

TEST_F(MeshImport, WhatIsNoMeshIsRefusedInOneLine) {
    ModelParts parts;
    parts.BeginFile(report_);
    for (auto const* name : {"bad.gltf", "bad.ply", "bad.stl"}) {
        auto const error = AddMeshFile(parts, Write(name, "Dear reader").string(), {}, report_);
        EXPECT_NE(error, "") << name;
        EXPECT_EQ(error.find('\n'), std::string::npos);
    }
    EXPECT_NE(AddMeshFile(parts, (folder_ / "missing.obj").string(), {}, report_), "");
}

TEST(MeshFiles, AreToldByTheirEnding) {
    for (auto const* name : {"a.obj", "a.PLY", "b/c.d.stl", "x.gltf", "x.Glb"}) EXPECT_TRUE(IsMeshFile(name)) << name;
    for (auto const* name : {"a.ifc", "obj", "a.obj.ifc", "", "a."}) EXPECT_FALSE(IsMeshFile(name)) << name;
}

TEST(NameGuid, FollowsFromSeedAndNameAlone) {
    EXPECT_EQ(MakeNameGuid("a", "b"), MakeNameGuid("a", "b"));
    EXPECT_NE(MakeNameGuid("a", "b"), MakeNameGuid("ab", ""));
    EXPECT_NE(MakeNameGuid("a", "b"), MakeNameGuid("a", "c"));
    auto const text = Tools::GuidToText(MakeNameGuid("a", "b"));
    EXPECT_EQ(text[14], '8');
    EXPECT_THAT(std::string("89ab"), HasSubstr(text.substr(19, 1)));
}

}  // namespace
}  // namespace Quorlan::Testing
