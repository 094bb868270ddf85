// Shapes that come with one normal or one texture coordinate pair per vertex.

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "mesh/UniqueFixture.h"

namespace {

using GeometryObjectLib::TransformDirection;
using namespace TestSupport;

constexpr double kPi = 3.141592653589793;

TEST(UniqueGeometryDefinitionBuilderNormals, AMovedCopyWithItsNormalsIsFound) {
    UniqueFixture f;
    auto const normals = MakeNormals(MakeWedge());
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), kFirst);
    EXPECT_TRUE(IsIdentity(f.transform));
    EXPECT_EQ(f.Add(std::pair{Placed(MakeWedge(), MakeTranslation(0, 9, 0)), normals}), kFirst);
    EXPECT_NEAR(f.transform.matrix(1, 3), -9, 1e-12);
    f.ExpectCounts(0, 1, 0);
}

TEST(UniqueGeometryDefinitionBuilderNormals, AnotherNumberOfNormalsGivesTheInvalidIndex) {
    UniqueFixture f;
    auto normals = MakeNormals(MakeWedge());
    normals.pop_back();
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.transform.matrix(0, 3), 7);
    EXPECT_EQ(f.target.GetCount(), 0u);
}

std::vector<Vertex> Rotated(std::vector<Vertex> normals, AffineTransform const& rotation) {
    for (Vertex& n : normals) n = TransformDirection(rotation.matrix, n);
    return normals;
}

TEST(UniqueGeometryDefinitionBuilderNormals, AQuarterTurnWithItsNormalsIsWrittenAnewByTheKeptDirection) {
    UniqueFixture f;
    auto const normals = MakeNormals(MakeWedge());
    auto const turn = MakeRotationZ(kPi / 2);
    f.Add(std::pair{MakeWedge(), normals});
    EXPECT_EQ(f.Add(std::pair{Placed(MakeWedge(), turn), Rotated(normals, turn)}), kFirst + 1);
    EXPECT_TRUE(IsIdentity(f.transform));
    f.ExpectCounts(0, 0, 0);
}

TEST(UniqueGeometryDefinitionBuilderNormals, AHalfTurnWithItsNormalsIsFound) {
    UniqueFixture f;
    auto const normals = MakeNormals(MakeWedge());
    auto const turn = Compose(MakeTranslation(1, 2, 3), MakeRotation({1, 2, 2}, kPi));
    f.Add(std::pair{MakeWedge(), normals});
    EXPECT_EQ(f.Add(std::pair{Placed(MakeWedge(), turn), Rotated(normals, turn)}), kFirst);
    f.ExpectCounts(1, 0, 0);
}

TEST(UniqueGeometryDefinitionBuilderNormals, AQuarterTurnWithNormalsTurnedTheWrongWayIsFoundByTheKeptDirection) {
    UniqueFixture f;
    auto const normals = MakeNormals(MakeWedge());
    f.Add(std::pair{MakeWedge(), normals});
    auto const placed = Placed(MakeWedge(), MakeRotationZ(kPi / 2));
    EXPECT_EQ(f.Add(std::pair{placed, Rotated(normals, MakeRotationZ(-kPi / 2))}), kFirst);
}

TEST(UniqueGeometryDefinitionBuilderNormals, NormalsAreComparedToWithinTheTolerance) {
    for (auto const& [offset, isCopy] : {std::pair{0.99e-5, true}, {1.01e-5, false}}) {
        UniqueFixture f;
        auto normals = MakeNormals(MakeWedge());
        f.Add(std::pair{MakeWedge(), normals});
        normals[5].y += offset;
        EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), isCopy ? kFirst : kFirst + 1) << offset;
    }
}

TEST(UniqueGeometryDefinitionBuilderNormals, ADisagreementIsWrittenEachTimeAndTheEarlierDefinitionStaysFindable) {
    UniqueFixture f;
    auto const normals = MakeNormals(MakeWedge());
    auto const others = Rotated(normals, MakeRotationZ(1));
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), kFirst);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), others}), kFirst + 1);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), others}), kFirst + 2);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), kFirst);
    f.ExpectCounts(0, 0, 1);
    // The keys of the matcher and of the stored normals stay in step.
    auto const cubeNormals = MakeNormals(MakeUnitCube());
    EXPECT_EQ(f.Add(std::pair{MakeUnitCube(), cubeNormals}), kFirst + 3);
    EXPECT_EQ(f.Add(std::pair{MakeUnitCube(), cubeNormals}), kFirst + 3);
}

