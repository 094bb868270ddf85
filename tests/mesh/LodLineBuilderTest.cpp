#include <Tools/LodLineBuilder.h>

#include "support/MeshShapes.h"
#include "support/RawModel.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::LodLine;
using Quorlan::Tools::LodLineBuilder;
using Quorlan::Tools::Matrix4;
using Quorlan::Tools::Vertex;

/// The one line of a model with one instance of a box definition of no BRep kind.
LodLine BoxLine(Vector3f const& lo, Vector3f const& hi, std::uint8_t kind = 0) {
    RawModel model;
    model.AddInstance(model.AddEntity(), model.AddDefinition(lo, hi, kind));
    LodLineBuilder builder;
    EXPECT_TRUE(builder.Build(model.Write().data()));
    auto const lines = builder.GetLodLines();
    EXPECT_EQ(lines.size(), 1u);
    return lines.at(0);
}

void ExpectPoint(Vertex const& actual, double x, double y, double z) {
    EXPECT_DOUBLE_EQ(actual.x, x);
    EXPECT_DOUBLE_EQ(actual.y, y);
    EXPECT_DOUBLE_EQ(actual.z, z);
}

TEST(LodLineBuilder, CubesBoxLineRunsAlongZ) {
    LodLine const line = BoxLine({0, 0, 0}, {2, 2, 2});
    ExpectPoint(line.start, 1, 1, 0);
    ExpectPoint(line.end, 1, 1, 2);
    EXPECT_FLOAT_EQ(static_cast<float>(line.radius), std::sqrt(0.5F) * 2);
}

TEST(LodLineBuilder, BoxLineRunsAlongTheLongestEdge) {
    ExpectPoint(BoxLine({0, 0, 0}, {5, 2, 4}).end, 5, 1, 2);
    ExpectPoint(BoxLine({0, 0, 0}, {2, 5, 4}).end, 1, 5, 2);
    ExpectPoint(BoxLine({0, 0, 0}, {2, 4, 5}).end, 1, 2, 5);
    LodLine const line = BoxLine({1, 1, 1}, {11, 4, 5});
    ExpectPoint(line.start, 1, 2.5, 3);
    EXPECT_DOUBLE_EQ(line.radius, 2.5);
}

TEST(LodLineBuilder, EqualEdgesChooseTheLaterAxis) {
    ExpectPoint(BoxLine({0, 0, 0}, {4, 4, 2}).end, 2, 4, 1);  // x and y equal: y
    ExpectPoint(BoxLine({0, 0, 0}, {4, 2, 4}).end, 2, 1, 4);  // x and z equal: z
    ExpectPoint(BoxLine({0, 0, 0}, {2, 4, 4}).end, 1, 2, 4);  // y and z equal: z
}

TEST(LodLineBuilder, OtherKindsTakeTheBoxLine) {
    for (int const kind : {0, 2, 5, 16, 17, 200}) {
        EXPECT_EQ(BoxLine({0, 0, 0}, {1, 1, 9}, static_cast<std::uint8_t>(kind)).end.z, 9);
    }
}

TEST(LodLineBuilder, DiagonalBeamTakesItsPrincipalAxis) {
    // A beam along the diagonal of the xy plane: its box is much thicker than itself.
    RawBRep beam = RawBox({-10, -0.5F, -0.5F}, {10, 0.5F, 0.5F});
    float const c = std::sqrt(0.5F);
    for (auto& v : *beam.vertices) v = {c * v.x - c * v.y, c * v.x + c * v.y, v.z};
    LodLineBuilder builder;
    ASSERT_TRUE(builder.Build(ModelOf(beam).data()));
    auto const lines = builder.GetLodLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NEAR(Length(lines[0].end - lines[0].start), 20, 1e-4);
    EXPECT_NEAR(lines[0].radius, std::sqrt(0.5), 1e-4);
    EXPECT_NEAR(std::fabs(lines[0].end.x), 10 * c, 1e-4);
}

TEST(LodLineBuilder, EqualVolumesKeepTheBoxLine) {
    // For an upright box both candidates are the same cylinder; only the box line's direction is certain.
    LodLineBuilder builder;
    ASSERT_TRUE(builder.Build(ModelOf(RawBox({0, 0, 0}, {1, 1, 8}), 7).data()));
    auto const line = builder.GetLodLines().at(0);
    ExpectPoint(line.start, 0.5, 0.5, 0);
    ExpectPoint(line.end, 0.5, 0.5, 8);
}

