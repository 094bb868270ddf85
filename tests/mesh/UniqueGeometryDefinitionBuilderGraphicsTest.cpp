#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "support/RecordingTarget.h"
#include "support/Transforms.h"

namespace {

using GeometryObjectLib::ArcSegment;
using GeometryObjectLib::GraphicsContainer;
using GeometryObjectLib::LineSegment;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::TransformDirection;
using GeometryObjectLib::TransformPoint;
using Quorlan::Tools::UniqueGeometryDefinitionBuilder;
using TestSupport::AffineTransform;
using TestSupport::Compose;
using TestSupport::MakeRotation;
using TestSupport::MakeTranslation;
using TestSupport::RecordingTarget;
using TestSupport::Vertex;

constexpr std::uint32_t kFirst = RecordingTarget::kFirstIndex;
constexpr double kPi = 3.141592653589793;

struct Fixture {
    RecordingTarget target;
    UniqueGeometryDefinitionBuilder unique{target};
    AffineTransform transform = MakeTranslation(7, 7, 7);

    std::uint32_t Add(GraphicsContainer const& graphics) {
        return static_cast<std::uint32_t>(unique.Add(graphics, &transform));
    }
};

GraphicsContainer Placed(GraphicsContainer graphics, AffineTransform const& placement) {
    Matrix4 const& m = placement.matrix;
    for (LineSegment& line : graphics.lines) line = {TransformPoint(m, line.start), TransformPoint(m, line.end)};
    for (ArcSegment& arc : graphics.arcs) {
        arc.center = TransformPoint(m, arc.center);
        arc.axis = TransformDirection(m, arc.axis);
        arc.startDirection = TransformDirection(m, arc.startDirection);
    }
    return graphics;
}

/// A door: its leaf and the quarter circle that it opens along.
GraphicsContainer MakeDoor() {
    return {{{{0, 0, 0}, {0, 0.9, 0}}, {{0, 0, 0}, {0.9, 0, 0}}}, {{{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, 0.9, kPi / 2}}};
}

AffineTransform MakePlacement() { return Compose(MakeTranslation(12, -7, 3), MakeRotation({1, -2, 0.5}, 2)); }

void ExpectMapsOnto(AffineTransform const& transform, GraphicsContainer const& given, GraphicsContainer const& stored) {
    GraphicsContainer const mapped = Placed(given, transform);
    for (std::size_t i = 0; i < stored.lines.size(); ++i) {
        EXPECT_LT(Length(mapped.lines[i].start - stored.lines[i].start), 1e-9) << i;
        EXPECT_LT(Length(mapped.lines[i].end - stored.lines[i].end), 1e-9) << i;
    }
    for (std::size_t i = 0; i < stored.arcs.size(); ++i) {
        EXPECT_LT(Length(mapped.arcs[i].center - stored.arcs[i].center), 1e-9) << i;
        EXPECT_LT(Length(mapped.arcs[i].axis - stored.arcs[i].axis), 1e-9) << i;
        EXPECT_LT(Length(mapped.arcs[i].startDirection - stored.arcs[i].startDirection), 1e-9) << i;
    }
}

TEST(UniqueGeometryDefinitionBuilderGraphics, AnEmptyContainerGivesTheInvalidIndexAndLeavesTheTransformAlone) {
    Fixture f;
    EXPECT_EQ(f.Add({}), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.transform.matrix(0, 3), 7);
    EXPECT_EQ(f.target.GetCount(), 0u);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, ANewContainerIsForwardedWithTheIdentityWhereverItLies) {
    for (double const distance : {0.0, 10000.0}) {
        Fixture f;
        EXPECT_EQ(f.Add(Placed(MakeDoor(), MakeTranslation(distance, 0, 0))), kFirst);
        EXPECT_EQ(f.transform.matrix.m, Matrix4().m);
        ASSERT_EQ(f.target.graphics.size(), 1u);
        EXPECT_EQ(f.target.graphics[0].lines[1].end.x, distance + 0.9);
        EXPECT_EQ(f.target.graphics[0].arcs[0].sweepAngle, kPi / 2);
    }
}

TEST(UniqueGeometryDefinitionBuilderGraphics, IdenticalMovedAndRotatedCopiesAreFoundAndCounted) {
    Fixture f;
    f.Add(MakeDoor());
    EXPECT_EQ(f.Add(MakeDoor()), kFirst);
    EXPECT_EQ(f.unique.GetIdenticalCount(), 1u);
    EXPECT_EQ(f.Add(Placed(MakeDoor(), MakeTranslation(5, 0, 0))), kFirst);
    EXPECT_NEAR(f.transform.matrix(0, 3), -5, 1e-12);
    EXPECT_EQ(f.unique.GetTranslatedCount(), 1u);
    auto const rotated = Placed(MakeDoor(), MakePlacement());
    EXPECT_EQ(f.Add(rotated), kFirst);
    ExpectMapsOnto(f.transform, rotated, MakeDoor());
    EXPECT_EQ(f.unique.GetTransformedCount(), 1u);
    EXPECT_EQ(f.target.graphics.size(), 1u);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, TheMirrorImageOfAFlatDrawingIsTheDrawingTurnedOver) {
    Fixture f;
    f.Add(MakeDoor());
    GraphicsContainer mirrored = MakeDoor();
    mirrored.lines[1].end.x = -0.9;
    mirrored.arcs[0].axis.z = -1;
    mirrored.arcs[0].startDirection.x = -1;
    EXPECT_EQ(f.Add(mirrored), kFirst);
    ExpectMapsOnto(f.transform, mirrored, MakeDoor());
    EXPECT_NEAR(f.transform.angle, kPi, 1e-12);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, TheMirrorImageOfLinesInSpaceIsNew) {
    Fixture f;
    GraphicsContainer corner{{{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 0}, {0, 2, 0}}, {{0, 0, 0}, {0, 0, 3}}}, {}};
    f.Add(corner);
    corner.lines[0].end.x = -1;
    EXPECT_EQ(f.Add(corner), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, AnotherOrderOrDirectionIsNew) {
    Fixture f;
    f.Add(MakeDoor());
    GraphicsContainer swapped = MakeDoor();
    std::swap(swapped.lines[0], swapped.lines[1]);
    EXPECT_EQ(f.Add(swapped), kFirst + 1);
    GraphicsContainer reversed = MakeDoor();
    std::swap(reversed.lines[0].start, reversed.lines[0].end);
    EXPECT_EQ(f.Add(reversed), kFirst + 2);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, EveryPartOfALineAndOfAnArcIsCompared) {
    auto const vary = [](int part, double by) {
        GraphicsContainer door = MakeDoor();
        ArcSegment& arc = door.arcs[0];
        switch (part) {
            case 0: door.lines[0].end.z += by; break;
            case 1: arc.center.z += by; break;
            case 2: arc.axis.x += by; break;
            case 3: arc.startDirection.z += by / 0.9; break;
            case 4: arc.radius += by; break;
            default: arc.sweepAngle += by;
        }
        return door;
    };
    for (int part = 0; part < 6; ++part) {
        Fixture f;
        f.Add(MakeDoor());
        EXPECT_EQ(f.Add(vary(part, 0.5e-5)), kFirst) << part;
        EXPECT_EQ(f.Add(vary(part, 3e-5)), kFirst + 1) << part;
    }
}

TEST(UniqueGeometryDefinitionBuilderGraphics, AFullCircleIsNotAnArcWithoutSweep) {
    Fixture f;
    GraphicsContainer circle{{}, {{{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, 1, 2 * kPi}}};
    f.Add(circle);
    auto const rotated = Placed(circle, MakePlacement());
    EXPECT_EQ(f.Add(rotated), kFirst);
    ExpectMapsOnto(f.transform, rotated, circle);
    circle.arcs[0].sweepAngle = 0;
    EXPECT_EQ(f.Add(circle), kFirst + 1);
    EXPECT_EQ(f.Add(circle), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, ASingleLineIsFoundInEveryDirection) {
    GraphicsContainer const line{{{{1, 2, 3}, {4, 4, 4}}}, {}};
    Fixture f;
    f.Add(line);
    for (int i = 0; i < 20; ++i) {
        auto const placed = Placed(line, Compose(MakeTranslation(i, 3, -i), MakeRotation({i - 7.5, 3, i * 0.5}, i)));
        EXPECT_EQ(f.Add(placed), kFirst) << i;
        ExpectMapsOnto(f.transform, placed, line);
    }
    EXPECT_EQ(f.Add({{{{1, 2, 3}, {4, 4, 4.001}}}, {}}), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, ADashedLineIsFoundAndItsGapsCount) {
    auto const make = [](double gap) {
        GraphicsContainer dashes;
        for (int i = 0; i < 5; ++i) dashes.lines.push_back({{i * (1 + gap), 0, 0}, {i * (1 + gap) + 1, 0, 0}});
        return dashes;
    };
    Fixture f;
    f.Add(make(0.5));
    auto const placed = Placed(make(0.5), MakePlacement());
    EXPECT_EQ(f.Add(placed), kFirst);
    ExpectMapsOnto(f.transform, placed, make(0.5));
    EXPECT_EQ(f.Add(make(0.25)), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, CoincidentPointsAreForwardedEachTime) {
    Fixture f;
    GraphicsContainer const point{{{{1, 1, 1}, {1, 1, 1}}}, {}};
    EXPECT_EQ(f.Add(point), kFirst);
    EXPECT_EQ(f.Add(point), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilderGraphics, RandomContainersAreFoundAgainAtRandomPlaces) {
    unsigned const seed = 8;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(-3, 3);
    auto const point = [&] { return Vertex{coordinate(random), coordinate(random), coordinate(random)}; };
    Fixture f;
    for (int i = 0; i < 200; ++i) {
        GraphicsContainer graphics;
        for (auto lines = random() % 4; lines > 0; --lines) graphics.lines.push_back({point(), point()});
        for (auto arcs = random() % 3; arcs > 0; --arcs) {
            Vertex const axis = point();
            Vertex const start = Cross(axis, point());
            graphics.arcs.push_back({point(), axis / Length(axis), start / Length(start), 1, coordinate(random)});
        }
        if (graphics.lines.empty() && graphics.arcs.empty()) continue;
        std::uint32_t const index = f.Add(graphics);
        EXPECT_EQ(f.transform.matrix.m, Matrix4().m) << i;
        auto const placed =
            Placed(graphics, Compose(MakeTranslation(coordinate(random), 9, 9), MakeRotation(point(), 2)));
        ASSERT_EQ(f.Add(placed), index) << i;
        ExpectMapsOnto(f.transform, placed, graphics);
    }
}

}  // namespace