TEST(UniqueGeometryDefinitionBuilderNormals, FarShapesAreNotRecentred) {
    UniqueFixture f;
    FacetedBRep const far = Placed(MakeWedge(), MakeTranslation(4096, 0, 0));
    f.Add(std::pair{far, MakeNormals(MakeWedge())});
    EXPECT_TRUE(IsIdentity(f.transform));
    EXPECT_EQ(f.target.shapesWithNormals[0].first.vertices[0].x, 4096);
}

TEST(UniqueGeometryDefinitionBuilderNormals, CollinearShapesKeepTheKeysInStep) {
    UniqueFixture f;
    FacetedBRep needle;
    needle.vertices = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    EXPECT_EQ(f.Add(std::pair{needle, std::vector<Vertex>(3)}), kFirst);
    EXPECT_EQ(f.Add(std::pair{needle, std::vector<Vertex>(3)}), kFirst + 1);
    auto const normals = MakeNormals(MakeWedge());
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), kFirst + 2);
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), normals}), kFirst + 2);
}

// ---- with texture coordinates -------------------------------------------------------------------------------------

TEST(UniqueGeometryDefinitionBuilderUVs, ARotatedCopyWithTheSamePairsIsFound) {
    UniqueFixture f;
    auto const uvs = MakeUVs(MakeWedge());
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), uvs}), kFirst);
    EXPECT_EQ(f.Add(std::pair{Placed(MakeWedge(), MakeRotation({3, 1, 2}, 1)), uvs}), kFirst);
    f.ExpectCounts(1, 0, 0);
    EXPECT_EQ(f.target.shapesWithUVs.size(), 1u);
}

TEST(UniqueGeometryDefinitionBuilderUVs, AnotherNumberOfPairsGivesTheInvalidIndex) {
    UniqueFixture f;
    auto uvs = MakeUVs(MakeWedge());
    uvs.emplace_back();
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), uvs}), Quorlan::kInvalidIndex);
    EXPECT_EQ(f.transform.matrix(0, 3), 7);
}

TEST(UniqueGeometryDefinitionBuilderUVs, PositionsAreComparedWithTheFinerTolerance) {
    for (auto const& [offset, isCopy] : {std::pair{0.99e-7, true}, {1.01e-7, false}}) {
        UniqueFixture f;
        auto const uvs = MakeUVs(MakeWedge());
        f.Add(std::pair{MakeWedge(), uvs});
        FacetedBRep nearly = MakeWedge();
        nearly.vertices[3].z += offset;
        EXPECT_EQ(f.Add(std::pair{nearly, uvs}), isCopy ? kFirst : kFirst + 1) << offset;
    }
}

TEST(UniqueGeometryDefinitionBuilderUVs, PairsAreComparedToWithinTheTolerance) {
    std::vector<std::pair<float, float>> const zeros(8);
    for (auto const& [offset, isCopy] : {std::pair{0.99e-5f, true}, {1.01e-5f, false}}) {
        for (int const part : {0, 1}) {
            UniqueFixture f;
            f.Add(std::pair{MakeWedge(), zeros});
            auto others = zeros;
            (part == 0 ? others[7].first : others[7].second) = -offset;
            EXPECT_EQ(f.Add(std::pair{MakeWedge(), others}), isCopy ? kFirst : kFirst + 1) << offset;
        }
    }
}

TEST(UniqueGeometryDefinitionBuilderUVs, ADisagreementIsWrittenEachTimeWithTheIdentity) {
    UniqueFixture f;
    auto const uvs = MakeUVs(MakeWedge());
    auto others = uvs;
    others[0].first += 1;
    FacetedBRep const moved = Placed(MakeWedge(), MakeTranslation(1, 0, 0));
    EXPECT_EQ(f.Add(std::pair{MakeWedge(), uvs}), kFirst);
    EXPECT_EQ(f.Add(std::pair{moved, others}), kFirst + 1);
    EXPECT_TRUE(IsIdentity(f.transform));
    EXPECT_EQ(f.Add(std::pair{moved, others}), kFirst + 2);
    EXPECT_EQ(f.Add(std::pair{moved, uvs}), kFirst);
    f.ExpectCounts(0, 1, 0);
}

}  // namespace
