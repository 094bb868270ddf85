#include "cli/Image.h"
#include "cli/Program.h"

#include <Quorlan/ModelBuilder.h>

#include <cstdlib>
#include <set>

namespace Quorlan::Testing {
namespace {

/// Pictures of the render meshes.
class MeshPicture : public ProgramTest {
protected:
    void SetUp() override {
        auto const run = RunQuorlan({"render", WriteTwoCubes(), "-o", PathOf("probe.png"), "--size", "2x2"});
        if (run.err.find("without Embree") != std::string::npos) GTEST_SKIP() << "built without Embree";
    }

    Image Render(std::string const& model, std::vector<std::string> const& more) const {
        std::vector<std::string> arguments{"render", model, "-o", PathOf("a.png")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        auto const run = RunQuorlan(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return Image(PathOf("a.png"));
    }

    /// One shape of one entity, at the origin.
    template <class Add>
    std::string WriteShape(MaterialRecord const& material, Add const& add) const {
        ModelBuilder builder;
        auto const shape = add(builder.GetGeometryDefinitionBuilder());
        auto const entity = builder.GetEntityWriter().AddEntity({}, L"shape", {});
        auto const index = builder.GetMaterialWriter().AddMaterial(material);
        builder.GetInstanceWriter().AddInstance(entity, shape, index, kInvalidIndex, {});
        auto const path = PathOf("shape.qln");
        WriteBytes(path, builder.Create());
        return path;
    }

    /// A square of side 1 in the xz plane that faces -y.
    std::string WriteSquare(bool twoSided) const {
        FacetedBRep square;
        square.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}};
        square.faces = {{0, 1, 2, 3}};
        return WriteShape({{200, 200, 200, 255}, -1, twoSided}, [&](auto& shapes) { return shapes.AddBRep(square); });
    }
};

TEST_F(MeshPicture, CutSolidsAreClosedAtTheCut) {
    auto const path = WriteTwoCubes();
    std::vector<std::string> const above = {"--view", "top", "--size", "20x60", "--clip", "0,0,1,0.5"};
    auto withPickers = above;
    withPickers.emplace_back("--picked");
    EXPECT_EQ(Render(path, above).At(10, 50)[3], 255);
    EXPECT_EQ(Render(path, withPickers).At(10, 50)[3], 0) << "pickers see through the backs of faces";
}

TEST_F(MeshPicture, FarFromTheOriginLooksTheSame) {
    std::vector<std::string> const view = {"--view", "right", "--size", "60x40"};
    auto const here = Render(WriteTwoCubes(), view), far = Render(WriteTwoCubes(4'500'000), view);
    ASSERT_EQ(here.pixels.size(), far.pixels.size());
    unsigned different = 0;
    for (std::size_t i = 0; i < here.pixels.size(); ++i) {
        for (std::size_t c = 0; c < 4; ++c) different += std::abs(here.pixels[i][c] - far.pixels[i][c]) > 8;
    }
    EXPECT_LT(different, 10u);
}

TEST_F(MeshPicture, BacksOfFacesAreSeenOfTwoSidedMaterialsAlone) {
    std::vector<std::string> const behind = {"--view", "back", "--size", "9x9"};
    EXPECT_EQ(Render(WriteSquare(true), behind).At(4, 4)[3], 255);
    EXPECT_EQ(Render(WriteSquare(false), behind).At(4, 4)[3], 0);
    EXPECT_EQ(Render(WriteSquare(false), {"--view", "front", "--size", "9x9"}).At(4, 4)[3], 255);
}

TEST_F(MeshPicture, LinesAreOnePixelWide) {
    GraphicsContainer graphics;
    graphics.lines = {{{0, 0, 0.5}, {1, 0, 0.5}}};
    auto const path =
        WriteShape({{200, 0, 0, 255}, -1, false}, [&](auto& shapes) { return shapes.AddGraphicsContainer(graphics); });
    for (std::string const eye : {"0.5,-2,0.5", "0.5,-200,0.5"}) {
        auto const angle = eye.size() > 10 ? "0.3" : "30";
        auto const image = Render(path, {"--eye", eye, "--target", "0.5,0,0.5", "--fov", angle, "--size", "31x31"});
        unsigned rows = 0;
        for (unsigned y = 0; y < 31; ++y) rows += image.At(15, y)[3] > 40;
        EXPECT_GE(rows, 1u) << eye;
        EXPECT_LE(rows, 3u) << eye;
    }
}

TEST_F(MeshPicture, TexturesAreSeen) {
    ModelBuilder builder;
    png_image head{};
    head.version = PNG_IMAGE_VERSION;
    head.width = 2;
    head.height = 1;
    head.format = PNG_FORMAT_RGB;
    unsigned char const pixels[] = {255, 0, 0, 0, 0, 255};  // red on the left, blue on the right
    std::vector<char> png(1000);
    png_alloc_size_t size = png.size();
    ASSERT_NE(png_image_write_to_memory(&head, png.data(), &size, 0, pixels, 0, nullptr), 0);
    png.resize(size);

    FacetedBRep square;
    square.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}};
    square.faces = {{0, 1, 2, 3}};
    std::vector<std::pair<float, float>> const uvs = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRepWithUVs({&square, &uvs});
    auto const texture = builder.GetTextureWriter().AddTexture(TextureType::PNG, png);
    auto const material = builder.GetMaterialWriter().AddMaterial({{9, 9, 9, 255}, static_cast<int>(texture), false});
    builder.GetInstanceWriter().AddInstance(builder.GetEntityWriter().AddEntity({}, L"", {}), shape, material,
                                            kInvalidIndex, {});
    WriteBytes(PathOf("t.qln"), builder.Create());
    auto const image = Render(PathOf("t.qln"), {"--view", "front", "--size", "40x40"});
    EXPECT_GT(image.At(11, 20)[0], 2 * image.At(11, 20)[2]) << "red";
    EXPECT_GT(image.At(29, 20)[2], 2 * image.At(29, 20)[0]) << "blue";
}

TEST_F(MeshPicture, MoreSamplesSmoothBoundariesAlone) {
    auto const path = WriteTwoCubes();
    std::vector<std::string> const view = {"--size", "50x40", "--samples"};
    auto shades = [&](std::string const& samples, Image& image) {
        auto arguments = view;
        arguments.push_back(samples);
        image = Render(path, arguments);
        std::set<unsigned char> alphas;
        for (auto const& pixel : image.pixels) alphas.insert(pixel[3]);
        return alphas.size();
    };
    Image one(""), many("");
    EXPECT_EQ(shades("1", one), 2u) << "in or out";
    EXPECT_GT(shades("32", many), 8u);
}

TEST_F(MeshPicture, ShadowsFallOnWhatStandsBehind) {
    // A plate over a floor: the floor below the plate is darker than beside it.
    FacetedBRep both;
    both.vertices = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {1, 1, 1}, {3, 1, 1}, {3, 3, 1}, {1, 3, 1}};
    both.faces = {{0, 1, 2, 3}, {7, 6, 5, 4}};
    auto const path = WriteShape({{200, 200, 200, 255}, -1, false}, [&](auto& s) { return s.AddBRep(both); });
    auto const image = Render(path, {"--view", "top", "--size", "40x40"});  // through the back of the plate
    EXPECT_LT(image.At(28, 32)[0] + 40, image.At(4, 20)[0]) << "the sun stands at the upper left";
}

}  // namespace
}  // namespace Quorlan::Testing
