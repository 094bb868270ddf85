#include "geometry/Frame.h"

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace GeometryObjectLib;
using Quorlan::PlacementRecord;
using Quorlan::Testing::SameBits;

Vector3f ToVector(std::array<float, 3> const& v) { return {v[0], v[1], v[2]}; }

Frame ToFrame(PlacementRecord const& p) {
    return Frame::FromAxes({p.origin[0], p.origin[1], p.origin[2]}, ToVector(p.xAxis), ToVector(p.yAxis));
}

DoubleFrame ToDoubleFrame(PlacementRecord const& p) {
    return DoubleFrame::FromAxes({p.origin[0], p.origin[1], p.origin[2]}, ToVector(p.xAxis), ToVector(p.yAxis));
}

/// Any type of frame against its plain form.
template <class AnyFrame, class Real>
void ExpectFrame(AnyFrame const& frame, Quorlan::Testing::PlainFrame<Real> const& plain) {
    EXPECT_TRUE(SameBits(frame.origin, {plain.origin[0], plain.origin[1], plain.origin[2]}));
    using Axis = decltype(frame.x);
    EXPECT_TRUE(SameBits(frame.x, Axis{plain.axes[0][0], plain.axes[0][1], plain.axes[0][2]}));
    EXPECT_TRUE(SameBits(frame.y, Axis{plain.axes[1][0], plain.axes[1][1], plain.axes[1][2]}));
    EXPECT_TRUE(SameBits(frame.z, Axis{plain.axes[2][0], plain.axes[2][1], plain.axes[2][2]}));
}

PlacementRecord AnyPlacement(std::uint32_t seed) {
    Quorlan::Testing::RandomNumbers random(seed);
    return RandomPlacement(random, Quorlan::Testing::RandomPlacements::kMixed);
}

TEST(Frame, DefaultIsTheIdentity) {
    Frame const frame;
    EXPECT_TRUE(SameBits(frame.origin, {0, 0, 0}));
    EXPECT_TRUE(SameBits(frame.x, {1, 0, 0}));
    EXPECT_TRUE(SameBits(frame.y, {0, 1, 0}));
    EXPECT_TRUE(SameBits(frame.z, {0, 0, 1}));
}

TEST(Frame, AxesOfAnyLengthGiveTheUnitFrame) {
    Frame const frame = Frame::FromAxes({}, {2, 0, 0}, {0, 3, 0});
    EXPECT_TRUE(SameBits(frame.x, {1, 0, 0}));
    EXPECT_TRUE(SameBits(frame.y, {0, 1, 0}));
    EXPECT_TRUE(SameBits(frame.z, {0, 0, 1}));
}

TEST(Frame, YAxisIsNotMadePerpendicular) {
    Frame const frame = Frame::FromAxes({}, {1, 0, 0}, {1, 1, 0});
    EXPECT_EQ(frame.y.x, 1.0f / std::sqrt(2.0f));
    EXPECT_EQ(frame.y.y, 1.0f / std::sqrt(2.0f));
    EXPECT_TRUE(SameBits(frame.z, {0, 0, 1}));
}

TEST(Frame, ParallelOrZeroAxesGiveValuesThatAreNotFinite) {
    EXPECT_FALSE(std::isfinite(Frame::FromAxes({}, {1, 2, 3}, {2, 4, 6}).z.x));
    EXPECT_FALSE(std::isfinite(Frame::FromAxes({}, {0, 0, 0}, {0, 1, 0}).x.x));
    EXPECT_FALSE(std::isfinite(DoubleFrame::FromAxes({}, {1, 2, 3}, {2, 4, 6}).y.x));
}

