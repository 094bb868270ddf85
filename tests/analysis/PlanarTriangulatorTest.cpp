#include "analysis/PlanarTriangulator.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using GeometryObjectLib::Vertex;
using Quorlan::FaceLoops;
using Quorlan::PlanarTriangulator;
using Triangles = std::vector<std::uint32_t>;

FaceLoops MakeFace(std::vector<std::vector<Vertex>> const& loops) {
    FaceLoops face;
    for (auto const& loop : loops) {
        face.corners.insert(face.corners.end(), loop.begin(), loop.end());
        face.ends.push_back(face.corners.size());
    }
    return face;
}

/// The sum of the triangles' area vectors, which is that of the face whatever the triangulation.
Vertex SumAreas(FaceLoops const& face) {
    PlanarTriangulator triangulator;
    auto const& triangles = triangulator.Triangulate(face);
    Vertex sum;
    for (std::size_t t = 0; t < triangles.size(); t += 3) {
        Vertex const& p = face.corners[triangles[t]];
        sum = sum + 0.5 * Cross(face.corners[triangles[t + 1]] - p, face.corners[triangles[t + 2]] - p);
    }
    return sum;
}

std::vector<Vertex> Square(double lo, double hi) { return {{lo, lo, 0}, {hi, lo, 0}, {hi, hi, 0}, {lo, hi, 0}}; }

std::vector<Vertex> Reversed(std::vector<Vertex> loop) { return {loop.rbegin(), loop.rend()}; }

TEST(PlanarTriangulator, TrianglesAndConvexQuadrilateralsAreSplitAsTheyAre) {
    PlanarTriangulator triangulator;
    EXPECT_EQ(triangulator.Triangulate(MakeFace({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}})), (Triangles{0, 1, 2}));
    EXPECT_EQ(triangulator.Triangulate(MakeFace({Square(0, 1)})), (Triangles{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(triangulator.Triangulate(MakeFace({Reversed(Square(0, 1))})), (Triangles{0, 1, 2, 0, 2, 3}));
}

TEST(PlanarTriangulator, FewerThanThreeCornersGiveNothing) {
    PlanarTriangulator triangulator;
    EXPECT_TRUE(triangulator.Triangulate(MakeFace({{{0, 0, 0}, {1, 0, 0}}})).empty());
    EXPECT_TRUE(triangulator.Triangulate(MakeFace({{{0, 0, 0}}, Square(1, 2)})).empty());
}

TEST(PlanarTriangulator, KeepsTheWindingOfConcaveFaces) {
    std::vector<Vertex> const arrow{{0, 0, 0}, {4, 4, 0}, {0, 1, 0}, {-4, 4, 0}};
    EXPECT_DOUBLE_EQ(SumAreas(MakeFace({arrow})).z, 4);
    EXPECT_DOUBLE_EQ(SumAreas(MakeFace({Reversed(arrow)})).z, -4);
}

TEST(PlanarTriangulator, HolesAreCutOutWhicheverWayTheyRun) {
    EXPECT_DOUBLE_EQ(SumAreas(MakeFace({Square(0, 4), Square(1, 2), Reversed(Square(2.5, 3))})).z, 14.75);
    EXPECT_DOUBLE_EQ(SumAreas(MakeFace({Reversed(Square(0, 4)), Square(1, 2)})).z, -15);
}

TEST(PlanarTriangulator, EveryPlaneIsSeenFromItsFront) {
    std::vector<Vertex> const outline{{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {1, 1, 0}, {1, 3, 0}, {0, 3, 0}};
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        Vertex const direction{std::sin(i * 1.1), std::cos(i * 2.3), std::sin(i * 3.7)};
        Vertex const x = direction / Length(direction);
        Vertex const across = Cross(x, {1, 0.5, 0.25});
        Vertex const y = across / Length(across);
        std::vector<Vertex> turned;
        for (Vertex const& v : outline) turned.push_back(x * v.x + y * v.y + Vertex{1e5, -1e5, 0});
        Vertex const sum = SumAreas(MakeFace({turned}));
        EXPECT_NEAR(Dot(sum, Cross(x, y)), 5, 1e-6);
        EXPECT_NEAR(Length(sum), 5, 1e-6);
    }
}

TEST(PlanarTriangulator, CoordinatePlanesAreSeenFromBothSides) {
    for (double const sign : {1.0, -1.0}) {
        for (int axis = 0; axis < 3; ++axis) {
            std::vector<Vertex> pentagon;
            for (int i = 0; i < 5; ++i) {
                double const u = std::cos(i * 1.25663706);
                double const v = sign * std::sin(i * 1.25663706);
                pentagon.push_back(axis == 0 ? Vertex{0, u, v} : axis == 1 ? Vertex{v, 0, u} : Vertex{u, v, 0});
            }
            Vertex const sum = SumAreas(MakeFace({pentagon}));
            EXPECT_NEAR(sum.x + sum.y + sum.z, sign * 2.37764, 1e-5);
        }
    }
}

TEST(PlanarTriangulator, RepeatedAndCollinearCornersLoseNoArea) {
    EXPECT_DOUBLE_EQ(
        SumAreas(MakeFace({{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 0, 0}, {2, 2, 0}, {1, 2, 0}, {0, 2, 0}, {0, 0, 0}}}))
            .z,
        4);
    EXPECT_NEAR(SumAreas(MakeFace({{{0, 0, 0}, {1, 0, 0}, {1, 1e-9, 0}, {0.5, 1e-9, 0}, {0, 1e-9, 0}}})).z, 1e-9,
                1e-18);
}

TEST(PlanarTriangulator, LoopThatCrossesItselfKeepsItsSignedArea) {
    // A bow tie: 7/3 on the left, -16/3 on the right.
    EXPECT_NEAR(SumAreas(MakeFace({{{0, 0, 0}, {4, 4, 0}, {4, 0, 0}, {0, 2, 0}, {-1, 1, 0}}})).z, -3, 1e-12);
}

TEST(PlanarTriangulator, HoleOutsideItsFaceIsSubtractedAllTheSame) {
    EXPECT_DOUBLE_EQ(SumAreas(MakeFace({Square(0, 4), Square(10, 11)})).z, 15);
}

TEST(PlanarTriangulator, DegenerateAndNonFiniteLoopsDoNoHarm) {
    double const bad = std::nan("");
    PlanarTriangulator triangulator;
    EXPECT_EQ(triangulator.Triangulate(MakeFace({std::vector<Vertex>(6)})).size(), 12u);
    EXPECT_EQ(triangulator.Triangulate(MakeFace({{{0, 0, 0}, {1, 0, 0}, {bad, 1, 0}, {0, 1, 0}, {0, 0.5, 0}}})).size(),
              9u);
    EXPECT_EQ(triangulator.Triangulate(MakeFace({Square(0, 4), {{1, 1, 0}, {bad, 1, 0}, {2, 2, 0}}})).size(), 9u);
}

}  // namespace
