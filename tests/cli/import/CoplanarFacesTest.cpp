#include "shape/CoplanarFaces.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "support/Shapes.h"

namespace QuorlanProgram::Import {
namespace {

using testing::Each;
using testing::SizeIs;
using TestSupport::MakeBox;

/// [m3] by which a surface of up to 100 m2 can change a volume when its points move to the grid of the result.
constexpr double kGridVolume = 100 * kKernelNoise;

/// Every polygon as a fan of triangles.
FacetedBRep Triangulate(FacetedBRep const& shape) {
    FacetedBRep triangles;
    triangles.vertices = shape.vertices;
    for (auto const& face : shape.faces) {
        for (std::size_t i = 1; i + 1 < face.size(); ++i) triangles.faces.push_back({face[0], face[i], face[i + 1]});
    }
    return triangles;
}

/// A square with a square hole, in eight triangles.
FacetedBRep MakeFrame() {
    FacetedBRep frame;
    frame.vertices = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}};
    frame.faces = {{0, 1, 4}, {1, 5, 4}, {1, 2, 5}, {2, 6, 5}, {2, 3, 6}, {3, 7, 6}, {3, 0, 7}, {0, 4, 7}};
    return frame;
}

TEST(CoplanarFaces, ATriangulatedBoxHasSixFacesAgain) {
    auto const box = JoinCoplanarFaces(Triangulate(MakeBox({0, 0, 0}, {1, 2, 3})));
    EXPECT_THAT(box.faces, SizeIs(6));
    EXPECT_THAT(box.faces, Each(SizeIs(4)));
    EXPECT_THAT(box.vertices, SizeIs(8));
    EXPECT_DOUBLE_EQ(GetVolume(box), 6);
    EXPECT_TRUE(IsClosed(box));
}

TEST(CoplanarFaces, ARingBecomesOnePolygonWithAHole) {
    auto const frame = JoinCoplanarFaces(MakeFrame());
    ASSERT_THAT(frame.faces, SizeIs(1));
    EXPECT_THAT(frame.faces[0], SizeIs(4));
    ASSERT_EQ(frame.GetInnerLoopCount(0), 1u);
    EXPECT_THAT(frame.GetInnerLoop(0, 0), SizeIs(4));
}

TEST(CoplanarFaces, TrianglesThatFoldBackCancel) {
    // The square 0 1 2 3 as three triangles of which one, turned round, lies on the others.
    FacetedBRep folded;
    folded.vertices = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {6, 2, 0}};
    folded.faces = {{0, 1, 4}, {4, 1, 2}, {0, 4, 3}, {4, 2, 3}};
    auto const square = JoinCoplanarFaces(folded);
    ASSERT_THAT(square.faces, SizeIs(1));
    EXPECT_THAT(square.faces[0], SizeIs(4));
    EXPECT_THAT(square.vertices, SizeIs(4));
}

TEST(CoplanarFaces, APointOnAStraightEdgeGoesOnlyIfNoFaceHasItsCornerThere) {
    FacetedBRep halves;  // two halves of a square, and a triangle that stands on the middle of their lower edge
    halves.vertices = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {1, 2, 0}, {0, 2, 0}, {2, 0, 1}};
    halves.faces = {{0, 1, 4, 5}, {1, 2, 3, 4}};
    EXPECT_THAT(JoinCoplanarFaces(halves).faces, testing::ElementsAre(SizeIs(4)));
    halves.faces.push_back({2, 1, 6});
    EXPECT_THAT(JoinCoplanarFaces(halves).faces, testing::ElementsAre(SizeIs(5), SizeIs(3)));
}

TEST(CoplanarFaces, LoopsThatTouchInAPointStayApart) {
    FacetedBRep bow;  // two squares that share one corner and, through a third, hang together
    bow.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 1, 0}, {2, 2, 0}, {1, 2, 0}, {0, 2, 0}};
    bow.faces = {{0, 1, 2, 3}, {2, 4, 5, 6}, {3, 2, 6, 7}};
    auto const joined = JoinCoplanarFaces(bow);
    ASSERT_THAT(joined.faces, SizeIs(1));
    EXPECT_NEAR(GeometryObjectLib::Length(GetAreaVector([&] {
                    Loop loop;
                    for (auto const index : joined.faces[0]) loop.push_back(joined.vertices[index]);
                    return loop;
                }())),
                2 * 3, 1e-12);
}

