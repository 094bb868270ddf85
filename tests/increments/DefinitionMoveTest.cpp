#include "increments/DefinitionMove.h"

#include "support/Shapes.h"
#include "support/Transforms.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools::Increments;
using TestSupport::Compose;
using TestSupport::MakeRotation;
using TestSupport::MakeRotationZ;
using TestSupport::MakeTranslation;

constexpr PlacementRecord kRaw{{10, 20, 30}, {0.3f, 1.7f, 0}, {-1.7f, 0.3f, 0}};

Vertex Apply(DoubleFrame const& frame, Vertex const& p) {
    return frame.origin + frame.x * p.x + frame.y * p.y + frame.z * p.z;
}

TEST(DefinitionMove, ThereIsNoneForTheIdentityAndForItsRoundingNoise) {
    auto const cube = TestSupport::MakeUnitCube();
    EXPECT_FALSE(FindMove({}, cube));
    EXPECT_FALSE(FindMove(Compose(MakeTranslation(1e-9, 0, 0), MakeRotationZ(1e-9)), cube));
    EXPECT_TRUE(FindMove(MakeTranslation(1e-5, 0, 0), cube));
    EXPECT_TRUE(FindMove(MakeRotationZ(1e-5), cube));
}

TEST(DefinitionMove, NoiseFarFromTheOriginIsMeasuredAtTheShape) {
    auto const farCube = TestSupport::MakeBox({1e6, 0, 0}, {1e6 + 1, 1, 1});
    EXPECT_TRUE(FindMove(MakeRotationZ(1e-9), farCube)) << "the shape moves by 1e-3";
}

TEST(DefinitionMove, TranslationKeepsTheStoredAxesToTheBit) {
    auto const move = FindMove(MakeTranslation(-5, 0, 2), TestSupport::MakeUnitCube());
    ASSERT_TRUE(move);
    EXPECT_FALSE(move->rotates);
    PlacementRecord const moved = PlaceMoved(kRaw, ToDoubleFrame(kRaw), *move);
    EXPECT_EQ(moved.xAxis, kRaw.xAxis);
    EXPECT_EQ(moved.yAxis, kRaw.yAxis);
    Vertex const expected = Apply(ToDoubleFrame(kRaw), {5, 0, -2});
    EXPECT_NEAR(moved.origin[0], expected.x, 1e-12);
    EXPECT_NEAR(moved.origin[1], expected.y, 1e-12);
    EXPECT_NEAR(moved.origin[2], expected.z, 1e-12);
}

TEST(DefinitionMove, PositionsStayAlsoFarFromTheDefinitionOrigin) {
    constexpr std::uint32_t kSeed = 7;
    SCOPED_TRACE("seed 7");
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (double const distance : {0.0, 10.0, 1e4, 1e7}) {
        for (int round = 0; round < 100; ++round) {
            Vertex const at = distance * Vertex{unit(random), unit(random), unit(random)};
            auto const shape = TestSupport::MakeBox(at, at + Vertex{1, 2, 3});
            auto const turn = MakeRotation({unit(random), unit(random), 1.5}, 3 * unit(random));
            auto const toWritten = Compose(turn, MakeTranslation(-at.x, -at.y, -at.z));
            auto const move = FindMove(toWritten, shape);
            ASSERT_TRUE(move && move->rotates);
            DoubleFrame const after = ToDoubleFrame(PlaceMoved(kRaw, ToDoubleFrame(kRaw), *move));
            for (Vertex const& vertex : shape.vertices) {
                Vertex const before = Apply(ToDoubleFrame(kRaw), vertex);
                ASSERT_LT(Length(Apply(after, TransformPoint(toWritten.matrix, vertex)) - before), 1e-6);
            }
        }
    }
}

TEST(DefinitionMove, LineGraphicsMoveByTheBoxOfTheirLinesAndArcs) {
    GraphicsContainer graphics;
    graphics.lines = {{{0, 0, 0}, {4, 0, 0}}};
    graphics.arcs = {{{10, 0, 0}, {0, 0, 1}, {1, 0, 0}, 2, 1}};
    auto const move = FindMove(MakeTranslation(0, 3, 0), graphics);
    ASSERT_TRUE(move);
    EXPECT_EQ(move->sourceCenter.x, 6);
    EXPECT_EQ(move->writtenCenter.y, 3);
}

}  // namespace
