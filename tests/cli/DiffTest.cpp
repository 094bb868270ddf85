#include "cli/Program.h"
#include "support/TestData.h"

#include <Quorlan/ModelBuilder.h>
#include <gmock/gmock.h>
#include <sample/SampleBuilding.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>

/// The commands diff and merge --verify, and the law that ties them: what an increment makes of the old model is the
/// new one.
namespace Quorlan::Testing {
namespace {

using ::testing::HasSubstr;

/// What a test may change about a model of one wall.
struct wall_s {
    std::wstring name = L"Wall";
    double x = 0;
    double degrees = 0;
    double height = 3;
    std::array<std::uint8_t, 4> color = {200, 40, 40, 255};
    std::string layer = "Walls";
    std::vector<PropertyRecord> properties = {{"IFC", "Class", std::string("IfcWall")},
                                              {"Pset_WallCommon", "FireRating", std::string("F30")}};
    bool isThere = true;
};

FacetedBRep MakeBlock(double length, double width, double height) {
    FacetedBRep block;
    for (unsigned i = 0; i < 8; ++i) {
        block.vertices.push_back({length * (i & 1), width * (i >> 1 & 1), height * (i >> 2)});
    }
    block.faces = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {3, 2, 6, 7}, {2, 0, 4, 6}, {1, 3, 7, 5}};
    return block;
}

AffineTransform Place(double x, double degrees) {
    double const c = std::cos(degrees * 3.141592653589793 / 180), s = std::sin(degrees * 3.141592653589793 / 180);
    AffineTransform transform;
    transform.matrix.m = {c, -s, 0, x, s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    return transform;
}

/// Area, volume and centre of every entity that a GUID identifies and that is not in doubt.
std::map<std::string, std::array<double, 5>> MeasureByGuid(std::string const& path) {
    std::map<std::string, std::array<double, 5>> out;
    auto const rows = nlohmann::json::parse(RunQuorlan({"quantities", path, "--format", "json"}).out);
    for (auto const& row : rows) {
        if (row["guid"] == "" || row["centerX"].is_null()) continue;
        out[row["guid"]] = {row["area"], row["volume"], row["centerX"], row["centerY"], row["centerZ"]};
    }
    return out;
}

class Diff : public ProgramTest {
protected:
    std::string WriteWall(std::string const& name, wall_s const& wall) const {
        ModelBuilder builder;
        auto const floor = builder.GetEntityWriter().AddEntity({1, 0, 0, {}}, L"Floor", {});
        auto const slab = builder.GetGeometryDefinitionBuilder().AddBRep(MakeBlock(9, 7, 0.2));
        builder.GetInstanceWriter().AddInstance(floor, slab, kInvalidIndex, kInvalidIndex, {});
        if (wall.isThere) {
            auto const entity =
                builder.GetEntityWriter().AddEntity({2, 0, 0, {}}, wall.name, Place(wall.x, wall.degrees));
            auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(MakeBlock(4, 0.25, wall.height));
            builder.GetInstanceWriter().AddInstance(entity, shape,
                                                    builder.GetMaterialWriter().AddMaterial({wall.color, -1, false}),
                                                    builder.GetLayerWriter().AddLayer(wall.layer), {});
            for (auto const& property : wall.properties) builder.GetPropertyWriter().AddProperty(entity, property);
        }
        WriteBytes(PathOf(name), builder.Create());
        return PathOf(name);
    }

    /// The text of the difference between the wall as it is by default and as `change` makes it. Checks the law, too.
    std::string TellChange(std::function<void(wall_s&)> const& change) const {
        wall_s wall;
        auto const before = WriteWall("old.qln", wall);
        change(wall);
        return ExpectLaw(before, WriteWall("new.qln", wall)).out;
    }

    /// Diffs, merges, and expects the merged model to be the new one. Returns the run of the first diff.
    ProgramRun ExpectLaw(std::string const& before, std::string const& after,
                         std::vector<std::string> const& options = {}) const {
        auto const increment = PathOf("increment.qln"), merged = PathOf("merged.qln");
        std::vector<std::string> arguments = {"diff", before, after, "-o", increment};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto const run = RunQuorlan(arguments);
        EXPECT_EQ(run.err, "");
        auto const merge = RunQuorlan({"merge", before, increment, "-o", merged, "--verify"});
        EXPECT_EQ(merge.exitCode, 0) << merge.err;
        auto const rest = RunQuorlan({"diff", merged, after, "-o", PathOf("rest.qln")});
        EXPECT_EQ(rest.exitCode, 0) << rest.out << rest.err;
        EXPECT_THAT(rest.out, HasSubstr("0 added, 0 modified, 0 deleted"));

        auto const expected = MeasureByGuid(after), found = MeasureByGuid(merged);
        EXPECT_EQ(found.size(), expected.size());
        for (auto const& [guid, values] : expected) {
            auto const entry = found.find(guid);
            if (entry == found.end()) {
                ADD_FAILURE() << guid;
                continue;
            }
            for (std::size_t i = 0; i < values.size(); ++i) {
                EXPECT_NEAR(entry->second[i], values[i], 1e-3 + 1e-4 * std::abs(values[i])) << guid << " " << i;
            }
        }
        return run;
    }
};

constexpr char kWall[] = "IfcWall 'Wall' 0000020000000000000000: ";

TEST_F(Diff, EqualModelsGiveZeroAndAnEmptyIncrement) {
    auto const model = WriteSample();
    auto const run = ExpectLaw(model, model);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out.rfind("0 added, 0 modified, 0 deleted, ", 0), 0u) << run.out;
}

TEST_F(Diff, ANameAMaterialALayerAndProperties) {
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.name = L"Parapet"; }),
                HasSubstr("renamed from 'Wall' to 'Parapet'"));
    EXPECT_THAT(TellChange([](wall_s& wall) {
                    wall.color = {1, 2, 3, 128};
                }),
                HasSubstr(std::string(kWall) + "material #c82828 → #01020380\n"));
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.layer = "Old"; }), HasSubstr("layer 'Walls' → 'Old'\n"));
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.properties[1].value = std::string("F60"); }),
                HasSubstr("Pset_WallCommon.FireRating 'F30' → 'F60'\n"));
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.properties.pop_back(); }),
                HasSubstr("Pset_WallCommon.FireRating 'F30' removed\n"));
    EXPECT_THAT(TellChange([](wall_s& wall) {
                    wall.properties.push_back({"Q", "Length", 4.0});
                }),
                HasSubstr("Q.Length 4 added\n"));
}

