#include <GeometryObjectLib/AffineTransform.h>

#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace GeometryObjectLib;
using Quorlan::Testing::SameBits;

double const kPi = std::acos(-1.0);

/// Rodrigues' formula.
Vertex Rotate(Vertex const& v, Vertex const& axis, double angle) {
    return std::cos(angle) * v + std::sin(angle) * Cross(axis, v) + (1 - std::cos(angle)) * Dot(axis, v) * axis;
}

/// translation * rotation * scaling
Matrix4 Compose(Vertex const& scale, Vertex const& axis, double angle, Vertex const& offset) {
    Vertex const x = Rotate({scale.x, 0, 0}, axis, angle);
    Vertex const y = Rotate({0, scale.y, 0}, axis, angle);
    Vertex const z = Rotate({0, 0, scale.z}, axis, angle);
    Matrix4 matrix;
    matrix.m = {x.x, y.x, z.x, offset.x, x.y, y.y, z.y, offset.y, x.z, y.z, z.z, offset.z, 0, 0, 0, 1};
    return matrix;
}

void ExpectNear(Vertex const& a, Vertex const& b) {
    EXPECT_NEAR(a.x, b.x, 1e-9);
    EXPECT_NEAR(a.y, b.y, 1e-9);
    EXPECT_NEAR(a.z, b.z, 1e-9);
}

TEST(AffineTransform, DefaultIsTheIdentity) {
    AffineTransform const transform;
    EXPECT_EQ(transform.matrix.m, Matrix4().m);
    EXPECT_TRUE(SameBits(transform.scale, {1, 1, 1}));
    EXPECT_TRUE(SameBits(transform.axis, {0, 0, 1}));
    EXPECT_EQ(transform.angle, 0);
    EXPECT_TRUE(SameBits(transform.offset, {0, 0, 0}));
}

TEST(AffineTransform, IdentityMatrixDecomposesToTheDefaults) {
    auto const transform = AffineTransform::FromMatrix(Matrix4());
    EXPECT_TRUE(SameBits(transform.scale, {1, 1, 1}));
    EXPECT_TRUE(SameBits(transform.axis, {0, 0, 1}));
    EXPECT_EQ(transform.angle, 0);
}

TEST(AffineTransform, DecompositionRecoversScaleRotationAndOffset) {
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> number(-1, 1);
    for (int i = 0; i < 500; ++i) {
        SCOPED_TRACE(i);
        Vertex axis{number(generator), number(generator), number(generator)};
        axis = axis / Length(axis);
        double const angle = i % 5 == 0 ? kPi - 1e-7 * i : kPi * (0.5 + 0.49 * number(generator));
        Vertex const scale{1.5 + number(generator), 2, 1.2 + number(generator)};
        auto const transform = AffineTransform::FromMatrix(Compose(scale, axis, angle, {1, 2, 3}));
        ExpectNear(transform.scale, scale);
        ExpectNear(transform.axis, axis);
        EXPECT_NEAR(transform.angle, angle, 1e-9);
        EXPECT_TRUE(SameBits(transform.offset, {1, 2, 3}));
    }
}

TEST(AffineTransform, HalfTurnsKeepTheirAxes) {
    for (Vertex const& axis : {Vertex{1, 0, 0}, Vertex{0, 1, 0}, Vertex{0, 0, 1}, Vertex{0.6, 0.8, 0}}) {
        auto const transform = AffineTransform::FromMatrix(Compose({1, 1, 1}, axis, kPi, {}));
        EXPECT_NEAR(transform.angle, kPi, 1e-9);
        EXPECT_NEAR(std::abs(Dot(transform.axis, axis)), 1, 1e-9);
    }
}

TEST(AffineTransform, MirroringMatrixHasANegativeScaleOfX) {
    Matrix4 const mirror = Compose({-2, 1, 1}, {0, 0, 1}, 0.5, {});
    auto const transform = AffineTransform::FromMatrix(mirror);
    ExpectNear(transform.scale, {-2, 1, 1});
    EXPECT_NEAR(transform.angle, 0.5, 1e-9);
    Matrix4 const again = Compose(transform.scale, transform.axis, transform.angle, transform.offset);
    for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(again.m[i], mirror.m[i], 1e-9);
}

TEST(AffineTransform, AxisOfZeroLengthLeavesTheRotationAtItsDefault) {
    auto const transform = AffineTransform::FromMatrix(Compose({1, 0, 1}, {0, 1, 0}, 1, {}));
    EXPECT_TRUE(SameBits(transform.axis, {0, 0, 1}));
    EXPECT_EQ(transform.angle, 0);
}

}  // namespace
