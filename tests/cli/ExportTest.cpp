#include "cli/Program.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

namespace {

using ::testing::HasSubstr;
using namespace Quorlan::Testing;

class Export : public ProgramTest {
protected:
    /// Runs the export and returns the JSON chunk of the file.
    nlohmann::json ExportJson(std::string const& model, std::vector<std::string> const& options = {}) {
        std::vector<std::string> arguments = {"export", model, "-o", PathOf("out.glb")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto const run = RunQuorlan(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        auto const bytes = ReadBytes(PathOf("out.glb"));
        std::uint32_t header[5];
        EXPECT_GE(bytes.size(), sizeof(header));
        std::memcpy(header, bytes.data(), sizeof(header));
        EXPECT_EQ(header[0], 0x46546C67u);  // "glTF"
        EXPECT_EQ(header[1], 2u);
        EXPECT_EQ(header[2], bytes.size());
        return nlohmann::json::parse(bytes.begin() + 20, bytes.begin() + 20 + header[3]);
    }
};

TEST_F(Export, OneNodePerInstanceBelowARootThatTurnsZUp) {
    auto const gltf = ExportJson(WriteTwoCubes());
    ASSERT_EQ(gltf["nodes"].size(), 3u);
    EXPECT_EQ(gltf["scenes"][0]["nodes"], nlohmann::json::parse("[0]"));
    EXPECT_EQ(gltf["nodes"][0]["children"], nlohmann::json::parse("[1, 2]"));
    EXPECT_NEAR(gltf["nodes"][0]["rotation"][0], -0.70710678, 1e-7);
    EXPECT_EQ(gltf["nodes"][1]["name"], "near");
    EXPECT_EQ(gltf["nodes"][1]["extras"]["guid"], kNearGuid);
    EXPECT_EQ(gltf["nodes"][1]["extras"]["layer"], "Walls");
    EXPECT_EQ(gltf["nodes"][2]["extras"]["guid"], kFarGuid);
}

TEST_F(Export, AModelFarFromTheOriginKeepsItsPrecision) {
    auto const near = ExportJson(WriteTwoCubes());
    auto const far = ExportJson(WriteTwoCubes(1e6));
    for (std::size_t i = 1; i <= 2; ++i) {
        EXPECT_EQ(near["nodes"][i]["matrix"], far["nodes"][i]["matrix"]);
    }
    EXPECT_EQ(far["nodes"][0]["extras"]["offset"][0], 1e6 + near["nodes"][0]["extras"]["offset"][0].get<double>());
}

TEST_F(Export, MaterialsCarryColourAndTwoSidedness) {
    auto const gltf = ExportJson(WriteSample());
    std::size_t blended = 0;
    std::size_t textured = 0;
    std::size_t doubleSided = 0;
    for (auto const& material : gltf["materials"]) {
        blended += material.value("alphaMode", "OPAQUE") == "BLEND" ? 1 : 0;
        doubleSided += material.value("doubleSided", false) ? 1 : 0;
        textured += material["pbrMetallicRoughness"].contains("baseColorTexture") ? 1 : 0;
    }
    EXPECT_GT(blended, 0u);
    EXPECT_GT(doubleSided, 0u);
    EXPECT_GT(textured, 0u);
    EXPECT_FALSE(gltf["images"].empty());
}

TEST_F(Export, LineGraphicsBecomeLinePrimitives) {
    auto const gltf = ExportJson(WriteSample());
    auto const& meshes = gltf["meshes"];
    EXPECT_TRUE(std::any_of(meshes.begin(), meshes.end(),
                            [](auto const& mesh) { return mesh["primitives"][0].value("mode", 4) == 1; }));
}

TEST_F(Export, LevelOfDetailLinesAreOneSharedCylinder) {
    auto const gltf = ExportJson(WriteTwoCubes(), {"--lod"});
    ASSERT_EQ(gltf["nodes"].size(), 3u);
    ASSERT_EQ(gltf["meshes"].size(), 2u);  // two materials
    EXPECT_EQ(gltf["meshes"][0]["primitives"][0]["attributes"], gltf["meshes"][1]["primitives"][0]["attributes"]);
}

TEST_F(Export, TheSameModelGivesTheSameBytes) {
    auto const model = WriteSample();
    ExportJson(model);
    auto const first = ReadBytes(PathOf("out.glb"));
    ExportJson(model);
    EXPECT_EQ(ReadBytes(PathOf("out.glb")), first);
}

TEST_F(Export, TheInputIsNeverOverwritten) {
    auto const model = WriteTwoCubes();
    auto const before = ReadBytes(model);
    ExpectFailure(RunQuorlan({"export", model, "-o", model}), {model});
    EXPECT_EQ(ReadBytes(model), before);
}

TEST_F(Export, TheOfficialValidatorFindsNoError) {
    std::string const validator = QUORLAN_GLTF_VALIDATOR;
    bool const isThere = std::filesystem::exists(validator) && std::system("node --version >/dev/null 2>&1") == 0;
    if (!isThere) GTEST_SKIP() << "no node, or no npm package gltf-validator in " << validator;
    ExportJson(WriteSample());
    std::string const script =
        "const v=require(process.argv[1]);v.validateBytes(new Uint8Array(require('fs').readFileSync(process.argv[2])))"
        ".then(r=>process.exit(r.issues.numErrors>0?1:0))";
    std::string const command = "node -e \"" + script + "\" '" + validator + "' '" + PathOf("out.glb") + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST_F(Export, LodListsOneLinePerInstance) {
    auto const run = RunQuorlan({"lod", WriteTwoCubes(), "--format", "json"});
    auto const rows = nlohmann::json::parse(run.out);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1]["guid"], kFarGuid);
    EXPECT_NEAR(rows[0]["radius"], std::sqrt(0.5), 1e-6);  // a cube: the line along z
    EXPECT_NEAR(rows[0]["endZ"].get<double>() - rows[0]["startZ"].get<double>(), 1, 1e-6);
}

TEST_F(Export, LinesListsSegmentsAndArcs) {
    auto const run = RunQuorlan({"lines", WriteSample()});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.out, HasSubstr(",line,"));
    EXPECT_THAT(run.out, HasSubstr(",arc,"));
    auto const none = RunQuorlan({"lines", WriteTwoCubes(), "--format", "json"});
    EXPECT_EQ(nlohmann::json::parse(none.out).size(), 0u);
}

TEST_F(Export, MeshWritesTheCornersOfOneDefinition) {
    auto const model = WriteTwoCubes();
    auto const run = RunQuorlan({"mesh", model, "--definition", "0", "-o", PathOf("cube.obj")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    auto const bytes = ReadBytes(PathOf("cube.obj"));
    std::istringstream stream(std::string(bytes.begin(), bytes.end()));
    std::size_t positions = 0;
    std::size_t faces = 0;
    for (std::string line; std::getline(stream, line);) {
        positions += line.rfind("v ", 0) == 0 ? 1 : 0;
        faces += line.rfind("f ", 0) == 0 ? 1 : 0;
    }
    EXPECT_EQ(positions, 8u);
    EXPECT_EQ(faces, 12u);
    ExpectFailure(RunQuorlan({"mesh", model, "--definition", "99", "-o", PathOf("none.obj")}), {"definition 99"});
}

}  // namespace
