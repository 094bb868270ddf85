#include <Tools/QuantificationBuilder.h>

#include "support/RandomModel.h"
#include "support/RawModel.h"
#include "support/Shapes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using GeometryObjectLib::FacetedBRep;
using Tools::QuantificationBuilder;

constexpr double kPi = 3.141592653589793;

struct Quantities {
    double area;
    double volume;
    Vertex center;
};

Quantities Quantify(RawModel const& model, unsigned entity = 0) {
    auto const buffer = model.Write();
    QuantificationBuilder builder(buffer.data());
    EXPECT_TRUE(builder.Build(entity));
    return {builder.GetArea(), builder.GetVolume(), builder.GetCenterOfGravity()};
}

/// One entity with one instance of the shape.
RawModel ModelOf(RawBRep const& shape, PlacementRecord const& placement = {}) {
    RawModel model;
    model.AddInstance(model.AddEntity(), model.AddBRep(shape), placement);
    return model;
}

void ExpectQuantities(Quantities const& q, double area, double volume, Vertex const& center, double tolerance = 1e-12) {
    EXPECT_NEAR(q.area, area, tolerance * std::abs(area));
    EXPECT_NEAR(q.volume, volume, tolerance * std::abs(volume));
    EXPECT_NEAR(q.center.x, center.x, tolerance * (1 + std::abs(center.x)));
    EXPECT_NEAR(q.center.y, center.y, tolerance * (1 + std::abs(center.y)));
    EXPECT_NEAR(q.center.z, center.z, tolerance * (1 + std::abs(center.z)));
}

void ExpectZero(QuantificationBuilder const& builder) {
    EXPECT_EQ(builder.GetArea(), 0);
    EXPECT_EQ(builder.GetVolume(), 0);
    EXPECT_EQ(builder.GetCenterOfGravity().x, 0);
    EXPECT_EQ(builder.GetCenterOfGravity().y, 0);
    EXPECT_EQ(builder.GetCenterOfGravity().z, 0);
}

bool IsNotANumber(Vertex const& v) { return std::isnan(v.x) && std::isnan(v.y) && std::isnan(v.z); }

/// Turns every loop round.
RawBRep InsideOut(RawBRep shape) {
    for (auto& face : *shape.faces) std::reverse(face->begin(), face->end());
    return shape;
}

/// An L of 3 x 3 with arms of width 1, two high, with a square hole of 0.5 through the corner of the L.
FacetedBRep MakeAngleWithHole() {
    FacetedBRep shape;
    std::vector<Vertex> const outline{{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {1, 1, 0}, {1, 3, 0}, {0, 3, 0}};
    std::vector<Vertex> const hole{{0.25, 0.25, 0}, {0.75, 0.25, 0}, {0.75, 0.75, 0}, {0.25, 0.75, 0}};
    for (double const z : {0.0, 2.0}) {
        for (auto const& ring : {outline, hole}) {
            for (Vertex const& v : ring) shape.vertices.push_back({v.x, v.y, z});
        }
    }
    shape.faces = {{5, 4, 3, 2, 1, 0}, {10, 11, 12, 13, 14, 15}};
    shape.holes = {{0, {{6, 7, 8, 9}}}, {1, {{19, 18, 17, 16}}}};
    for (std::uint32_t i = 0; i < 6; ++i) {
        std::uint32_t const next = (i + 1) % 6;
        shape.faces.push_back({i, next, 10 + next, 10 + i});
    }
    for (std::uint32_t i = 0; i < 4; ++i) {
        std::uint32_t const next = (i + 1) % 4;
        shape.faces.push_back({6 + next, 6 + i, 16 + i, 16 + next});
    }
    return shape;
}

/// A sphere of latitude rings, its caps single polygons.
FacetedBRep MakeSphere(std::uint32_t rings, std::uint32_t sectors) {
    FacetedBRep sphere;
    for (std::uint32_t r = 1; r < rings; ++r) {
        double const theta = kPi * r / rings;
        for (std::uint32_t s = 0; s < sectors; ++s) {
            double const phi = 2 * kPi * s / sectors;
            sphere.vertices.push_back(
                {std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)});
        }
    }
    std::vector<std::uint32_t> top;
    std::vector<std::uint32_t> bottom;
    for (std::uint32_t s = 0; s < sectors; ++s) {
        top.push_back(s);
        bottom.push_back((rings - 1) * sectors - 1 - s);
    }
    sphere.faces = {top, bottom};
    for (std::uint32_t r = 0; r + 2 < rings; ++r) {
        for (std::uint32_t s = 0; s < sectors; ++s) {
            std::uint32_t const next = (s + 1) % sectors;
            std::uint32_t const below = (r + 1) * sectors;
            sphere.faces.push_back({r * sectors + s, below + s, below + next, r * sectors + next});
        }
    }
    return sphere;
}

