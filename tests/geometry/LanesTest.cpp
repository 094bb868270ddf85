#include "geometry/FrameLanes.h"
#include "geometry/LaneMoves.h"

#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace GeometryObjectLib;
using Quorlan::Testing::SameBits;

using PlainFloat4 = PlainLanes<float>;
using PlainDouble4 = PlainLanes<double>;

template <class Lanes>
std::array<double, 4> ToArray(Lanes const& lanes) {
    double pairs[8];
    StorePairs(lanes, lanes, pairs, 2);
    return {pairs[0], pairs[2], pairs[4], pairs[6]};
}

std::array<double, 4> ToArray(Float4 const& lanes) { return ToArray(Widen(lanes)); }

template <class Lanes, class Plain>
void ExpectSame(Lanes const& lanes, Plain const& plain) {
    auto const values = ToArray(lanes);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(SameBits(values[i], double{plain.lane[i]})) << values[i] << " for " << plain.lane[i];
    }
}

/// Values whose minima and maxima depend on the order of the arguments are among them.
template <class Real>
std::vector<Real> OddValues() {
    Real const infinity = std::numeric_limits<Real>::infinity();
    return {Real{0},
            -Real{0},
            Real{1},
            Real{-2.5},
            std::numeric_limits<Real>::denorm_min(),
            infinity,
            -infinity,
            std::numeric_limits<Real>::quiet_NaN()};
}

template <class Lanes, class Plain, class Real>
void ExpectSameOperations() {
    for (Real const a : OddValues<Real>()) {
        for (Real const b : OddValues<Real>()) {
            Lanes const x(a, b, Real{3}, b);
            Lanes const y(b, b, a, Real{7});
            Plain const plainX(a, b, Real{3}, b);
            Plain const plainY(b, b, a, Real{7});
            ExpectSame(x + y, plainX + plainY);
            ExpectSame(x - y, plainX - plainY);
            ExpectSame(x * y, plainX * plainY);
            ExpectSame(x / y, plainX / plainY);
            ExpectSame(Min(x, y), Min(plainX, plainY));
            ExpectSame(Max(x, y), Max(plainX, plainY));
            ExpectSame(Sqrt(x), Sqrt(plainX));
            EXPECT_EQ(AreOne(x, x, y), AreOne(plainX, plainX, plainY));
        }
    }
    Lanes const one(Real{1});
    EXPECT_TRUE(AreOne(one, one, one));
    EXPECT_FALSE(AreOne(one, one, Lanes(Real{1}, Real{1}, Real{1}, Real{2})));
    EXPECT_FALSE(AreOne(one, Lanes(std::numeric_limits<Real>::quiet_NaN(), Real{1}, Real{1}, Real{1}), one));
}

TEST(Lanes, FloatsRoundAsScalarsDo) { ExpectSameOperations<Float4, PlainFloat4, float>(); }

TEST(Lanes, FloatsCompareAndSelectAsScalarsDo) {
    Float4 const first(1.0f, 2.0f, 3.0f, 4.0f);
    Float4 const second(5.0f);
    PlainFloat4 const plainFirst(1.0f, 2.0f, 3.0f, 4.0f);
    PlainFloat4 const plainSecond(5.0f);
    for (float const a : OddValues<float>()) {
        for (float const b : OddValues<float>()) {
            Float4 const x(a, b, 3.0f, b);
            Float4 const y(b, a, 3.0f, 7.0f);
            PlainFloat4 const plainX(a, b, 3.0f, b);
            PlainFloat4 const plainY(b, a, 3.0f, 7.0f);
            auto const expectSame = [&](auto const& mask, auto const& plainMask) {
                ExpectSame(Select(mask, first, second), Select(plainMask, plainFirst, plainSecond));
                ExpectSame(Select(!mask, first, second), Select(!plainMask, plainFirst, plainSecond));
            };
            expectSame(x > y, plainX > plainY);
            expectSame(x >= y, plainX >= plainY);
            expectSame(x < y, plainX < plainY);
            expectSame(x <= y, plainX <= plainY);
            expectSame((x > y) & (x >= second), (plainX > plainY) & (plainX >= plainSecond));
            expectSame((x > y) | (x < first), (plainX > plainY) | (plainX < plainFirst));
            ExpectSame(-x, -plainX);
            ExpectSame(Abs(x), Abs(plainX));
            float stored[4];
            float plainStored[4];
            Store(x, stored);
            Store(plainX, plainStored);
            for (int i = 0; i < 4; ++i) EXPECT_TRUE(SameBits(stored[i], plainStored[i]));
        }
    }
}

TEST(Lanes, DoublesRoundAsScalarsDo) { ExpectSameOperations<Double4, PlainDouble4, double>(); }