TEST(Frame, TakesTheColumnsOfATransformUnnormalised) {
    AffineTransform transform;
    transform.matrix.m = {2, 0.1, 0, 1e9 + 0.5, 0, 3, 0, 7, 0, 0, -4, 8, 0, 0, 0, 1};
    Frame const frame(transform);
    EXPECT_TRUE(SameBits(frame.origin, {1e9 + 0.5, 7, 8}));
    EXPECT_TRUE(SameBits(frame.x, {2, 0, 0}));
    EXPECT_TRUE(SameBits(frame.y, {0.1f, 3, 0}));
    EXPECT_TRUE(SameBits(frame.z, {0, 0, -4}));
}

TEST(Frame, CompositionAppliesTheRightFrameFirst) {
    Frame const quarterTurn({1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1});
    Frame const move({10, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    EXPECT_TRUE(SameBits((quarterTurn * move).origin, {1, 10, 0}));
    EXPECT_TRUE(SameBits((move * quarterTurn).origin, {11, 0, 0}));
}

TEST(Frame, CompositionGivesTheBitsOfThePlainOne) {
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        auto const a = AnyPlacement(seed);
        auto const b = AnyPlacement(seed + 1000);
        ExpectFrame(ToFrame(a), Quorlan::Testing::ToPlainFrame(a));
        ExpectFrame(ToDoubleFrame(a), Quorlan::Testing::ToPlainDoubleFrame(a));
        ExpectFrame(ToFrame(a) * ToFrame(b),
                    PlainCompose(Quorlan::Testing::ToPlainFrame(a), Quorlan::Testing::ToPlainFrame(b)));
        ExpectFrame(ToDoubleFrame(a) * ToDoubleFrame(b),
                    PlainCompose(Quorlan::Testing::ToPlainDoubleFrame(a), Quorlan::Testing::ToPlainDoubleFrame(b)));
    }
}

TEST(Frame, IdentityKeepsABox) {
    AxisAlignedBox3 const box = TransformBox(Frame(), {0, 0, 0}, {1, 2, 3});
    EXPECT_TRUE(SameBits(box, AxisAlignedBox3{{0.5, 1, 1.5}, {0.5, 1, 1.5}}));
}

TEST(Frame, QuarterTurnAboutZTurnsABox) {
    Frame const quarterTurn({0, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1});
    AxisAlignedBox3 const box = TransformBox(quarterTurn, {0, 0, 0}, {2, 1, 1});
    EXPECT_TRUE(SameBits(box.GetMin(), {-1, 0, 0}));
    EXPECT_TRUE(SameBits(box.GetMax(), {0, 2, 1}));
}

TEST(Frame, BoxAddsInSinglePrecisionAndTheOriginInDoublePrecision) {
    Frame const frame({1e9, 0, 0}, {1, 0, 0}, {1e-9f, 1, 0}, {0, 0, 1});
    AxisAlignedBox3 const box = TransformBox(frame, {1, 1, 0}, {1, 1, 0});
    EXPECT_EQ(box.center.x, 1e9 + 1);  // 1 + 1e-9 is 1 in single precision
}

TEST(Frame, BoxGivesTheBitsOfThePlainOne) {
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        auto const placement = AnyPlacement(seed);
        Vector3f const lo{-1.1f, 0.3f, static_cast<float>(seed)};
        Vector3f const hi{2.7f, 0.4f, static_cast<float>(seed) + 0.1f};
        EXPECT_TRUE(SameBits(TransformBox(ToFrame(placement), lo, hi),
                             PlainTransformBox(Quorlan::Testing::ToPlainFrame(placement), lo, hi)));
    }
}

TEST(DoubleFrame, MakesTheYAxisPerpendicular) {
    DoubleFrame const frame = DoubleFrame::FromAxes({1, 2, 3}, {1, 0, 0}, {1, 1, 0});
    EXPECT_TRUE(SameBits(frame.y, {0, 1, 0}));
    EXPECT_TRUE(SameBits(frame.z, {0, 0, 1}));
    EXPECT_TRUE(SameBits(frame.ToMatrix().GetColumn(3), {1, 2, 3}));
}

}  // namespace