/// A right prism over a star-shaped outline with random radii around a hole of half the radii.
struct RandomStar {
    FacetedBRep shape;
    double area = 0;
    double volume = 0;

    RandomStar(std::uint32_t seed, std::uint32_t corners, double height) {
        RandomNumbers random(seed);
        std::vector<Vertex> outline;
        for (std::uint32_t i = 0; i < corners; ++i) {
            double const angle = 2 * kPi * i / corners;
            double const radius = random.Between(1, 3);
            outline.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
        }
        double outlineArea = 0;
        double outlineLength = 0;
        for (std::uint32_t i = 0; i < corners; ++i) {
            Vertex const& p = outline[i];
            Vertex const& q = outline[(i + 1) % corners];
            outlineArea += 0.5 * (p.x * q.y - p.y * q.x);
            outlineLength += Length(q - p);
        }
        double const side = outlineArea * 0.75;
        area = 2 * side + 1.5 * outlineLength * height;
        volume = side * height;

        // Rings: outline below, hole below, outline above, hole above.
        for (double const z : {0.0, height}) {
            for (double const scale : {1.0, 0.5}) {
                for (Vertex const& v : outline) shape.vertices.push_back({scale * v.x, scale * v.y, z});
            }
        }
        shape.faces.resize(2);
        shape.holes[0].resize(1);
        shape.holes[1].resize(1);
        for (std::uint32_t i = 0; i < corners; ++i) {
            std::uint32_t const next = (i + 1) % corners;
            shape.faces[0].push_back(corners - 1 - i);
            shape.faces[1].push_back(2 * corners + i);
            shape.holes[0][0].push_back(corners + i);
            shape.holes[1][0].push_back(4 * corners - 1 - i);
            shape.faces.push_back({i, next, 2 * corners + next, 2 * corners + i});
            shape.faces.push_back({corners + next, corners + i, 3 * corners + i, 3 * corners + next});
        }
    }

    void Turn(Vertex const& x, Vertex const& y) {
        for (Vertex& v : shape.vertices) v = x * v.x + y * v.y + Cross(x, y) * v.z;
    }
};

TEST(QuantificationBuilder, IsZeroBeforeTheFirstBuild) {
    auto const buffer = ModelOf(RawBox({0, 0, 0}, {1, 1, 1})).Write();
    ExpectZero(QuantificationBuilder(buffer.data()));
}

TEST(QuantificationBuilder, UnitCube) {
    auto const q = Quantify(ModelOf(RawBox({0, 0, 0}, {1, 1, 1})));
    EXPECT_EQ(q.area, 6);
    EXPECT_DOUBLE_EQ(q.volume, 1);
    ExpectQuantities(q, 6, 1, {0.5, 0.5, 0.5});
}

TEST(QuantificationBuilder, CubeTurnedInsideOutHasANegativeVolumeAndTheSameCentre) {
    ExpectQuantities(Quantify(ModelOf(InsideOut(RawBox({0, 0, 0}, {1, 1, 1})))), 6, -1, {0.5, 0.5, 0.5});
}