Vector3f LaneOf(VectorLanes<Float4> const& v, std::size_t lane) {
    return {static_cast<float>(ToArray(v.x)[lane]), static_cast<float>(ToArray(v.y)[lane]),
            static_cast<float>(ToArray(v.z)[lane])};
}

Vertex LaneOf(VectorLanes<Double4> const& v, std::size_t lane) {
    return {ToArray(v.x)[lane], ToArray(v.y)[lane], ToArray(v.z)[lane]};
}

/// Four placements, in scalars and in lanes.
struct FourPlacements {
    std::array<Vertex, 4> origins;
    std::array<Vector3f, 4> xAxes;
    std::array<Vector3f, 4> yAxes;

    FourPlacements(std::uint32_t seed, Quorlan::Testing::RandomPlacements style) {
        Quorlan::Testing::RandomNumbers random(seed);
        for (std::size_t i = 0; i < 4; ++i) {
            auto const p = RandomPlacement(random, style);
            origins[i] = {p.origin[0], p.origin[1], p.origin[2]};
            xAxes[i] = {p.xAxis[0], p.xAxis[1], p.xAxis[2]};
            yAxes[i] = {p.yAxis[0], p.yAxis[1], p.yAxis[2]};
        }
    }

    static VectorLanes<Float4> Pack(std::array<Vector3f, 4> const& v) {
        return {{v[0].x, v[1].x, v[2].x, v[3].x}, {v[0].y, v[1].y, v[2].y, v[3].y}, {v[0].z, v[1].z, v[2].z, v[3].z}};
    }

    static VectorLanes<Double4> Pack(std::array<Vertex, 4> const& v) {
        return {{v[0].x, v[1].x, v[2].x, v[3].x}, {v[0].y, v[1].y, v[2].y, v[3].y}, {v[0].z, v[1].z, v[2].z, v[3].z}};
    }

    template <class AnyFrameLanes>
    AnyFrameLanes InLanes() const {
        return AnyFrameLanes::FromAxes(Pack(origins), Pack(xAxes), Pack(yAxes));
    }

    template <class AnyFrame>
    AnyFrame InScalars(std::size_t i) const {
        return AnyFrame::FromAxes(origins[i], xAxes[i], yAxes[i]);
    }
};

template <class AnyFrame, class AnyFrameLanes>
void ExpectSameComposition(FourPlacements const& a, FourPlacements const& b) {
    AnyFrameLanes const lanes = a.InLanes<AnyFrameLanes>() * b.InLanes<AnyFrameLanes>();
    for (std::size_t i = 0; i < 4; ++i) {
        AnyFrame const frame = a.InScalars<AnyFrame>(i) * b.InScalars<AnyFrame>(i);
        EXPECT_TRUE(SameBits(LaneOf(lanes.origin, i), frame.origin));
        EXPECT_TRUE(SameBits(LaneOf(lanes.x, i), frame.x));
        EXPECT_TRUE(SameBits(LaneOf(lanes.y, i), frame.y));
        EXPECT_TRUE(SameBits(LaneOf(lanes.z, i), frame.z));
    }
}

TEST(Lanes, TriplesBecomeComponents) {
    float const triples[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    auto const v = LoadTriples(triples);
    ExpectSame(v.x, PlainFloat4(1, 4, 7, 10));
    ExpectSame(v.y, PlainFloat4(2, 5, 8, 11));
    ExpectSame(v.z, PlainFloat4(3, 6, 9, 12));
}

TEST(FrameLanes, GiveTheBitsOfFourFrames) {
    using Quorlan::Testing::RandomPlacements;
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kRotated, RandomPlacements::kMixed}) {
        for (std::uint32_t seed = 0; seed < 50; ++seed) {
            SCOPED_TRACE(seed);
            FourPlacements const a(seed, style);
            FourPlacements const b(seed + 100, style);
            ExpectSameComposition<Frame, FrameLanes>(a, b);
            ExpectSameComposition<DoubleFrame, DoubleFrameLanes>(a, b);
        }
    }
}

TEST(FrameLanes, GiveTheBitsOfFourBoxes) {
    FourPlacements const four(3, Quorlan::Testing::RandomPlacements::kRotated);
    Vector3f const lo{-1.5f, 0.25f, -0.125f};
    Vector3f const hi{-1.25f, 7.3f, 0.1f};
    AxisAlignedBox3 boxes[4];
    TransformBox(four.InLanes<FrameLanes>(), Broadcast(lo), Broadcast(hi)).Store(boxes);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(SameBits(boxes[i], TransformBox(four.InScalars<Frame>(i), lo, hi)));
    }
}

}  // namespace
