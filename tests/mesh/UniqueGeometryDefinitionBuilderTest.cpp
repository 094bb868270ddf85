#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "mesh/UniqueFixture.h"

namespace {

using Quorlan::Tools::UniqueGeometryDefinitionBuilder;
using namespace TestSupport;

TEST(UniqueGeometryDefinitionBuilder, TheSameCubeTwiceIsOneDefinition) {
    UniqueFixture f;
    EXPECT_EQ(f.Add(MakeUnitCube()), kFirst);
    EXPECT_TRUE(IsIdentity(f.transform));
    EXPECT_EQ(f.Add(MakeUnitCube()), kFirst);
    EXPECT_LT(Deviation(f.transform, MakeUnitCube(), MakeUnitCube()), 1e-14);
    EXPECT_EQ(f.target.shapes.size(), 1u);
    f.ExpectCounts(0, 0, 1);
}

TEST(UniqueGeometryDefinitionBuilder, AMovedCubeIsMappedBackOntoTheFirst) {
    UniqueFixture f;
    f.Add(MakeUnitCube());
    EXPECT_EQ(f.Add(MakeBox({5, 0, 0}, {6, 1, 1})), kFirst);
    EXPECT_NEAR(f.transform.matrix(0, 3), -5, 1e-12);
    EXPECT_NEAR(f.transform.offset.x, -5, 1e-12);
    EXPECT_NEAR(f.transform.matrix(0, 0), 1, 1e-14);
    f.ExpectCounts(0, 1, 0);
}

TEST(UniqueGeometryDefinitionBuilder, ARotatedAndMovedShapeIsMappedBackOntoTheFirst) {
    UniqueFixture f;
    f.Add(MakeWedge());
    auto const placement = Compose(MakeTranslation(3, -4, 12), MakeRotation({1, 2, 3}, 2.1));
    FacetedBRep const placed = Placed(MakeWedge(), placement);
    EXPECT_EQ(f.Add(placed), kFirst);
    EXPECT_LT(Deviation(f.transform, placed, MakeWedge()), 1e-12);
    EXPECT_NEAR(f.transform.angle, 2.1, 1e-12);
    f.ExpectCounts(1, 0, 0);
}

TEST(UniqueGeometryDefinitionBuilder, ACopyCountsAsTransformedOnlyIfAnAxisTurnsByMoreThanTheTolerance) {
    UniqueFixture f;
    FacetedBRep const small = MakeBox({-0.25, -0.25, -0.25}, {0.25, 0.25, 0.25});
    f.Add(small);
    EXPECT_EQ(f.Add(Placed(small, MakeRotationZ(0.9e-5))), kFirst);
    f.ExpectCounts(0, 0, 1);
    EXPECT_EQ(f.Add(Placed(small, MakeRotationZ(1.1e-5))), kFirst);
    f.ExpectCounts(1, 0, 1);
}

TEST(UniqueGeometryDefinitionBuilder, ACopyCountsAsTranslatedOnlyIfItMovesByMoreThanTheTolerance) {
    UniqueFixture f;
    f.Add(MakeUnitCube());
    f.Add(Placed(MakeUnitCube(), MakeTranslation(0, 0.9e-5, 0)));
    f.ExpectCounts(0, 0, 1);
    f.Add(Placed(MakeUnitCube(), MakeTranslation(0, 1.1e-5, 0)));
    f.ExpectCounts(0, 1, 1);
}

TEST(UniqueGeometryDefinitionBuilder, AMirrorImageIsANewShape) {
    UniqueFixture f;
    f.Add(MakeWedge());
    FacetedBRep mirrored = MakeWedge();
    for (Vertex& v : mirrored.vertices) v.x = -v.x;
    EXPECT_EQ(f.Add(mirrored), kFirst + 1);
    FacetedBRep mirroredCube = MakeUnitCube();
    f.Add(mirroredCube);
    for (Vertex& v : mirroredCube.vertices) v.z = -v.z;
    EXPECT_EQ(f.Add(mirroredCube), kFirst + 3);
    f.ExpectCounts(0, 0, 0);
}

TEST(UniqueGeometryDefinitionBuilder, PermutedVerticesMakeANewShape) {
    UniqueFixture f;
    f.Add(MakeUnitCube());
    FacetedBRep permuted = MakeUnitCube();
    std::swap(permuted.vertices[1], permuted.vertices[2]);
    for (auto& loop : permuted.faces) {
        for (auto& index : loop) index = index == 1 ? 2 : index == 2 ? 1 : index;
    }
    EXPECT_EQ(f.Add(permuted), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilder, ALoopStartedAtAnotherVertexMakesANewShape) {
    UniqueFixture f;
    f.Add(MakeUnitCube());
    FacetedBRep rotated = MakeUnitCube();
    rotated.faces[0] = {3, 2, 1, 0};
    EXPECT_EQ(f.Add(rotated), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilder, InnerLoopsArePartOfTheShape) {
    UniqueFixture f;
    FacetedBRep const plate = MakePlateWithHole();
    f.Add(plate);
    EXPECT_EQ(f.Add(Placed(plate, MakeRotationZ(1))), kFirst);
    FacetedBRep filled = plate;
    filled.holes.clear();
    EXPECT_EQ(f.Add(filled), kFirst + 1);
    FacetedBRep oneHole = plate;
    oneHole.holes.erase(1);
    EXPECT_EQ(f.Add(oneHole), kFirst + 2);
    FacetedBRep turned = plate;
    turned.holes[0][0] = {7, 4, 5, 6};
    EXPECT_EQ(f.Add(turned), kFirst + 3);
    FacetedBRep split = plate;
    split.holes[0] = {{4, 5}, {6, 7}};
    EXPECT_EQ(f.Add(split), kFirst + 4);
    FacetedBRep otherFace = plate;
    otherFace.holes = {{0, plate.holes.at(0)}, {2, plate.holes.at(1)}};
    EXPECT_EQ(f.Add(otherFace), kFirst + 5);
    EXPECT_EQ(f.Add(plate), kFirst);
}

TEST(UniqueGeometryDefinitionBuilder, AVertexJustInsideTheToleranceMatchesOneJustOutsideDoesNot) {
    // Vertex 3 of this shape does not belong to its reference frame, so that it alone moves.
    for (auto const& [offset, isCopy] : {std::pair{0.99e-5, true}, {1.01e-5, false}}) {
        UniqueFixture f;
        f.Add(MakeWedge());
        FacetedBRep nearly = MakeWedge();
        nearly.vertices[3].z += offset;
        EXPECT_EQ(f.Add(nearly), isCopy ? kFirst : kFirst + 1) << offset;
    }
}

TEST(UniqueGeometryDefinitionBuilder, FewerThanThreeVerticesGiveTheInvalidIndexAndLeaveTheTransformAlone) {
    UniqueFixture f;
    FacetedBRep two;
    two.vertices = {{0, 0, 0}, {1, 0, 0}};
    EXPECT_EQ(f.Add(two), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.Add(FacetedBRep()), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.Add(std::pair{two, std::vector<Vertex>(2)}), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.Add(std::pair{two, std::vector<std::pair<float, float>>(2)}), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.transform.matrix(0, 3), 7);
    EXPECT_EQ(f.target.GetCount(), 0u);
}

TEST(UniqueGeometryDefinitionBuilder, CollinearVerticesAreForwardedEachTime) {
    UniqueFixture f;
    FacetedBRep needle;
    needle.vertices = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    needle.faces = {{0, 1, 2}};
    EXPECT_EQ(f.Add(needle), kFirst);
    EXPECT_EQ(f.Add(needle), kFirst + 1);
    EXPECT_TRUE(IsIdentity(f.transform));
    EXPECT_EQ(f.target.shapes.size(), 2u);
}

TEST(UniqueGeometryDefinitionBuilder, CoincidentVerticesAreForwardedEachTime) {
    UniqueFixture f;
    FacetedBRep point;
    point.vertices = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    EXPECT_EQ(f.Add(point), kFirst);
    EXPECT_EQ(f.Add(point), kFirst + 1);
}

TEST(UniqueGeometryDefinitionBuilder, ATriangleTooSmallForAFrameIsForwardedEachTime) {
    // The determinant of the frame of a right triangle with legs a and b is (a b)^2.
    for (auto const& [leg, isFound] : {std::pair{1.8e-4, true}, {1.7e-4, false}}) {
        UniqueFixture f;
        FacetedBRep tiny;
        tiny.vertices = {{0, 0, 0}, {leg, 0, 0}, {0, leg, 0}};
        tiny.faces = {{0, 1, 2}};
        f.Add(tiny);
        EXPECT_EQ(f.Add(tiny), isFound ? kFirst : kFirst + 1) << leg;
    }
}

TEST(UniqueGeometryDefinitionBuilder, FarShapesAreWrittenAroundTheOriginAndFoundAgain) {
    UniqueFixture f;
    FacetedBRep const first = Placed(MakeWedge(), MakeTranslation(1000, 0, 0));
    EXPECT_EQ(f.Add(first), kFirst);
    Vertex const center{1001.5, 1, 0.625};
    EXPECT_NEAR(f.transform.matrix(0, 3), -center.x, 1e-12);
    EXPECT_NEAR(f.transform.matrix(1, 3), -center.y, 1e-12);
    EXPECT_NEAR(f.transform.matrix(2, 3), -center.z, 1e-12);
    EXPECT_EQ(f.transform.offset.x, f.transform.matrix(0, 3));
    ASSERT_EQ(f.target.shapes.size(), 1u);
    EXPECT_LT(Deviation(f.transform, first, f.target.shapes[0]), 1e-12);
    EXPECT_EQ(f.target.shapes[0].faces, first.faces);

    auto const placement = Compose(MakeTranslation(-500, 2000, 300), MakeRotation({1, 1, 0}, 1.5));
    FacetedBRep const second = Placed(MakeWedge(), placement);
    EXPECT_EQ(f.Add(second), kFirst);
    EXPECT_LT(Deviation(f.transform, second, f.target.shapes[0]), 1e-9);
    EXPECT_NEAR(f.transform.angle, 1.5, 1e-9);
}

TEST(UniqueGeometryDefinitionBuilder, FarCopiesAreClassifiedWithoutTheRecentring) {
    UniqueFixture f;
    f.Add(Placed(MakeWedge(), MakeTranslation(1024, 0, 0)));
    f.Add(Placed(MakeWedge(), MakeTranslation(0, 2048, 0)));
    f.ExpectCounts(0, 0, 1);
}

TEST(UniqueGeometryDefinitionBuilder, RecentringStartsBeyondAHundredDiagonals) {
    double const diagonal = std::sqrt(3.0);
    for (auto const& [distance, isMoved] : {std::pair{99.9, false}, {100.1, true}}) {
        UniqueFixture f;
        double const x = distance * diagonal;
        f.Add(MakeBox({x - 0.5, -0.5, -0.5}, {x + 0.5, 0.5, 0.5}));
        EXPECT_EQ(IsIdentity(f.transform), !isMoved) << distance;
    }
}

TEST(UniqueGeometryDefinitionBuilder, TheDiagonalIsTakenFromTheCornersAndNotFromTheRoundedBox) {
    // The corners are 1e-14 nearer to each other than centre plus and minus half extent.
    UniqueFixture f;
    double const lo = 0x1.faece00000001p+6;
    double const hi = 0x1.00029p+7;
    ASSERT_GT((lo + hi) / 2 / (hi - lo), 100.0);
    FacetedBRep segment;
    segment.vertices = {{lo, 0, 0}, {hi, 0, 0}, {lo, 0, 0}};
    f.Add(segment);
    EXPECT_FALSE(IsIdentity(f.transform));
}

TEST(UniqueGeometryDefinitionBuilder, AFarCopyOfANearShapeIsFoundThroughItsRecentredForm) {
    UniqueFixture f;
    FacetedBRep const cube = MakeBox({-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5});
    f.Add(cube);
    FacetedBRep const far = Placed(cube, MakeTranslation(4096, 0, 0));
    EXPECT_EQ(f.Add(far), kFirst);
    EXPECT_LT(Deviation(f.transform, far, cube), 1e-12);
    f.ExpectCounts(0, 0, 1);
}

TEST(UniqueGeometryDefinitionBuilder, CoincidentVerticesAwayFromTheOriginAreRecentred) {
    UniqueFixture f;
    FacetedBRep point;
    point.vertices = {{1, 2, 3}, {1, 2, 3}, {1, 2, 3}};
    f.Add(point);
    EXPECT_EQ(f.target.shapes[0].vertices[2].z, 0);
    EXPECT_EQ(f.transform.matrix(2, 3), -3);
}

TEST(UniqueGeometryDefinitionBuilder, TheFirstOfSeveralFittingDefinitionsWins) {
    // a and c differ by more than the tolerance, b fits both. The frame's vertices are the same in all.
    auto const make = [](double z) {
        FacetedBRep shape = MakeWedge();
        shape.vertices[3].z += z;
        return shape;
    };
    UniqueFixture f;
    EXPECT_EQ(f.Add(make(0)), kFirst);
    EXPECT_EQ(f.Add(make(1.6e-5)), kFirst + 1);
    EXPECT_EQ(f.Add(make(0.8e-5)), kFirst);

    UniqueFixture g;
    EXPECT_EQ(g.Add(make(1.6e-5)), kFirst);
    EXPECT_EQ(g.Add(make(0)), kFirst + 1);
    EXPECT_EQ(g.Add(make(0.8e-5)), kFirst);
}

TEST(UniqueGeometryDefinitionBuilder, AShapeTheTargetRefusedIsAnsweredWithTheInvalidIndexAgain) {
    UniqueFixture f;
    f.target.refuses = true;
    EXPECT_EQ(f.Add(MakeUnitCube()), Quorlan::kInvalidIndex);
    f.target.refuses = false;
    EXPECT_EQ(f.Add(MakeUnitCube()), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.target.shapes.size(), 1u);
}

TEST(UniqueGeometryDefinitionBuilder, NotANumberNeverMatches) {
    UniqueFixture f;
    FacetedBRep broken = MakeWedge();
    broken.vertices[3].y = std::numeric_limits<double>::quiet_NaN();
    f.Add(MakeWedge());
    EXPECT_EQ(f.Add(broken), kFirst + 1);
    EXPECT_EQ(f.Add(broken), kFirst + 2);
    EXPECT_EQ(f.Add(MakeWedge()), kFirst);
}

TEST(UniqueGeometryDefinitionBuilder, TheOverloadsKeepTheirShapesApart) {
    UniqueFixture f;
    EXPECT_EQ(f.Add(MakeWedge()), kFirst);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), MakeNormals(MakeWedge())}), kFirst + 1);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), MakeUVs(MakeWedge())}), kFirst + 2);
    f.ExpectCounts(0, 0, 0);
    EXPECT_EQ(f.Add(MakeWedge()), kFirst);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), MakeNormals(MakeWedge())}), kFirst + 1);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), MakeUVs(MakeWedge())}), kFirst + 2);
    f.ExpectCounts(0, 0, 3);
}