TEST(QuantificationBuilder, Prism) {
    std::uint32_t const sides = 7;
    double const base = 0.5 * sides * 4 * std::sin(2 * kPi / sides);
    double const edge = 4 * std::sin(kPi / sides);
    auto const q = Quantify(ModelOf(ToRawBRep(TestSupport::MakePrism(sides, 2, 5))));
    ExpectQuantities(q, 2 * base + sides * edge * 5, base * 5, {0, 0, 2.5}, 1e-6);
}

TEST(QuantificationBuilder, Pyramid) {
    RawBRep pyramid;
    pyramid.vertices = {{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {1, 1, 3}}};
    using Loop = std::vector<std::uint16_t>;
    pyramid.faces = std::vector<RawLoop>{Loop{3, 2, 1, 0}, Loop{0, 1, 4}, Loop{1, 2, 4}, Loop{2, 3, 4}, Loop{3, 0, 4}};
    ExpectQuantities(Quantify(ModelOf(pyramid)), 4 + 4 * std::sqrt(10.0), 4, {1, 1, 0.75});
}

TEST(QuantificationBuilder, AngleWithAHole) {
    // In the plane: 5 - 0.25, moments 5 * (1.1, 1.1) - 0.25 * (0.5, 0.5).
    double const section = 4.75;
    double const center = (5 * 1.1 - 0.25 * 0.5) / section;
    ExpectQuantities(Quantify(ModelOf(ToRawBRep(MakeAngleWithHole()))), 2 * section + 2 * (12 + 2), 2 * section,
                     {center, center, 1});
}

TEST(QuantificationBuilder, SphereComesCloseToTheTrueOne) {
    auto const q = Quantify(ModelOf(ToRawBRep(MakeSphere(60, 60))));
    ExpectQuantities(q, 4 * kPi, 4 * kPi / 3, {0, 0, 0}, 0.01);
    EXPECT_LT(q.volume, 4 * kPi / 3);
    EXPECT_NEAR(q.center.z, 0, 1e-6);
}

TEST(QuantificationBuilder, RandomStarsInAnyDirection) {
    for (std::uint32_t seed = 0; seed < 30; ++seed) {
        SCOPED_TRACE(seed);
        RandomStar star(seed, 5 + seed, 2);
        RandomNumbers random(seed + 100);
        Vertex const direction{random.Between(-1, 1), random.Between(-1, 1), random.Between(-1, 1)};
        Vertex const x = direction / Length(direction);
        Vertex const across = Cross(x, {0.3, -0.5, 0.8});
        star.Turn(x, across / Length(across));
        auto const q = Quantify(ModelOf(ToRawBRep(star.shape)));
        EXPECT_NEAR(q.area, star.area, 1e-5 * star.area);
        EXPECT_NEAR(q.volume, star.volume, 1e-5 * star.volume);
    }
}

TEST(QuantificationBuilder, FarPlacementMovesTheCentreOnly) {
    auto const q = Quantify(ModelOf(RawBox({0, 0, 0}, {1, 1, 1}), At(1e6, -2e6, 3e6)));
    ExpectQuantities(q, 6, 1, {1e6 + 0.5, -2e6 + 0.5, 3e6 + 0.5});
}

TEST(QuantificationBuilder, ShapeFarFromItsOriginKeepsItsVolume) {
    ExpectQuantities(Quantify(ModelOf(RawBox({4096, 4096, 4096}, {4097, 4097, 4097}))), 6, 1, {4096.5, 4096.5, 4096.5},
                     1e-7);
}

TEST(QuantificationBuilder, PlacementWithAxesOfLengthTwoLeavesAreaAndVolumeUnscaled) {
    PlacementRecord const placement{{10, 0, 0}, {0, 2, 0}, {-2, 0, 0}};
    ExpectQuantities(Quantify(ModelOf(RawBox({0, 0, 0}, {1, 1, 1}), placement)), 6, 1, {9.5, 0.5, 0.5});
}

