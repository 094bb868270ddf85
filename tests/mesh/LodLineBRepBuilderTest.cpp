#include <Tools/LodLineBRepBuilder.h>

#include "mesh/SymmetricEigen.h"
#include "support/MeshShapes.h"
#include "support/PlainLodLine.h"
#include "support/RawModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::LodLineBRepBuilder;
using Line = LodLineBRepBuilder::line_s;

Vector3f StartOf(Line const& line) { return {line.startX, line.startY, line.startZ}; }
Vector3f EndOf(Line const& line) { return {line.endX, line.endY, line.endZ}; }
float LengthOf(Line const& line) { return Length(EndOf(line) - StartOf(line)); }

RawBRep Points(std::vector<Vector3f> const& vertices) { return ShapeOf(vertices, {}); }

Line LineOf(RawBRep const& shape, std::uint8_t kind = 1) {
    LodLineBRepBuilder builder;
    EXPECT_TRUE(builder.Build(ModelOf(shape, kind).data()));
    return builder.GetLine(kind, 0);
}

Line PlainLineOf(std::vector<Vector3f> const& vertices) {
    return PlainLodLine(vertices, [](float xx, float yy, float zz, float xy, float xz, float yz) {
        return Tools::Decompose({xx, yy, zz, xy, xz, yz}).vectors[2];
    });
}

/// The vertices turned about a skew axis.
RawBRep Turned(RawBRep shape, float angle) {
    float const c = std::cos(angle), s = std::sin(angle);
    for (auto& v : *shape.vertices) {
        v = {c * v.x - s * v.y, s * v.x + c * v.y, v.z};
        v = {v.x, c * v.y - s * v.z, s * v.y + c * v.z};
    }
    return shape;
}

TEST(LodLineBRepBuilder, LongBoxGivesTheLineThroughItsCentre) {
    Line const line = LineOf(RawBox({0, 0, 0}, {10, 1, 1}));
    EXPECT_EQ(LengthOf(line), 10);
    EXPECT_EQ(line.radius, std::sqrt(0.5F));
    for (Vector3f const& end : {StartOf(line), EndOf(line)}) {
        EXPECT_EQ(end.y, 0.5F);
        EXPECT_EQ(end.z, 0.5F);
    }
}

TEST(LodLineBRepBuilder, TurnedBoxKeepsLengthAndRadius) {
    for (float angle = 0; angle < 6; angle += 0.1F) {
        Line const line = LineOf(Turned(RawBox({0, 0, 0}, {10, 1, 1}), angle));
        EXPECT_NEAR(LengthOf(line), 10, 1e-5);
        EXPECT_NEAR(line.radius, std::sqrt(0.5), 1e-5);
    }
}

TEST(LodLineBRepBuilder, CollinearVerticesGiveRadiusZeroBetweenTheExtremeOnes) {
    Line const line = LineOf(Points({{0, 2, 0}, {0, -3, 0}, {0, 1, 0}, {0, 5, 0}}));
    EXPECT_EQ(line.radius, 0);
    EXPECT_EQ(std::min(line.startY, line.endY), -3);
    EXPECT_EQ(std::max(line.startY, line.endY), 5);
    Line const skew = LineOf(Points({{0, 0, 0}, {1, 2, 3}, {2, 4, 6}}));
    EXPECT_NEAR(skew.radius, 0, 4e-6);
    EXPECT_NEAR(LengthOf(skew), std::sqrt(56.0), 1e-5);
}

TEST(LodLineBRepBuilder, FewVerticesAreNoSpecialCase) {
    Line const none = LineOf(Points({}));
    EXPECT_EQ(none.radius, 0);
    EXPECT_EQ(LengthOf(none), 0);
    Line const one = LineOf(Points({{1, 2, 3}}));
    EXPECT_EQ(LengthOf(one), 0);
    EXPECT_EQ(one.radius, 0);
    EXPECT_EQ(one.startZ, 3);
    Line const same = LineOf(Points({{1, 2, 3}, {1, 2, 3}}));
    EXPECT_EQ(LengthOf(same), 0);
}

TEST(LodLineBRepBuilder, CubesHaveAnAxisThatFitsTheirVertices) {
    Line const cube = LineOf(RawBox({0, 0, 0}, {1, 1, 1}));
    EXPECT_EQ(cube.startX, 0.5F);  // the exact cube's axis is z
    EXPECT_EQ(cube.endY, 0.5F);
    EXPECT_EQ(cube.radius, std::sqrt(0.5F));
    Line const turned = LineOf(Turned(RawBox({0, 0, 0}, {1, 1, 1}), 0.7F));
    EXPECT_LE(LengthOf(turned), std::sqrt(3.0F) + 1e-5F);
    EXPECT_LE(turned.radius, std::sqrt(3.0F) / 2 + 1e-5F);
}

TEST(LodLineBRepBuilder, AllKindsUseThePositionsOnly) {
    auto const box = Turned(RawBox({1, 2, 3}, {4, 9, 5}), 1);
    Line const plain = LineOf(box, 1);
    for (std::uint8_t const kind : {std::uint8_t{6}, std::uint8_t{7}}) {
        Line const line = LineOf(box, kind);
        EXPECT_EQ(std::memcmp(&line, &plain, sizeof(line)), 0);
    }
}

TEST(LodLineBRepBuilder, OtherKindsLookUpTheZeroLine) {
    LodLineBRepBuilder builder;
    ASSERT_TRUE(builder.Build(ModelOf(RawBox({0, 0, 0}, {1, 1, 1})).data()));
    for (unsigned const kind : {0u, 2u, 5u, 8u, 17u, 1000u}) {
        EXPECT_EQ(LengthOf(builder.GetLine(kind, 12345)), 0);
        EXPECT_EQ(builder.GetLine(kind, 0).radius, 0);
        EXPECT_EQ(builder.GetLineCount(kind), 0u);
    }
    EXPECT_EQ(builder.GetLineCount(1), 1u);
    EXPECT_EQ(&builder.GetLine(0, 0), &builder.GetLine(99, 7));
}

