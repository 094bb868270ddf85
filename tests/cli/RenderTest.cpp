#include "cli/Image.h"
#include "cli/Program.h"

#include <map>

namespace Quorlan::Testing {
namespace {

using nlohmann::json;
class Render : public ProgramTest {
protected:
    /// Renders the two cubes from the right: the near one is seen on the left.
    ProgramRun RenderCubes(std::string const& output, std::vector<std::string> const& more = {}) const {
        std::vector<std::string> arguments{"render", WriteTwoCubes(), "-o",     PathOf(output),
                                           "--size", "60x40",         "--view", "right"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunQuorlan(arguments);
    }
};

TEST_F(Render, WritesAPictureOfTheWantedSizeOnATransparentGround) {
    auto const run = RenderCubes("a.png");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("rays/s"), std::string::npos) << run.err;
    Image const image(PathOf("a.png"));
    EXPECT_EQ(image.width, 60u);
    EXPECT_EQ(image.height, 40u);
    EXPECT_EQ(image.At(0, 0)[3], 0);
    EXPECT_EQ(image.At(30, 20)[3], 0) << "the gap between the cubes";
    EXPECT_EQ(image.At(6, 20)[3], 255);
    EXPECT_GT(image.At(6, 20)[0], image.At(6, 20)[2]) << "red";
    EXPECT_GT(image.At(53, 20)[2], image.At(53, 20)[0]) << "blue";
    EXPECT_EQ(GetFiles(), (std::vector<std::string>{"a.png", "cubes.qln"}));
}

TEST_F(Render, SameCallGivesTheSameBytes) {
    ASSERT_EQ(RenderCubes("a.png", {"--shadows"}).exitCode, 0);
    ASSERT_EQ(RenderCubes("b.png", {"--shadows"}).exitCode, 0);
    EXPECT_EQ(ReadBytes(PathOf("a.png")), ReadBytes(PathOf("b.png")));
}

TEST_F(Render, LegendSaysWhichColourIsWhichEntity) {
    ASSERT_EQ(RenderCubes("a.png", {"--color", "entity", "--legend", PathOf("a.json")}).exitCode, 0);
    std::map<std::string, std::uint64_t> seen;
    for (auto const& pixel : Image(PathOf("a.png")).pixels) {
        if (pixel[3] == 0) continue;
        char text[8];
        std::snprintf(text, sizeof text, "#%02X%02X%02X", pixel[0], pixel[1], pixel[2]);
        ++seen[text];
    }
    auto const bytes = ReadBytes(PathOf("a.json"));
    auto const legend = json::parse(bytes.begin(), bytes.end());
    ASSERT_EQ(legend.size(), 2u);
    ASSERT_EQ(seen.size(), 2u);
    for (auto const& entry : legend) EXPECT_EQ(seen[entry["color"]], entry["pixels"]) << entry;
    EXPECT_EQ(legend[0]["guid"], kNearGuid);
    EXPECT_EQ(legend[1]["name"], "far, \"behind\"");
}

TEST_F(Render, EveryColourModeMakesAnotherPicture) {
    std::map<std::vector<char>, std::string> pictures;
    for (std::string const mode : {"material", "entity", "layer", "normal"}) {
        auto const run = RenderCubes(mode + ".png", {"--color", mode});
        ASSERT_EQ(run.exitCode, 0) << run.err;
        EXPECT_TRUE(pictures.emplace(ReadBytes(PathOf(mode + ".png")), mode).second) << mode;
    }
}

TEST_F(Render, GlassLetsWhatIsBehindItShine) {
    auto const path = WriteSample();
    auto const render = [&](std::string const& name, std::vector<std::string> const& more) {
        std::vector<std::string> arguments{"render", path,         "-o",       PathOf(name), "--size", "9x9",
                                           "--eye",  "3.2,-3,1.5", "--target", "3.2,0,1.5",  "--fov",  "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(RunQuorlan(arguments).exitCode, 0);
        return Image(PathOf(name)).At(4, 4);
    };
    auto const whole = render("whole.png", {}), open = render("open.png", {"--clip", "0,1,0,1"});
    EXPECT_EQ(whole[3], 255) << "walls stand behind the glass";
    EXPECT_LT(open[3], 255) << "nothing stands behind it";
    EXPECT_GT(open[3], 0);
}

TEST_F(Render, EdgesDarkenOutlinesAlone) {
    ASSERT_EQ(RenderCubes("plain.png").exitCode, 0);
    ASSERT_EQ(RenderCubes("edges.png", {"--edges"}).exitCode, 0);
    Image const plain(PathOf("plain.png")), edges(PathOf("edges.png"));
    unsigned darker = 0;
    for (std::size_t i = 0; i < plain.pixels.size(); ++i) {
        auto const &a = plain.pixels[i], &b = edges.pixels[i];
        if (a == b) continue;
        ++darker;
        EXPECT_LE(b[0] + b[1] + b[2], a[0] + a[1] + a[2]) << i;
    }
    EXPECT_GT(darker, 40u);
    EXPECT_EQ(plain.At(6, 20), edges.At(6, 20)) << "the middle of a face";
}

TEST_F(Render, SnapMarksTheEdgeAtThePixel) {
    ASSERT_EQ(RenderCubes("plain.png").exitCode, 0);
    auto const run = RenderCubes("snap.png", {"--snap", "12,20"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    Image const plain(PathOf("plain.png")), snap(PathOf("snap.png"));
    unsigned red = 0;
    for (auto const& pixel : snap.pixels) red += pixel[0] > 220 && pixel[1] < 60;
    EXPECT_GT(red, 30u);
    EXPECT_EQ(plain.At(53, 20), snap.At(53, 20)) << "far from the mark";
}

TEST_F(Render, SnapWithoutAnEdgeIsExitCodeOne) {
    auto const run = RenderCubes("snap.png", {"--snap", "30,3"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("no edge"), std::string::npos) << run.err;
    EXPECT_EQ(Image(PathOf("snap.png")).width, 60u) << "the picture is written all the same";
}

TEST_F(Render, ReplacesAnEarlierPictureAndKeepsItsPermissions) {
    WriteBytes(PathOf("a.png"), {'o', 'l', 'd'});
    ASSERT_EQ(RenderCubes("a.png").exitCode, 0);
    EXPECT_EQ(Image(PathOf("a.png")).width, 60u);
}

TEST_F(Render, AModelWithoutInstancesHasNoPicture) {
    ASSERT_EQ(RunQuorlan({"render", WriteTwoCubes(), "-o", PathOf("a.png"), "--hide", kNearGuid, "--hide", kFarGuid,
                          "--size", "5x5"})
                  .exitCode,
              0)
        << "hidden entities leave an empty picture";
    EXPECT_EQ(Image(PathOf("a.png")).At(2, 2)[3], 0);
}

}  // namespace
}  // namespace Quorlan::Testing