TEST_F(Diff, AMotionIsToldInMetresAndDegrees) {
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.x = 0.35; }),
                HasSubstr(std::string(kWall) + "moved by 0.350 m\n0 added, 1 modified, 0 deleted, 1 unchanged\n"));
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.degrees = 30; }), HasSubstr("turned by 30.00°"));
}

TEST_F(Diff, AChangedShapeIsToldWithItsVolume) {
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.height = 2.5; }),
                HasSubstr(std::string(kWall) + "1 shape changed, volume 3 → 2.5, area"));
    EXPECT_THAT(TellChange([](wall_s& wall) {
                    wall.height = 2.5;
                    wall.x = 0.35;
                }),
                HasSubstr(std::string(kWall) + "moved by 0.350 m, 1 shape changed, volume 3 → 2.5"));
}

TEST_F(Diff, AddedAndDeleted) {
    EXPECT_THAT(TellChange([](wall_s& wall) { wall.isThere = false; }), HasSubstr(std::string(kWall) + "deleted"));
    auto const without = WriteWall("old.qln", [] {
        wall_s wall;
        wall.isThere = false;
        return wall;
    }());
    auto const run = ExpectLaw(without, WriteWall("new.qln", {}));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.out, HasSubstr(std::string(kWall) + "added, volume 3\n1 added, 0 modified, 0 deleted"));
}

TEST_F(Diff, WhatLiesWithinTheToleranceIsEqual) {
    wall_s wall;
    auto const before = WriteWall("old.qln", wall);
    wall.x = 0.002;
    wall.properties.push_back({});
    wall.properties.pop_back();
    auto const after = WriteWall("new.qln", wall);
    EXPECT_EQ(RunQuorlan({"diff", before, after, "-o", PathOf("i.qln")}).exitCode, 1);
    EXPECT_EQ(RunQuorlan({"diff", before, after, "-o", PathOf("i.qln"), "--tolerance", "0.005"}).exitCode, 0);
}

TEST_F(Diff, ReportsAsMarkdownAndJson) {
    wall_s wall;
    auto const before = WriteWall("old.qln", wall);
    wall.x = 0.35;
    wall.name = L"a|b";
    auto const after = WriteWall("new.qln", wall);
    auto const markdown = ExpectLaw(before, after, {"--report", "md"}).out;
    EXPECT_THAT(markdown, HasSubstr("# Changes\n\n0 added, 1 modified"));
    EXPECT_THAT(markdown,
                HasSubstr("| IfcWall | a\\|b | `0000020000000000000000` | renamed from 'Wall' to 'a\\|b', moved"));
    auto const json = nlohmann::json::parse(ExpectLaw(before, after, {"--report", "json"}).out);
    ASSERT_EQ(json["changes"].size(), 1u);
    EXPECT_EQ(json["modified"], 1);
    EXPECT_NEAR(json["changes"][0]["moved"].get<double>(), 0.35, 1e-9);
    EXPECT_EQ(json["changes"][0]["class"], "IfcWall");
}

TEST_F(Diff, EntitiesWithoutGuidAreSaidNotToBeCompared) {
    EXPECT_THAT(RunQuorlan({"diff", WriteSample(), WriteTwoCubes(), "-o", PathOf("i.qln")}).out,
                HasSubstr("entities of the old model have no GUID and are not compared"));
}