TEST(LodLineBuilder, PlacementsMoveTheEndsAndLeaveTheRadius) {
    RawModel model;
    auto const entity = model.AddEntity(At(100, 0, 0));
    model.AddInstance(entity, model.AddDefinition({0, 0, 0}, {2, 2, 6}), At(0, 10, 0), 42);
    auto const buffer = model.Write();
    LodLineBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    auto const placed = builder.GetLodLines().at(0);
    ExpectPoint(placed.start, 101, 11, 0);
    ExpectPoint(placed.end, 101, 11, 6);
    EXPECT_EQ(placed.materialIndex, 42u);

    Matrix4 twice;
    twice.m = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    ASSERT_TRUE(builder.Build(buffer.data(), {twice}));
    auto const scaled = builder.GetLodLines().at(0);
    ExpectPoint(scaled.end, 2, 2, 12);
    EXPECT_EQ(scaled.radius, placed.radius);
}

TEST(LodLineBuilder, ScoresCountWorldLengthAgainstTheUnscaledRadius) {
    // A turned plate: its principal axis is the longer candidate with the smaller radius. Stretching the model across
    // the box line makes that candidate's cylinder grow more, until the box line wins.
    RawBRep plate = RawBox({-2, -1.9F, -0.1F}, {2, 1.9F, 0.1F});
    float const c = std::cos(0.35F), s = std::sin(0.35F);
    for (auto& v : *plate.vertices) v = {c * v.x - s * v.y, s * v.x + c * v.y, v.z};
    auto const buffer = ModelOf(plate);
    auto const lineStretchedBy = [&](double x, double y) {
        Matrix4 stretch;
        stretch(0, 0) = x;
        stretch(1, 1) = y;
        LodLineBuilder builder;
        EXPECT_TRUE(builder.Build(buffer.data(), {stretch}));
        return builder.GetLodLines().at(0);
    };
    auto const isBoxLine = [](LodLine const& line) { return line.start.x == line.end.x || line.start.y == line.end.y; };
    EXPECT_NE(isBoxLine(lineStretchedBy(10, 1)), isBoxLine(lineStretchedBy(1, 10)));
}

TEST(LodLineBuilder, EveryInstanceHasItsLineInOrder) {
    RawModel model;
    auto const entity = model.AddEntity();
    auto const definition = model.AddBRep(RawBox({0, 0, 0}, {1, 1, 3}), 6);
    for (int i = 0; i < 20; ++i) model.AddInstance(entity, definition, At(i, 0, 0), static_cast<std::uint32_t>(i));
    LodLineBuilder builder;
    ASSERT_TRUE(builder.Build(model.Write().data()));
    auto const lines = builder.GetLodLines();
    ASSERT_EQ(lines.size(), 20u);
    for (std::uint32_t i = 0; i < 20; ++i) {
        EXPECT_EQ(lines[i].materialIndex, i);
        EXPECT_DOUBLE_EQ(lines[i].start.x, i + 0.5);
    }
}

TEST(LodLineBuilder, LinesCanBeTakenOnce) {
    LodLineBuilder builder;
    ASSERT_TRUE(builder.Build(ModelOf(RawBox({0, 0, 0}, {1, 1, 1})).data()));
    EXPECT_EQ(builder.GetLodLines().size(), 1u);
    EXPECT_TRUE(builder.GetLodLines().empty());
}

TEST(LodLineBuilder, NoInstancesGiveNoLinesAndAnAbsentVectorFails) {
    RawModel model;
    LodLineBuilder builder;
    EXPECT_TRUE(builder.Build(model.Write().data()));
    EXPECT_TRUE(builder.GetLodLines().empty());
    model.instances = std::nullopt;
    EXPECT_FALSE(builder.Build(model.Write().data()));
    EXPECT_FALSE(builder.Build(model.Write().data(), {}));
}

TEST(LodLineBuilder, FailedBuildOfABufferEmptiesTheLinesAndOfPlacementsKeepsThem) {
    auto const good = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
    RawModel wrong;
    wrong.identifier = "QLN7";
    LodLineBuilder builder;
    ASSERT_TRUE(builder.Build(good.data()));
    EXPECT_FALSE(builder.Build(wrong.Write().data(), {}));
    EXPECT_EQ(builder.GetLodLines().size(), 1u);
    ASSERT_TRUE(builder.Build(good.data()));
    EXPECT_FALSE(builder.Build(wrong.Write().data()));
    EXPECT_TRUE(builder.GetLodLines().empty());
}

TEST(LodLineBuilder, MissingDefinitionEndsTheBuildAndKeepsTheLinesBefore) {
    RawModel model;
    auto const entity = model.AddEntity();
    model.AddInstance(entity, model.AddDefinition({0, 0, 0}, {1, 1, 2}), {}, 7);
    model.AddInstance(entity, 5);
    LodLineBuilder builder;
    EXPECT_FALSE(builder.Build(model.Write().data()));
    auto const lines = builder.GetLodLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].materialIndex, 7u);
    EXPECT_EQ(lines[1].materialIndex, 0u);
}

}  // namespace
