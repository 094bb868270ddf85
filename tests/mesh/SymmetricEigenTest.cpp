#include "mesh/SymmetricEigen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

using namespace Quorlan::Tools;

constexpr float kTolerance = 2e-6F;  ///< relative to the largest value

Vector3f Product(SymmetricMatrix3 const& m, Vector3f const& v) {
    return {m.xx * v.x + m.xy * v.y + m.xz * v.z, m.xy * v.x + m.yy * v.y + m.yz * v.z,
            m.xz * v.x + m.yz * v.y + m.zz * v.z};
}

void ExpectDecomposition(SymmetricMatrix3 const& m) {
    SymmetricEigen3 const e = Decompose(m);
    float const size = std::max(std::fabs(e.values[0]), std::fabs(e.values[2]));
    EXPECT_GE(e.values[0], e.values[1]);
    EXPECT_GE(e.values[1], e.values[2]);
    EXPECT_NEAR(e.values[0] + e.values[1] + e.values[2], m.xx + m.yy + m.zz, kTolerance * size);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_LE(Length(Product(m, e.vectors[i]) - e.values[i] * e.vectors[i]), kTolerance * size);
        EXPECT_NEAR(Length(e.vectors[i]), 1, kTolerance);
        EXPECT_NEAR(Dot(e.vectors[i], e.vectors[(i + 1) % 3]), 0, kTolerance);
    }
    EXPECT_NEAR(Dot(Cross(e.vectors[0], e.vectors[1]), e.vectors[2]), 1, 2 * kTolerance);
}

void ExpectSame(Vector3f const& actual, Vector3f const& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

TEST(SymmetricEigen, DiagonalMatricesGiveTheCoordinateAxesExactly) {
    auto const e = Decompose({1, 3, 2, 0, 0, 0});
    EXPECT_EQ(e.values, (std::array<float, 3>{3, 2, 1}));
    ExpectSame(e.vectors[0], {0, 1, 0});
    ExpectSame(e.vectors[1], {0, 0, 1});
    ExpectSame(e.vectors[2], {1, 0, 0});
}

TEST(SymmetricEigen, EqualValuesKeepTheOrderOfTheAxes) {
    auto const cube = Decompose({5, 5, 5, 0, 0, 0});
    ExpectSame(cube.vectors[0], {1, 0, 0});
    ExpectSame(cube.vectors[2], {0, 0, 1});
    ExpectSame(Decompose({2, 1, 1, 0, 0, 0}).vectors[2], {0, 0, 1});
}

TEST(SymmetricEigen, ZeroMatrixGivesTheIdentity) {
    auto const e = Decompose({});
    EXPECT_EQ(e.values, (std::array<float, 3>{0, 0, 0}));
    ExpectSame(e.vectors[0], {1, 0, 0});
    ExpectSame(e.vectors[2], {0, 0, 1});
}

TEST(SymmetricEigen, LeftHandedBasisNegatesTheFirstVectorAndKeepsTheLast) {
    auto const e = Decompose({2, 3, 1, 0, 0, 0});  // the sorted axes y, x, z are left-handed
    ExpectSame(e.vectors[0], {0, -1, 0});
    ExpectSame(e.vectors[1], {1, 0, 0});
    ExpectSame(e.vectors[2], {0, 0, 1});
}

TEST(SymmetricEigen, PlaneRotationIsFoundInEveryPlane) {
    ExpectDecomposition({2, 1, 0.5F, 0.5F, 0, 0});
    ExpectDecomposition({2, 1, 0.5F, 0, 0.5F, 0});
    ExpectDecomposition({2, 1, 0.5F, 0, 0, 0.5F});
    auto const e = Decompose({1, 1, 0, 1, 0, 0});
    EXPECT_NEAR(e.values[0], 2, 1e-6);
    EXPECT_NEAR(std::fabs(e.vectors[0].x), std::sqrt(0.5), 1e-6);
}

TEST(SymmetricEigen, RandomMatricesOfAllSizesAreDecomposed) {
    constexpr unsigned kSeed = 8;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<float> number(-1, 1);
    for (float const scale : {1e-15F, 1e-3F, 1.0F, 1e6F, 1e15F}) {
        for (int i = 0; i < 500; ++i) {
            auto const next = [&] { return scale * number(random); };
            ExpectDecomposition({next(), next(), next(), next(), next(), next()});
        }
    }
}

TEST(SymmetricEigen, CloseAndVanishingValuesAreDecomposed) {
    constexpr unsigned kSeed = 9;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<float> number(-1, 1);
    for (int i = 0; i < 500; ++i) {
        Vector3f const v{number(random), number(random), number(random)};
        // v v': values |v|^2, 0, 0
        ExpectDecomposition({v.x * v.x, v.y * v.y, v.z * v.z, v.x * v.y, v.x * v.z, v.y * v.z});
        auto const tiny = [&] { return 1e-6F * number(random); };
        ExpectDecomposition({1 + tiny(), 1 + tiny(), 1 + tiny(), tiny(), tiny(), tiny()});
    }
}

TEST(SymmetricEigen, FourSideBySideGetTheBitsThatEachGetsAlone) {
    constexpr unsigned kSeed = 10;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<float> number(-1, 1);
    for (int round = 0; round < 500; ++round) {
        std::array<SymmetricMatrix3, 4> matrices;
        for (auto& m : matrices) {
            m = {number(random), number(random), number(random), number(random), number(random), number(random)};
            if (random() % 4 == 0) m.xz = 0;
            if (random() % 4 == 0) m.xy = m.yz = 0;
            if (random() % 8 == 0) m = {};
        }
        auto const together = DecomposeFour(matrices);
        for (std::size_t i = 0; i < 4; ++i) {
            auto const alone = Decompose(matrices[i]);
            ASSERT_EQ(std::memcmp(&alone, &together[i], sizeof(alone)), 0);
        }
    }
}

TEST(SymmetricEigen, ValuesThatAreNotNumbersComeToAnEnd) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const inf = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(std::isfinite(Decompose({nan, 1, 1, 1, 1, 1}).values[0]));
    Decompose({inf, 1, 1, 1, 1, 1});
}

}  // namespace
