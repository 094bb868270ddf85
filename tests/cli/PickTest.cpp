#include "cli/Program.h"

#include <Quorlan/ModelBuilder.h>

#include <algorithm>
#include <cmath>

namespace Quorlan::Testing {
namespace {

using nlohmann::json;

class Pick : public ProgramTest {
protected:
    /// Picks from y = -10 along +y through the middle of the near cube, or at another pixel near it.
    ProgramRun PickAhead(std::string const& path, std::vector<std::string> const& more = {}, double x = 0) const {
        auto const at = std::to_string(x + 0.5);
        std::vector<std::string> arguments{"pick",          path,       "--size",      "100x100",  "--eye",
                                           at + ",-10,0.5", "--target", at + ",0,0.5", "--format", "json"};
        if (std::find(more.begin(), more.end(), "--pixel") == more.end()) {
            arguments.insert(arguments.end(), {"--pixel", "50,50"});
        }
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunQuorlan(arguments);
    }
};

TEST_F(Pick, TellsWhatStandsUnderThePixel) {
    auto const run = PickAhead(WriteTwoCubes());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const hit = json::parse(run.out);
    EXPECT_EQ(hit["guid"], kNearGuid);
    EXPECT_EQ(hit["name"], "near");
    EXPECT_EQ(hit["layer"], "Walls");
    EXPECT_EQ(hit["entity"], 0);
    EXPECT_EQ(hit["instance"], 0);
    EXPECT_EQ(hit["face"], 2);
    EXPECT_EQ(hit["point"], json({0.5, 0.0, 0.5}));
    EXPECT_EQ(hit["normal"], json({0.0, -1.0, 0.0}));
    EXPECT_EQ(hit["distance"], 10.0);
}

TEST_F(Pick, LooksThroughHiddenEntitiesDisabledLayersAndCutParts) {
    auto const path = WriteTwoCubes();
    std::vector<std::vector<std::string>> const ways = {
        {"--hide", kNearGuid}, {"--disable-layer", "Walls"}, {"--clip", "0,-1,0,-2"}};
    for (auto const& way : ways) {
        auto const run = PickAhead(path, way);
        ASSERT_EQ(run.exitCode, 0) << way[0] << run.err;
        EXPECT_EQ(json::parse(run.out)["guid"], kFarGuid) << way[0];
    }
}

TEST_F(Pick, NothingThereIsExitCodeOne) {
    auto const run = PickAhead(WriteTwoCubes(), {"--hide", kNearGuid, "--hide", kFarGuid});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(json::parse(run.out), nullptr);
    EXPECT_EQ(run.err, "");
    auto const text = RunQuorlan({"pick", WriteTwoCubes(), "--pixel", "0,0"});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_EQ(text.out, "nothing there\n");
}

TEST_F(Pick, TextNamesTheEntity) {
    auto const run = RunQuorlan({"pick", WriteTwoCubes(), "--pixel", "50,50", "--size", "100x100", "--view", "back"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.out.find("far, \"behind\""), std::string::npos) << run.out;
}

TEST_F(Pick, NamedViewsLookFromTheirSide) {
    auto const path = WriteTwoCubes();
    std::vector<std::pair<std::string, json>> const views = {{"top", {0.0, 0.0, 1.0}},    {"bottom", {0.0, 0.0, -1.0}},
                                                             {"front", {0.0, -1.0, 0.0}}, {"back", {0.0, 1.0, 0.0}},
                                                             {"left", {-1.0, 0.0, 0.0}},  {"right", {1.0, 0.0, 0.0}}};
    for (auto const& [view, normal] : views) {
        // 0.1 of the height off the middle, where there is a gap between the cubes seen from the sides
        auto const pixel = view == "top" || view == "bottom" ? "100,170" : "165,100";
        auto const isEnd = view == "front" || view == "back";
        auto const run = RunQuorlan({"pick", path, "--view", view, "--size", "200x200", "--pixel",
                                     isEnd ? "100,100" : pixel, "--format", "json"});
        ASSERT_EQ(run.exitCode, 0) << view << run.err;
        EXPECT_EQ(json::parse(run.out)["normal"], normal) << view;
    }
}

TEST_F(Pick, ParallelCameraCountsMetresPerPixel) {
    auto const path = WriteTwoCubes();
    auto const pick = [&](std::string const& pixel) {
        return RunQuorlan({"pick", path, "--size", "100x100", "--eye", "0.5,-10,0.5", "--target", "0.5,0,0.5",
                           "--ortho", "0.1", "--format", "json", "--pixel", pixel});
    };
    EXPECT_EQ(json::parse(pick("54,47").out)["point"], json({0.9, 0.0, 0.8}).get<std::vector<float>>());
    EXPECT_EQ(pick("56,50").exitCode, 1);
}

TEST_F(Pick, FarFromTheOriginIsAsExact) {
    constexpr double kFar = 4'500'000;
    auto const run = PickAhead(WriteTwoCubes(kFar), {}, kFar);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const hit = json::parse(run.out);
    EXPECT_EQ(hit["guid"], kNearGuid);
    EXPECT_NEAR(hit["point"][0].get<double>(), kFar + 0.5, 1e-5);
    EXPECT_EQ(hit["distance"], 10.0);
    auto const behind = PickAhead(WriteTwoCubes(kFar), {"--clip", "0,-1,0,-2"}, kFar);
    EXPECT_EQ(json::parse(behind.out)["guid"], kFarGuid);
}

TEST_F(Pick, EdgesAreFoundWithinTheTolerance) {
    auto const path = WriteTwoCubes();
    auto const run = PickAhead(path, {"--edges", "--pixel", "50,45.5"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const hit = json::parse(run.out);
    EXPECT_EQ(hit["guid"], kNearGuid);
    EXPECT_EQ(hit["kind"], "edge");
    EXPECT_EQ(hit["face"], 1) << "the first of the edge's two faces";
    EXPECT_FALSE(hit.contains("segment"));
    EXPECT_NEAR(hit["point"][0].get<double>(), 0.5, 1e-5);
    EXPECT_NEAR(hit["point"][1].get<double>(), 0, 1e-5);
    EXPECT_NEAR(hit["point"][2].get<double>(), 1, 1e-5);
    EXPECT_NEAR(hit["pixels"].get<double>(), 4.5 - 0.5 / 10 * 50 / std::tan(std::acos(-1) / 6), 1e-4);

    EXPECT_EQ(PickAhead(path, {"--edges", "--pixel", "50,20"}).exitCode, 1) << "26 pixels away";
    EXPECT_EQ(PickAhead(path, {"--edges", "--pixel", "50,20", "--tolerance", "30"}).exitCode, 0);
    EXPECT_EQ(PickAhead(path, {"--lines", "--pixel", "50,46"}).exitCode, 1) << "a solid has no lines";
}

TEST_F(Pick, EdgesFarFromTheOriginAreAsExact) {
    constexpr double kFar = 4'500'000;
    auto const run = PickAhead(WriteTwoCubes(kFar), {"--edges", "--pixel", "50,46"}, kFar);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const hit = json::parse(run.out);
    EXPECT_NEAR(hit["point"][0].get<double>(), kFar + 0.5, 1e-5);
    EXPECT_NEAR(hit["point"][2].get<double>(), 1, 1e-5);
}

TEST_F(Pick, HiddenEntitiesHaveNoEdges) {
    auto const run = PickAhead(WriteTwoCubes(), {"--edges", "--pixel", "50,47", "--hide", kNearGuid});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(json::parse(run.out)["guid"], kFarGuid);
}

TEST_F(Pick, LinesAndArcsAreNumberedAsOne) {
    GraphicsContainer graphics;
    graphics.lines = {{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}, {1, 0, 1}}};
    graphics.arcs = {{{0.5, 0, 0.5}, {0, -1, 0}, {1, 0, 0}, 0.25, 3}};
    ModelBuilder builder;
    auto const shape = builder.GetGeometryDefinitionBuilder().AddGraphicsContainer(graphics);
    auto const entity = builder.GetEntityWriter().AddEntity({}, L"axis", {});
    builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex, {});
    auto const path = PathOf("lines.qln");
    WriteBytes(path, builder.Create());

    auto const line = json::parse(PickAhead(path, {"--lines", "--tolerance", "1", "--pixel", "50,45.5"}).out);
    EXPECT_EQ(line["kind"], "line");
    EXPECT_EQ(line["segment"], 1);
    EXPECT_NEAR(line["point"][2].get<double>(), 1, 1e-5);
    auto const arc = json::parse(PickAhead(path, {"--edges", "--tolerance", "1", "--pixel", "50,48"}).out);
    EXPECT_EQ(arc["kind"], "arc");
    EXPECT_EQ(arc["segment"], 2);
    EXPECT_NEAR(arc["point"][2].get<double>(), 0.75, 1e-2);
    EXPECT_FALSE(arc.contains("face"));
}

TEST_F(Pick, UnknownNamesAreFailures) {
    auto const path = WriteTwoCubes();
    ExpectFailure(PickAhead(path, {"--hide", "0123456789012345678901"}), {path, "0123456789012345678901"});
    ExpectFailure(PickAhead(path, {"--disable-layer", "walls"}), {path, "'walls'"});
}

TEST_F(Pick, ACameraThatLooksNowhereIsWrongUsage) {
    auto const path = WriteTwoCubes();
    EXPECT_EQ(RunQuorlan({"pick", path, "--pixel", "1,1", "--eye", "1,1,1", "--target", "1,1,1"}).exitCode, 2);
    EXPECT_EQ(RunQuorlan({"pick", path, "--pixel", "1,1", "--eye", "1,1,1", "--target", "1,1,9"}).exitCode, 2);
}

}  // namespace
}  // namespace Quorlan::Testing