TEST(CoplanarFaces, ASkinOverAnOpeningGoes) {
    FacetedBRep skinned;  // a face that is not cut, and on it, looking the other way, the end of a pocket
    skinned.vertices = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}};
    skinned.faces = {{0, 1, 2, 3}, {4, 7, 6, 5}};
    auto const cut = JoinCoplanarFaces(skinned);
    ASSERT_THAT(cut.faces, SizeIs(1));
    EXPECT_EQ(cut.GetInnerLoopCount(0), 1u);
}

TEST(CoplanarFaces, AFaceThatLooksTheOtherWayBesideAnotherStays) {
    FacetedBRep beside;
    beside.vertices = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {5, 1, 0}, {7, 1, 0}, {7, 3, 0}, {5, 3, 0}};
    beside.faces = {{0, 1, 2, 3}, {4, 7, 6, 5}};
    EXPECT_THAT(JoinCoplanarFaces(beside).faces, SizeIs(2));
    beside.vertices[4].z = beside.vertices[5].z = beside.vertices[6].z = beside.vertices[7].z = 0.1;
    for (auto i = 4u; i < 8; ++i) beside.vertices[i].x -= 4;
    EXPECT_THAT(JoinCoplanarFaces(beside).faces, SizeIs(2));
}

TEST(CoplanarFaces, CurvedSurfacesKeepTheirFaces) {
    auto const prism = TestSupport::MakePrism(24, 0.5, 2);
    auto const joined = JoinCoplanarFaces(Triangulate(prism));
    EXPECT_THAT(joined.faces, SizeIs(26));
    EXPECT_NEAR(GetVolume(joined), GetVolume(prism), kGridVolume);
}

TEST(CoplanarFaces, TheOrderOfFacesAndVerticesDoesNotMatter) {
    auto const box = Triangulate(MakeBox({0, 0, 0}, {1, 2, 3}));
    auto const joined = JoinCoplanarFaces(box);
    std::mt19937 random(11);
    for (int round = 0; round < 20; ++round) {
        std::vector<std::uint32_t> places(box.vertices.size());
        std::iota(places.begin(), places.end(), 0u);
        std::shuffle(places.begin(), places.end(), random);
        FacetedBRep shuffled = box;
        for (std::size_t i = 0; i < places.size(); ++i) shuffled.vertices[places[i]] = box.vertices[i];
        for (auto& face : shuffled.faces) {
            for (auto& index : face) index = places[index];
        }
        std::shuffle(shuffled.faces.begin(), shuffled.faces.end(), random);
        EXPECT_EQ(JoinCoplanarFaces(shuffled).faces, joined.faces);
    }
}

TEST(CoplanarFaces, TheEmptyShapeAndShapesWithHolesStay) {
    EXPECT_THAT(JoinCoplanarFaces({}).faces, SizeIs(0));
    auto const frame = JoinCoplanarFaces(MakeFrame());
    EXPECT_EQ(JoinCoplanarFaces(frame).faces, frame.faces);
}

TEST(CoplanarFaces, RandomPrismsKeepTheirVolume) {
    constexpr unsigned kSeed = 7;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<double> radius(1, 3);
    for (int round = 0; round < 50; ++round) {
        Loop star;
        constexpr int kPoints = 11;
        for (int i = 0; i < kPoints; ++i) {
            auto const r = radius(random);
            star.push_back({r * std::cos(6.2831853 * i / kPoints), r * std::sin(6.2831853 * i / kPoints), 0});
        }
        auto const prism = Extrude({star}, {0.3, 0.1, 1.5});
        // Fans of a star-shaped polygon fold over: exactly what joining has to undo.
        auto const joined = JoinCoplanarFaces(Triangulate(prism));
        EXPECT_THAT(joined.faces, SizeIs(kPoints + 2));
        EXPECT_NEAR(GetVolume(joined), GetVolume(prism), kGridVolume);
        EXPECT_TRUE(IsClosed(joined));
    }
}

}  // namespace
}  // namespace QuorlanProgram::Import