TEST(QuantificationBuilder, MirroredShapeHasANegativeVolumeAndItsCentreMirrored) {
    RawBRep wedge;
    wedge.vertices = {{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}, {0, 0, 3}}};
    wedge.faces = std::vector<RawLoop>{std::vector<std::uint16_t>{0, 2, 1}, std::vector<std::uint16_t>{0, 1, 3},
                                       std::vector<std::uint16_t>{1, 2, 3}, std::vector<std::uint16_t>{2, 0, 3}};
    auto mirrored = wedge;
    for (auto& vertex : *mirrored.vertices) vertex.x = -vertex.x;
    double const area = 13.5 + std::sqrt(3.0) / 4 * 18;
    ExpectQuantities(Quantify(ModelOf(wedge)), area, 4.5, {0.75, 0.75, 0.75});
    ExpectQuantities(Quantify(ModelOf(mirrored)), area, -4.5, {-0.75, 0.75, 0.75});
}

TEST(QuantificationBuilder, InstancesAddUpAndTheCentreIsWeightedByVolume) {
    RawModel model;
    auto const entity = model.AddEntity();
    auto const small = model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}));
    auto const large = model.AddBRep(RawBox({0, 0, 0}, {2, 2, 2}));
    model.AddInstance(entity, small);
    model.AddInstance(model.AddEntity(), small, At(0, 0, 50));
    model.AddInstance(entity, large, At(10, 0, 0));
    model.AddInstance(entity, small, At(20, 0, 0));
    ExpectQuantities(Quantify(model), 6 + 24 + 6, 10, {(0.5 + 8 * 11 + 20.5) / 10, (0.5 + 8 + 0.5) / 10, 0.9});
    ExpectQuantities(Quantify(model, 1), 6, 1, {0.5, 0.5, 50.5});
}

TEST(QuantificationBuilder, HoleCountsWithTheSignOfItsWinding) {
    auto const build = [](std::vector<std::uint16_t> const& hole) {
        RawBRep plate;
        plate.vertices = {{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {1, 1, 0}, {1, 2, 0}, {2, 2, 0}, {2, 1, 0}}};
        plate.faces = std::vector<RawLoop>{std::vector<std::uint16_t>{0, 1, 2, 3}};
        plate.holes = {{0, hole}};
        return Quantify(ModelOf(plate)).area;
    };
    EXPECT_DOUBLE_EQ(build({4, 5, 6, 7}), 15);
    EXPECT_DOUBLE_EQ(build({7, 6, 5, 4}), 17);
}

TEST(QuantificationBuilder, FaceWithAShortNormalHasNoAreaButVolume) {
    float const side = 1e-4f;
    auto const q = Quantify(ModelOf(RawBox({0, 0, 0}, {side, side, side})));
    EXPECT_EQ(q.area, 0);
    EXPECT_NEAR(q.volume, 1e-12, 1e-18);
}

TEST(QuantificationBuilder, FlatShapeMakesTheCentreNotANumberAndKeepsAreaAndVolume) {
    RawModel model = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
    RawBRep flat;
    flat.vertices = {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}};
    flat.faces = std::vector<RawLoop>{std::vector<std::uint16_t>{0, 1, 2, 3}};
    model.AddInstance(0, model.AddBRep(flat));
    auto const q = Quantify(model);
    EXPECT_DOUBLE_EQ(q.area, 7);
    EXPECT_DOUBLE_EQ(q.volume, 1);
    EXPECT_TRUE(IsNotANumber(q.center));
}

TEST(QuantificationBuilder, OnlyFlatShapesMakeTheCentreNotANumber) {
    RawBRep flat;
    flat.vertices = {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}};
    flat.faces = std::vector<RawLoop>{std::vector<std::uint16_t>{0, 1, 2}};
    auto const q = Quantify(ModelOf(flat));
    EXPECT_DOUBLE_EQ(q.area, 0.5);
    EXPECT_EQ(q.volume, 0);
    EXPECT_TRUE(IsNotANumber(q.center));
}

TEST(QuantificationBuilder, ShapesWithoutTrianglesHaveTheCentreAtZero) {
    auto const q = Quantify(ModelOf(RawBRep(), At(5, 5, 5)));
    EXPECT_EQ(q.volume, 0);
    EXPECT_EQ(q.center.x, 0);
}