TEST_F(Diff, TheLawHoldsForSampleBuildingsOfTwoSeeds) {
    std::vector<std::string> paths;
    for (std::uint64_t const seed : {1, 7}) {
        QuorlanSample::SampleOptions options;
        options.storeys = 1;
        options.seed = seed;
        options.origin = {4.5e5, 5.4e6, 100};
        paths.push_back(PathOf("seed" + std::to_string(seed) + ".qln"));
        WriteBytes(paths.back(), QuorlanSample::BuildSampleBuilding(options));
    }
    EXPECT_EQ(ExpectLaw(paths[0], paths[1]).exitCode, 1);
    EXPECT_EQ(ExpectLaw(paths[1], paths[0]).exitCode, 1);
}

TEST_F(Diff, MergeWithVerifyCatchesNothingInAGoodMergeAndSaysSo) {
    auto const model = WriteSample();
    ASSERT_EQ(RunQuorlan({"diff", WriteTwoCubes(), model, "-o", PathOf("i.qln")}).exitCode, 1);
    auto const run = RunQuorlan({"merge", PathOf("cubes.qln"), PathOf("i.qln"), "-o", PathOf("m.qln"), "--verify"});
    EXPECT_THAT(run.out, HasSubstr("verified: "));
}

#ifdef QUORLAN_HAS_IFC

struct revision_s {
    char const* before;
    char const* after;
    std::size_t added, modified, deleted;
    char const* says;  ///< what the report holds, too
};

void PrintTo(revision_s const& revision, std::ostream* out) { *out << revision.before << " to " << revision.after; }

class DiffOfRevisions : public Diff, public testing::WithParamInterface<revision_s> {};

TEST_P(DiffOfRevisions, IsWhatWasChangedAndMergesToTheNewOne) {
    auto const data = TestSupport::FindTestData();
    if (!data) GTEST_SKIP() << TestSupport::kNoTestData;
    auto const& revision = GetParam();
    std::vector<std::string> models;
    for (auto const* const name : {revision.before, revision.after}) {
        auto const file = *data / name;
        if (!std::filesystem::exists(file)) GTEST_SKIP() << file << " is not there";
        models.push_back(PathOf(file.stem().string() + ".qln"));
        ASSERT_EQ(RunQuorlan({"import", file.string(), "-o", models.back()}).exitCode, 0);
    }
    auto const report = nlohmann::json::parse(ExpectLaw(models[0], models[1], {"--report", "json"}).out);
    EXPECT_EQ(report["added"], revision.added);
    EXPECT_EQ(report["modified"], revision.modified);
    EXPECT_EQ(report["deleted"], revision.deleted);
    EXPECT_THAT(report.dump(), HasSubstr(revision.says));
    ExpectLaw(models[1], models[0]);
}

INSTANTIATE_TEST_SUITE_P(
    Files, DiffOfRevisions,
    testing::Values(revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_All-A.ifc", 4, 4, 0, "1 shape changed"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_All-D.ifc", 0, 4, 6, "deleted"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_All-DA(M).ifc", 6, 2, 6, "added"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_A-MG.ifc", 0, 4, 0, "renamed from"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_A-MG(T).ifc", 0, 10, 0, "shape changed"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_A-MP.ifc", 0, 10, 0, "moved by 2.000 m"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_A-MP(M).ifc", 0, 10, 0, "moved by 6.000 m"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_R-MR.ifc", 0, 8, 0, "shape changed"},
                    revision_s{"revisions_M1/M1.ifc", "revisions_M1/M1_R-MI(M).ifc", 0, 14, 0, "moved by 1.000 m"},
                    revision_s{"revisions_simplehouse/02_7543836.ifc", "revisions_simplehouse/03_c91995e.ifc", 1, 0, 0,
                               "hearth"},
                    revision_s{"revisions_simplehouse/03_c91995e.ifc", "revisions_simplehouse/04_5fc0d33.ifc", 1, 1, 0,
                               "renamed from 'hearth' to 'wood burning stove'"},
                    revision_s{"revisions_simplehouse/05_477dcce.ifc", "revisions_simplehouse/06_9693423.ifc", 0, 1, 0,
                               "moved by 0.659 m"},
                    revision_s{"revisions_simplehouse/08_11e1903.ifc", "revisions_simplehouse/09_204fe11.ifc", 0, 2, 0,
                               "turned by 180.00°"},
                    revision_s{"revisions_simplehouse/10_e0aa197.ifc", "revisions_simplehouse/11_96dc7f0.ifc", 2, 0, 0,
                               "fruit tree"},
                    revision_s{"SampleHouse_revA.ifc", "SampleHouse_revB.ifc", 0, 4, 0, "BaseQuantities.GrossVolume"}));

#endif

}  // namespace
}  // namespace Quorlan::Testing