TEST(LodLineBRepBuilder, ListOfAKindStopsAtTheFirstBRepWithoutVertices) {
    RawModel model;
    model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}));
    model.AddBRep(RawBRep{std::nullopt});
    model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}));
    model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}), 7);
    LodLineBRepBuilder builder;
    ASSERT_TRUE(builder.Build(model.Write().data()));
    EXPECT_EQ(builder.GetLineCount(1), 1u);
    EXPECT_EQ(builder.GetLineCount(7), 1u);
    EXPECT_EQ(builder.GetLineCount(6), 0u);
}

TEST(LodLineBRepBuilder, WrongBuffersFailAndEmptyTheLines) {
    RawModel wrongIdentifier;
    wrongIdentifier.identifier = "qln8";
    RawModel noEntities;
    noEntities.hasEntities = false;
    RawModel noGeometry;
    noGeometry.hasGeometry = false;
    for (RawModel const* const model : {&wrongIdentifier, &noEntities, &noGeometry}) {
        LodLineBRepBuilder builder;
        ASSERT_TRUE(builder.Build(ModelOf(RawBox({0, 0, 0}, {1, 1, 1})).data()));
        EXPECT_FALSE(builder.Build(model->Write().data()));
        EXPECT_EQ(builder.GetLineCount(1), 0u);
    }
}

TEST(LodLineBRepBuilder, EntitiesWithoutRecordsAreEnough) {
    RawModel model;
    model.entities = std::nullopt;
    model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}));
    LodLineBRepBuilder builder;
    EXPECT_TRUE(builder.Build(model.Write().data()));
    EXPECT_EQ(builder.GetLineCount(1), 1u);
}

TEST(LodLineBRepBuilder, RandomCloudsGiveTheBitsOfThePlainSums) {
    constexpr unsigned kSeed = 12;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::normal_distribution<float> number;
    for (int count = 0; count < 200; ++count) {
        std::vector<Vector3f> vertices(static_cast<std::size_t>(count));
        Vector3f const origin{1000 * number(random), number(random), -50 * number(random)};
        for (auto& v : vertices) v = origin + Vector3f{number(random), 3 * number(random), number(random)};
        Line const line = LineOf(Points(vertices), static_cast<std::uint8_t>(count % 2 == 0 ? 1 : 7));
        Line const plain = PlainLineOf(vertices);
        ASSERT_EQ(std::memcmp(&line, &plain, sizeof(line)), 0) << count;
    }
}

TEST(LodLineBRepBuilder, ShapesOfAnySizesSideBySideGiveTheBitsOfThePlainSums) {
    constexpr unsigned kSeed = 13;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::normal_distribution<float> number;
    for (int count = 1; count < 40; ++count) {
        std::vector<std::vector<Vector3f>> clouds(static_cast<std::size_t>(count));
        RawModel model;
        for (auto& cloud : clouds) {
            cloud.resize(random() % 3 == 0 ? 8 : 1 + random() % 40);
            for (auto& v : cloud) v = {number(random), 5 * number(random), number(random)};
            model.AddBRep(Points(cloud));
        }
        auto const buffer = model.Write();
        LodLineBRepBuilder builder;
        ASSERT_TRUE(builder.Build(buffer.data()));
        for (unsigned i = 0; i < clouds.size(); ++i) {
            Line const plain = PlainLineOf(clouds[i]);
            ASSERT_EQ(std::memcmp(&builder.GetLine(1, i), &plain, sizeof(plain)), 0) << i << " of " << count;
        }
    }
}

TEST(LodLineBRepBuilder, RegularShapesGiveTheBitsOfThePlainSums) {
    for (auto const& shape : {RawBox({0, 0, 0}, {1, 2, 3}), RawPrism(129), RawPlate(8), RawTorus(40, 30)}) {
        Line const line = LineOf(shape);
        Line const plain = PlainLineOf(*shape.vertices);
        EXPECT_EQ(std::memcmp(&line, &plain, sizeof(line)), 0);
    }
}

TEST(LodLineBRepBuilder, AxisIsTheDirectionOfGreatestSpread) {
    // Against the axis of greatest variance, found by trying directions all over the sphere.
    constexpr unsigned kSeed = 13;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::normal_distribution<float> number;
    for (int round = 0; round < 5; ++round) {
        std::vector<Vector3f> vertices(60);
        Vector3f const long_{number(random), number(random), number(random)};
        Vector3f mean;
        for (auto& v : vertices) {
            v = 5 * number(random) * long_ + Vector3f{number(random), number(random), number(random)};
            mean = mean + v / 60;
        }
        Line const line = LineOf(Points(vertices));
        Vector3f const axis = (EndOf(line) - StartOf(line)) / LengthOf(line);
        auto const spread = [&](Vector3f const& direction) {
            double sum = 0;
            for (auto const& v : vertices) sum += std::pow(Dot(v - mean, direction), 2);
            return sum;
        };
        double const best = spread(axis);
        for (int i = 0; i < 500; ++i) {
            Vector3f const d{number(random), number(random), number(random)};
            EXPECT_LE(spread(d / Length(d)), best * (1 + 1e-4));
        }
    }
}

TEST(LodLineBRepBuilder, ValuesThatAreNotNumbersComeToAnEnd) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(std::isfinite(LineOf(Points({{nan, 0, 0}, {1, 1, 1}, {2, 0, 1}})).startX));
}

}  // namespace