TEST(QuantificationBuilder, OtherKindsAreSkipped) {
    RawModel model;
    auto const entity = model.AddEntity();
    model.AddInstance(entity, model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}), 6));
    model.AddInstance(entity, model.AddBRep(RawBox({0, 0, 0}, {1, 1, 1}), 7));
    model.AddInstance(entity, model.AddDefinition({0, 0, 0}, {1, 1, 1}, 5, 0));
    auto const buffer = model.Write();
    QuantificationBuilder builder(buffer.data());
    EXPECT_TRUE(builder.Build(entity));
    ExpectZero(builder);
}

TEST(QuantificationBuilder, WhatTheBufferLacksIsSkipped) {
    RawModel model = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
    model.AddInstance(0, 999);                                  // no such definition
    model.AddInstance(0, model.AddDefinition({}, {}, 1, 999));  // no such shape
    RawBRep withoutVertices = RawBox({0, 0, 0}, {1, 1, 1});
    withoutVertices.vertices = std::nullopt;
    RawBRep withoutFaces = RawBox({0, 0, 0}, {1, 1, 1});
    withoutFaces.faces = std::nullopt;
    RawBRep withOddLoops = RawBox({0, 0, 0}, {1, 1, 1});
    withOddLoops.faces = std::vector<RawLoop>{std::nullopt, std::vector<std::uint16_t>{0, 1, 99},
                                              std::vector<std::uint16_t>{}, std::vector<std::uint16_t>{0, 1}};
    withOddLoops.holes = {{0, std::vector<std::uint16_t>{0, 1, 2}}, {77, std::nullopt}};
    for (auto const& shape : {withoutVertices, withoutFaces, withOddLoops}) model.AddInstance(0, model.AddBRep(shape));
    ExpectQuantities(Quantify(model), 6, 1, {0.5, 0.5, 0.5});
}

TEST(QuantificationBuilder, EntityBehindTheLastFailsAndLeavesZeros) {
    auto const buffer = ModelOf(RawBox({0, 0, 0}, {1, 1, 1})).Write();
    QuantificationBuilder builder(buffer.data());
    ASSERT_TRUE(builder.Build(0));
    EXPECT_FALSE(builder.Build(1));
    ExpectZero(builder);
    EXPECT_TRUE(builder.Build(0));
    EXPECT_DOUBLE_EQ(builder.GetVolume(), 1);
}

TEST(QuantificationBuilder, RepeatedBuildsGiveTheSameBits) {
    auto const buffer = ModelOf(ToRawBRep(RandomStar(3, 9, 1).shape)).Write();
    QuantificationBuilder builder(buffer.data());
    ASSERT_TRUE(builder.Build(0));
    double const volume = builder.GetVolume();
    ASSERT_TRUE(builder.Build(0));
    EXPECT_EQ(builder.GetVolume(), volume);
    QuantificationBuilder other(buffer.data());
    ASSERT_TRUE(other.Build(0));
    EXPECT_EQ(other.GetVolume(), volume);
}

TEST(QuantificationBuilder, WhatIsNoModelMakesEveryBuildFail) {
    RawModel wrongIdentifier = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
    wrongIdentifier.identifier = "QLN0";
    RawModel withoutEntities = wrongIdentifier;
    withoutEntities.identifier = "QLN8";
    withoutEntities.hasEntities = false;
    RawModel withoutInstances = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
    withoutInstances.instances = std::nullopt;
    RawModel withoutDefinitions = ModelOf(RawBox({0, 0, 0}, {1, 1, 1}));
    withoutDefinitions.definitions = std::nullopt;
    for (RawModel const& model : {wrongIdentifier, withoutEntities, withoutInstances, withoutDefinitions}) {
        auto const buffer = model.Write();
        QuantificationBuilder builder(buffer.data());
        EXPECT_FALSE(builder.Build(0));
        ExpectZero(builder);
    }
    EXPECT_FALSE(QuantificationBuilder(nullptr).Build(0));
}

}  // namespace