// ---- failures and load --------------------------------------------------------------------------------------------

struct ThrowingTarget : RecordingTarget {
    bool throws = true;
    Index AddBRep(FacetedBRep const& shape) override {
        if (throws) throw std::length_error("full");
        return RecordingTarget::AddBRep(shape);
    }
};

TEST(UniqueGeometryDefinitionBuilder, AShapeThatTheTargetThrewOnLeavesNoDefinitionAndHarmsNoOther) {
    ThrowingTarget target;
    UniqueGeometryDefinitionBuilder unique(target);
    AffineTransform transform;
    EXPECT_THROW(unique.Add(MakeUnitCube(), &transform), std::length_error);
    target.throws = false;
    EXPECT_EQ(static_cast<std::uint32_t>(unique.Add(MakeWedge(), &transform)), kFirst);
    EXPECT_EQ(static_cast<std::uint32_t>(unique.Add(MakeUnitCube(), &transform)), Quorlan::kInvalidIndex);
    EXPECT_EQ(static_cast<std::uint32_t>(unique.Add(MakeWedge(), &transform)), kFirst);
}

TEST(UniqueGeometryDefinitionBuilder, EveryPlacedCopyOfManyShapesFindsItsOwnDefinition) {
    unsigned const seed = 20240611;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> length(0.05, 5);
    std::uniform_real_distribution<double> coordinate(-50, 50);
    std::vector<FacetedBRep> shapes;
    for (int i = 0; i < 200; ++i) {
        shapes.push_back(i % 3 == 0 ? MakePrism(3 + static_cast<unsigned>(i) % 7, length(random), length(random))
                                    : MakeBox({0, 0, 0}, {length(random), length(random), length(random)}));
    }
    UniqueFixture f;
    for (FacetedBRep const& shape : shapes) f.Add(shape);
    ASSERT_EQ(f.target.shapes.size(), shapes.size());
    for (int round = 0; round < 2000; ++round) {
        std::size_t const i = random() % shapes.size();
        auto const turn = MakeRotation({coordinate(random), coordinate(random), coordinate(random)}, length(random));
        auto const move = MakeTranslation(coordinate(random), coordinate(random), coordinate(random));
        FacetedBRep const placed = Placed(shapes[i], Compose(move, turn));
        std::uint32_t const index = f.Add(placed);
        ASSERT_LT(index - kFirst, f.target.shapes.size()) << round;
        FacetedBRep const& definition = f.target.shapes[index - kFirst];
        ASSERT_LT(Deviation(f.transform, placed, definition), 1e-5) << round;
    }
    // A shape far away for its size is found in its re-centred form, which is written once.
    EXPECT_LE(f.target.shapes.size(), 2 * shapes.size());
}

}  // namespace
