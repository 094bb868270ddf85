#include "cli/Program.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/PlacementBuilder.h>

#include <sstream>

/// The commands that tell what a model holds: info, boxes, placements.
namespace Quorlan::Testing {
namespace {

using nlohmann::json;

using Info = ProgramTest;
using BoxesCommand = ProgramTest;
using PlacementsCommand = ProgramTest;

std::vector<std::string> LinesOf(std::string const& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST_F(Info, CountsWhatTheReaderCounts) {
    auto const path = WriteSample();
    auto const run = RunQuorlan({"info", path, "--format", "json"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const info = json::parse(run.out);
    auto const bytes = ReadBytes(path);
    auto const storage = ModelStorage::FromBuffer(bytes);
    auto const& reader = storage.GetModelReader();
    EXPECT_EQ(info["file"], path);
    EXPECT_EQ(info["bytes"], bytes.size());
    EXPECT_EQ(info["units"], "metres");
    EXPECT_EQ(info["entities"]["count"], reader.GetEntities().GetCount());
    EXPECT_EQ(info["instances"], reader.GetGeometry().GetInstanceCount());
    EXPECT_EQ(info["definitions"]["count"], reader.GetGeometry().GetDefinitionCount());
    EXPECT_EQ(info["materials"], reader.GetGeometry().GetMaterialCount());
    EXPECT_EQ(info["textures"], 2);
    EXPECT_EQ(info["ownerHistories"]["links"], reader.GetOwnerHistories().GetLinkCount());
    EXPECT_EQ(info["layers"].size(), 11u);
    std::uint64_t onLayers = 0;
    for (auto const& layer : info["layers"]) onLayers += layer["instances"].get<std::uint64_t>();
    EXPECT_EQ(onLayers, reader.GetGeometry().GetInstanceCount());
    EXPECT_GT(info["tables"].size(), 10u);
}

TEST_F(Info, TellsHowOftenAShapeIsPlacedWhereNoImportSaysMore) {
    auto const run = RunQuorlan({"info", WriteTwoCubes(), "--format", "json"});
    auto const sharing = json::parse(run.out)["sharing"];
    EXPECT_EQ(sharing["instances"], 2);
    EXPECT_EQ(sharing["instancesPerShape"], 2.0 / sharing["shapesKept"].get<double>());
    EXPECT_TRUE(sharing["shapesRead"].is_null());
    EXPECT_TRUE(sharing["largestDeviation"].is_null());
}

/// A model of one shape that says it was imported from `shapes` shapes, of which `kept` were kept.
std::vector<char> WriteImported(std::int64_t shapes, std::int64_t kept) {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({9, 0, 0, {}}, L"wall", {});
    FacetedBRep shape;
    shape.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    shape.faces = {{0, 1, 2}};
    builder.GetGeometryDefinitionBuilder().AddBRep(shape);
    auto& properties = builder.GetPropertyWriter();
    properties.AddProperty(entity, {"Quorlan.Import", "ShapesRead", shapes});
    properties.AddProperty(entity, {"Quorlan.Import", "ShapesKept", kept});
    properties.AddProperty(entity, {"Quorlan.Import", "LargestDeviation", 0.0625});
    return builder.Create();
}

TEST_F(Info, TellsWhatTheImportFoundOfCopies) {
    WriteBytes(PathOf("imported.qln"), WriteImported(5, 1));
    auto const sharing = json::parse(RunQuorlan({"info", PathOf("imported.qln"), "--format", "json"}).out)["sharing"];
    EXPECT_EQ(sharing["shapesRead"], 5);
    EXPECT_EQ(sharing["shapesKept"], 1);
    EXPECT_EQ(sharing["shapesReadPerKept"], 5.0);
    EXPECT_EQ(sharing["largestDeviation"], 0.0625);
    EXPECT_NE(RunQuorlan({"info", PathOf("imported.qln")}).out.find("5 imported"), std::string::npos);
}

TEST_F(Info, ARecordOfOtherShapesThanTheModelHoldsIsNotBelieved) {
    WriteBytes(PathOf("merged.qln"), WriteImported(5, 2));
    auto const run = RunQuorlan({"info", PathOf("merged.qln"), "--format", "json"});
    EXPECT_TRUE(json::parse(run.out)["sharing"]["shapesRead"].is_null());
}

TEST_F(Info, TheRecordOfAnImportIsNoDifferenceOfModels) {
    WriteBytes(PathOf("old.qln"), WriteImported(5, 1));
    WriteBytes(PathOf("new.qln"), WriteImported(6, 1));
    auto const run = RunQuorlan({"diff", PathOf("old.qln"), PathOf("new.qln"), "-o", PathOf("change.qln")});
    EXPECT_EQ(run.exitCode, 0) << run.out;
}

TEST_F(Info, BoundsEncloseAllInstances) {
    auto const run = RunQuorlan({"info", WriteTwoCubes(), "--format", "json"});
    auto const bounds = json::parse(run.out)["bounds"];
    EXPECT_EQ(bounds["min"], json({0.0, 0.0, 0.0}));
    EXPECT_EQ(bounds["max"], json({1.0, 6.0, 1.0}));
    EXPECT_EQ(bounds["size"], json({1.0, 6.0, 1.0}));
}

TEST_F(Info, TextNamesLayersAndTables) {
    auto const run = RunQuorlan({"info", WriteTwoCubes()});
    EXPECT_EQ(run.exitCode, 0);
    for (auto const* const part : {"metres", "Walls", "Doors", "entities", "facetedBReps"}) {
        EXPECT_NE(run.out.find(part), std::string::npos) << part;
    }
}

TEST_F(BoxesCommand, CsvHoldsTheBuildersBoxesToTheLastBit) {
    auto const path = WriteSample();
    auto const run = RunQuorlan({"boxes", path});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const lines = LinesOf(run.out);
    Tools::BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(ReadBytes(path).data()));
    auto const& boxes = builder.getBoundingBoxes();
    ASSERT_EQ(lines.size(), boxes.size() + 1);
    EXPECT_EQ(lines[0], "instance,entity,guid,name,minX,minY,minZ,maxX,maxY,maxZ");
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        auto const& line = lines[i + 1];
        EXPECT_EQ(line.rfind(std::to_string(i) + ",", 0), 0u);
        EXPECT_EQ(std::stod(line.substr(line.rfind(',') + 1)), boxes[i].GetMax().z) << line;
    }
}

TEST_F(BoxesCommand, CsvQuotesNames) {
    auto const lines = LinesOf(RunQuorlan({"boxes", WriteTwoCubes()}).out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], std::string("0,0,") + kNearGuid + ",near,0,0,0,1,1,1");
    EXPECT_EQ(lines[2], std::string("1,1,") + kFarGuid + ",\"far, \"\"behind\"\"\",0,5,0,1,6,1");
}

TEST_F(BoxesCommand, JsonHoldsOneObjectPerInstance) {
    auto const rows = json::parse(RunQuorlan({"boxes", WriteTwoCubes(), "--format", "json"}).out);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1]["guid"], kFarGuid);
    EXPECT_EQ(rows[1]["name"], "far, \"behind\"");
    EXPECT_EQ(rows[1]["minY"], 5.0);
    EXPECT_EQ(rows[1]["maxY"], 6.0);
}

