#include "step/IndexedCurve.h"

#include <gmock/gmock.h>

#include <cmath>

namespace QuorlanProgram::Import {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Chords const kChords(0.009);  // 24 of them for a circle of radius 1

std::vector<CurvePoint> const kSquare{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

TEST(IndexedCurve, ReadsPlaneAndSpatialPoints) {
    EXPECT_THAT(ReadPointList("((0.,1.5),(2.E1,-3))"), ElementsAre(CurvePoint{0, 1.5, 0}, CurvePoint{20, -3, 0}));
    EXPECT_THAT(ReadPointList("((1.,2.,3.)),('tag')"), ElementsAre(CurvePoint{1, 2, 3}));
    EXPECT_THAT(ReadPointList("((0.,1.),(x,2.))"), IsEmpty());
    EXPECT_THAT(ReadPointList("((0.))"), IsEmpty());
}

TEST(IndexedCurve, WithoutSegmentsJoinsAllPoints) { EXPECT_EQ(ExpandIndexedCurve(kSquare, "$", kChords), kSquare); }

TEST(IndexedCurve, LinesShareTheirEnds) {
    auto const curve =
        ExpandIndexedCurve(kSquare, "(IFCLINEINDEX((1,2,3)),IFCLINEINDEX((3,4)),IFCLINEINDEX((4,1)))", kChords);
    EXPECT_THAT(curve, ElementsAre(kSquare[0], kSquare[1], kSquare[2], kSquare[3], kSquare[0]));
}

TEST(IndexedCurve, AnArcKeepsItsRadiusAndItsThreePoints) {
    std::vector<CurvePoint> const points{{2, 1, 5}, {1, 2, 5}, {0, 1, 5}};  // half a circle round (1, 1), radius 1
    auto const curve = ExpandIndexedCurve(points, "(IFCARCINDEX((1,2,3)))", kChords);
    ASSERT_EQ(curve.size(), 13u);
    EXPECT_EQ(curve.front(), points[0]);
    EXPECT_EQ(curve.back(), points[2]);
    EXPECT_NEAR(curve[6][0], 1, 1e-12);
    EXPECT_NEAR(curve[6][1], 2, 1e-12);
    for (auto const& p : curve) {
        EXPECT_NEAR(std::hypot(p[0] - 1, p[1] - 1), 1, 1e-12);
        EXPECT_NEAR(p[2], 5, 1e-12);
    }
}

TEST(IndexedCurve, AnArcRunsOverItsMiddleEvenTheLongWay) {
    auto const countSteps = [](CurvePoint const& middle) {
        std::vector<CurvePoint> curve;
        AppendArc(curve, {1, 0, 0}, middle, {0, 1, 0}, kChords);
        return curve.size();
    };
    EXPECT_EQ(countSteps({std::sqrt(0.5), std::sqrt(0.5), 0}), 6u);
    EXPECT_EQ(countSteps({-1, 0, 0}), 18u);
    EXPECT_EQ(countSteps({0, -1, 0}), 18u);
}

TEST(IndexedCurve, AnArcThroughPointsOnALineIsALine) {
    std::vector<CurvePoint> curve;
    AppendArc(curve, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}, kChords);
    EXPECT_THAT(curve, ElementsAre(CurvePoint{2, 0, 0}));
}

TEST(IndexedCurve, WhatIsNotUnderstoodGivesNoPoints) {
    EXPECT_THAT(ExpandIndexedCurve(kSquare, "(IFCLINEINDEX((1,5)))", kChords), IsEmpty());
    EXPECT_THAT(ExpandIndexedCurve(kSquare, "(IFCLINEINDEX((0,1)))", kChords), IsEmpty());
    EXPECT_THAT(ExpandIndexedCurve(kSquare, "(IFCARCINDEX((1,2)))", kChords), IsEmpty());
    EXPECT_THAT(ExpandIndexedCurve(kSquare, "(IFCLINEINDEX(1,2))", kChords), IsEmpty());
    EXPECT_THAT(ExpandIndexedCurve(kSquare, "nonsense", kChords), IsEmpty());
}

}  // namespace
}  // namespace QuorlanProgram::Import
