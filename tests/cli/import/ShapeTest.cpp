#include "shape/Shape.h"

#include <gmock/gmock.h>

#include <algorithm>

#include <cmath>
#include <limits>
#include <set>

#include "shape/Gaps.h"
#include "shape/NestedLoops.h"
#include "support/Shapes.h"

namespace QuorlanProgram::Import {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using TestSupport::MakeBox;
using TestSupport::MakeUnitCube;

Loop const kSquare{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
Loop const kHole{{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}};

Matrix4 MakeScaling(double x, double y, double z) {
    Matrix4 m;
    m(0, 0) = x;
    m(1, 1) = y;
    m(2, 2) = z;
    return m;
}

TEST(ShapeBuilder, EqualPointsAreOneVertex) {
    ShapeBuilder builder;
    EXPECT_TRUE(builder.AddFace({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
    EXPECT_TRUE(builder.AddFace({{1, 0, 0}, {1, 0, 1}, {1, 1, -0.0}}));
    EXPECT_THAT(builder.Take().vertices, SizeIs(4));
}

TEST(ShapeBuilder, RepeatedPointsOfALoopGo) {
    ShapeBuilder builder;
    EXPECT_TRUE(builder.AddFace({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 1e-12}, {0, 0, 0}}));
    EXPECT_THAT(builder.Take().faces.at(0), ElementsAre(0, 1, 2));
}

TEST(ShapeBuilder, DegenerateAndInfiniteFacesAreRefused) {
    ShapeBuilder builder;
    EXPECT_FALSE(builder.AddFace({}));
    EXPECT_FALSE(builder.AddFace({{0, 0, 0}, {1, 0, 0}}));
    EXPECT_FALSE(builder.AddFace({{0, 0, 0}, {1, 0, 0}, {std::nan(""), 1, 0}}));
    EXPECT_FALSE(builder.AddFace({{0, 0, 0}, {1, 0, 0}, {1e13, 1, 0}}));
    EXPECT_FALSE(builder.AddFace({{0, 0, 0}, {1, 0, 0}, {std::numeric_limits<double>::infinity(), 1, 0}}));
    EXPECT_TRUE(builder.Take().faces.empty());
}

TEST(ShapeBuilder, HolesRunAgainstTheirFace) {
    ShapeBuilder builder;
    builder.AddFace(kSquare, {kHole});
    auto const shape = builder.Take();
    EXPECT_THAT(shape.faces.at(0), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(shape.GetInnerLoop(0, 0), ElementsAre(4, 5, 6, 7));
    EXPECT_EQ(shape.vertices[5].y, 3);  // the hole is turned: its second point is (1, 3)
}

TEST(Shape, AnExtrusionIsClosedAndKeepsItsHoles) {
    auto const tube = Extrude({kSquare, kHole}, {0, 0, 2});
    EXPECT_THAT(tube.faces, SizeIs(2 + 4 + 4));
    EXPECT_EQ(tube.GetInnerLoopCount(0), 1u);
    EXPECT_EQ(tube.GetInnerLoopCount(1), 1u);
    EXPECT_TRUE(IsClosed(tube));
    EXPECT_DOUBLE_EQ(GetVolume(tube), 2 * (16 - 4));
}

TEST(Shape, AnExtrusionLooksOutwardWhateverTheDirections) {
    Loop const turned(kSquare.rbegin(), kSquare.rend());
    for (auto const& outer : {kSquare, turned}) {
        for (auto const z : {2.0, -2.0}) {
            auto const prism = Extrude({outer, kHole}, {1, 0.5, z});
            EXPECT_TRUE(IsClosed(prism));
            EXPECT_DOUBLE_EQ(GetVolume(prism), 24);
        }
    }
}

TEST(Shape, AnExtrusionWithinItsPlaneIsEmpty) {
    EXPECT_TRUE(Extrude({kSquare}, {1, 0, 0}).faces.empty());
    EXPECT_TRUE(Extrude({}, {0, 0, 1}).faces.empty());
}

TEST(Shape, VolumeOfABoxFarFromTheOrigin) {
    EXPECT_NEAR(GetVolume(MakeBox({1e6, 1e6, 0}, {1e6 + 2, 1e6 + 3, 4})), 24, 1e-6);
    EXPECT_EQ(GetVolume({}), 0);
}

TEST(Shape, FlippingTurnsTheVolumeRound) {
    auto cube = MakeUnitCube();
    Flip(cube);
    EXPECT_DOUBLE_EQ(GetVolume(cube), -1);
    EXPECT_TRUE(IsClosed(cube));
}

TEST(Shape, ABoxWithoutALidIsOpen) {
    auto cube = MakeUnitCube();
    cube.faces.pop_back();
    EXPECT_FALSE(IsClosed(cube));
}

TEST(Shape, AMirroredShapeStillLooksOutward) {
    auto cube = MakeUnitCube();
    Transform(cube, MakeScaling(-2, 1, 1));
    EXPECT_DOUBLE_EQ(GetVolume(cube), 2);
}

TEST(Shape, RigidIsWithoutScaleAndMirror) {
    EXPECT_TRUE(IsRigid({}));
    EXPECT_FALSE(IsRigid(MakeScaling(1, 1, 2)));
    EXPECT_FALSE(IsRigid(MakeScaling(1, 1, -1)));
    auto sheared = Matrix4();
    sheared(0, 1) = 0.1;
    EXPECT_FALSE(IsRigid(sheared));
}

TEST(Shape, SplittingKeepsEveryFaceOnceWithinTheLimit) {
    ShapeBuilder builder;
    constexpr int kFaces = 50;
    for (int i = 0; i < kFaces; ++i) {
        Loop outer;
        Loop hole;
        for (auto const& p : kSquare) outer.push_back(p + Vertex{4.0 * i, 0, 0});
        for (auto const& p : kHole) hole.push_back(p + Vertex{4.0 * i, 0, 0});
        builder.AddFace(outer, {hole});
    }
    auto const shape = builder.Take();
    std::size_t faces = 0;
    std::set<double> corners;
    for (auto const& part : SplitShape(shape, 20)) {
        EXPECT_LE(part.vertices.size(), 20u);
        faces += part.faces.size();
        for (std::size_t i = 0; i < part.faces.size(); ++i) {
            corners.insert(part.vertices[part.faces[i][0]].x);
            EXPECT_EQ(part.GetInnerLoopCount(i), 1u);
        }
    }
    EXPECT_EQ(faces, std::size_t{kFaces});
    EXPECT_THAT(corners, SizeIs(kFaces));
}

TEST(Shape, ASmallShapeIsNotSplit) { EXPECT_THAT(SplitShape(MakeUnitCube(), 8), SizeIs(1)); }

TEST(Shape, AFaceBeyondTheLimitIsLeftOut) { EXPECT_THAT(SplitShape(MakeUnitCube(), 3), SizeIs(0)); }

Loop MakeSquare(double half, bool isReversed) {
    Loop loop{{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}};
    if (isReversed) std::reverse(loop.begin(), loop.end());
    return loop;
}

TEST(NestedLoops, ALoopWithinAHoleIsAFaceOfItsOwn) {
    auto const faces =
        SplitNestedLoops({MakeSquare(1, true), MakeSquare(4, false), MakeSquare(2, false), MakeSquare(3, true)});
    ASSERT_EQ(faces.size(), 2u);
    EXPECT_EQ(faces[0].outer[0].x, -4);
    ASSERT_EQ(faces[0].holes.size(), 1u);
    EXPECT_EQ(faces[1].holes.size(), 1u);
    EXPECT_EQ(GetAreaVector(faces[1].outer).z, 32);
}

TEST(NestedLoops, LoopsBesideEachOtherAreFacesAndShortOnesNone) {
    auto second = MakeSquare(1, false);
    for (auto& p : second) p.x += 5;
    EXPECT_EQ(SplitNestedLoops({MakeSquare(1, false), second, {{0, 0, 0}, {1, 0, 0}}}).size(), 2u);
    EXPECT_TRUE(SplitNestedLoops({}).empty());
}

TEST(Shape, BodiesThatTouchAlongAnEdgeAreClosed) {
    Loop const base{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    ShapeBuilder builder;
    for (auto const& offset : {Vertex{0, 0, 0}, Vertex{1, 1, 0}}) {
        auto box = Extrude({base}, {0, 0, 1});
        for (auto& v : box.vertices) v = v + offset;
        for (auto const& face : box.faces) {
            Loop loop;
            for (auto const index : face) loop.push_back(box.vertices[index]);
            builder.AddFace(loop);
        }
    }
    auto const both = builder.Take();
    EXPECT_EQ(both.vertices.size(), 14u);
    EXPECT_TRUE(IsClosed(both));
}

TEST(Gaps, APlaneFaceThatIsLackingIsAdded) {
    auto box = MakeBox({0, 0, 0}, {1, 2, 3});
    auto const face = box.faces.back();
    box.faces.pop_back();
    EXPECT_EQ(CloseGaps(box), 1u);
    EXPECT_TRUE(IsClosed(box));
    EXPECT_NEAR(GetVolume(box), 6, 1e-12);
    EXPECT_EQ(box.faces.back().size(), face.size());
}

TEST(Gaps, TwoGapsAreTwoFaces) {
    auto box = MakeBox({0, 0, 0}, {1, 2, 3});
    box.faces.erase(box.faces.begin(), box.faces.begin() + 2);  // the bottom and the top
    EXPECT_EQ(CloseGaps(box), 2u);
    EXPECT_TRUE(IsClosed(box));
    EXPECT_NEAR(GetVolume(box), 6, 1e-12);
}

TEST(Gaps, AGapThatIsNotPlaneStays) {
    auto box = MakeBox({0, 0, 0}, {1, 2, 3});
    box.faces.erase(box.faces.begin() + 2);  // two sides that meet in an edge leave a border that turns round it
    box.faces.erase(box.faces.begin());
    EXPECT_EQ(CloseGaps(box), 0u);
    EXPECT_EQ(box.faces.size(), 4u);
}

TEST(Gaps, AClosedShapeAndAnEmptyOneHaveNone) {
    auto box = MakeBox({0, 0, 0}, {1, 2, 3});
    EXPECT_EQ(CloseGaps(box), 0u);
    FacetedBRep empty;
    EXPECT_EQ(CloseGaps(empty), 0u);
}

}  // namespace
}  // namespace QuorlanProgram::Import