TEST_F(PlacementsCommand, HoldsTheBuildersMatrices) {
    auto const path = WriteSample();
    auto const rows = json::parse(RunQuorlan({"placements", path, "--format", "json"}).out);
    Tools::PlacementBuilder builder;
    ASSERT_TRUE(builder.Build(ReadBytes(path).data()));
    auto const& placements = builder.getPlacements();
    ASSERT_EQ(rows.size(), placements.size());
    for (std::size_t i = 0; i < placements.size(); ++i) {
        EXPECT_EQ(rows[i]["xAxisY"], placements[i](1, 0));
        EXPECT_EQ(rows[i]["yAxisX"], placements[i](0, 1));
        EXPECT_EQ(rows[i]["zAxisZ"], placements[i](2, 2));
        EXPECT_EQ(rows[i]["originX"], placements[i](0, 3));
    }
}

TEST_F(ProgramTest, AModelWithoutInstancesHasNoRows) {
    auto const path = PathOf("empty.qln");
    WriteBytes(path, ModelBuilder().Create());
    EXPECT_EQ(LinesOf(RunQuorlan({"boxes", path}).out).size(), 1u);
    EXPECT_EQ(json::parse(RunQuorlan({"placements", path, "--format", "json"}).out), json::array());
    EXPECT_EQ(json::parse(RunQuorlan({"info", path, "--format", "json"}).out)["bounds"], nullptr);
}

TEST_F(ProgramTest, AFullDiskBehindStdoutIsReported) {
    auto const run = RunQuorlan({"boxes", WriteSample()}, "/dev/full");
    ExpectFailure(run, {"stdout", "No space left"});
}

}  // namespace
}  // namespace Quorlan::Testing
