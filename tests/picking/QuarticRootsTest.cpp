#include "picking/QuarticRoots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace Quorlan::Testing {

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using Tools::Picking::FindRealRoots;
using Tools::Picking::QuarticCoefficients_t;
using Tools::Picking::RealRoots;

using Roots = std::vector<double>;

Roots ToVector(RealRoots const& roots) { return {roots.begin(), roots.end()}; }

/// leading * (x - r0) * (x - r1) ...; at most four roots.
QuarticCoefficients_t FromRoots(Roots const& roots, double leading = 1) {
    QuarticCoefficients_t product{};
    product[0] = leading;
    for (double const root : roots) {
        for (std::size_t i = product.size(); i-- > 0;) product[i] = (i > 0 ? product[i - 1] : 0) - root * product[i];
    }
    return product;
}

/// The value, in shares of the sum of the terms' magnitudes.
double Residual(QuarticCoefficients_t const& c, double x) {
    double value = 0;
    double magnitude = 0;
    for (std::size_t i = c.size(); i-- > 0;) {
        value = value * x + c[i];
        magnitude = magnitude * std::abs(x) + std::abs(c[i]);
    }
    return magnitude == 0 ? 0 : std::abs(value) / magnitude;
}

void ExpectAscendingWithSmallResiduals(QuarticCoefficients_t const& c, RealRoots const& roots) {
    ASSERT_TRUE(std::is_sorted(roots.begin(), roots.end()));
    for (double const root : roots) ASSERT_LE(Residual(c, root), 1e-13) << root;
}

void ExpectEachFound(RealRoots const& found, Roots const& expected, double tolerance) {
    for (double const root : expected) {
        bool const isFound =
            std::any_of(found.begin(), found.end(), [&](double x) { return std::abs(x - root) <= tolerance; });
        ASSERT_TRUE(isFound) << root;
    }
}

class RandomRoots {
public:
    explicit RandomRoots(std::uint32_t seed) : engine_(seed) {}
    double Between(double lower, double upper) { return std::uniform_real_distribution<double>(lower, upper)(engine_); }

private:
    std::mt19937 engine_;
};

}  // namespace

TEST(QuarticRoots, FourSimpleRootsInAscendingOrder) {
    EXPECT_THAT(
        ToVector(FindRealRoots(FromRoots({3, -2, 0.5, -7}))),
        ElementsAre(DoubleNear(-7, 1e-14), DoubleNear(-2, 1e-14), DoubleNear(0.5, 1e-14), DoubleNear(3, 1e-14)));
}

TEST(QuarticRoots, NoRealRoots) {
    EXPECT_TRUE(FindRealRoots({1, 0, 0, 0, 1}).empty());
    EXPECT_TRUE(FindRealRoots({4, 0, 5, 0, 1}).empty());  // (x^2 + 1)(x^2 + 4)
    EXPECT_TRUE(FindRealRoots({-1, 0, 0, 0, -1}).empty());
}

TEST(QuarticRoots, TwoRealAndTwoComplexRoots) {
    EXPECT_THAT(ToVector(FindRealRoots({-1, 0, 0, 0, 1})), ElementsAre(DoubleNear(-1, 1e-15), DoubleNear(1, 1e-15)));
}

TEST(QuarticRoots, MultipleRootsAreListedOnce) {
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({2, 2, -1, 5}))),
                ElementsAre(DoubleNear(-1, 1e-12), DoubleNear(2, 1e-7), DoubleNear(5, 1e-12)));
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({2, 2, -1, -1}))),
                ElementsAre(DoubleNear(-1, 1e-7), DoubleNear(2, 1e-7)));
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({2, 2, 2, -1}))),
                ElementsAre(DoubleNear(-1, 1e-12), DoubleNear(2, 1e-4)));
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({2, 2, 2, 2}))), ElementsAre(DoubleNear(2, 1e-3)));
    EXPECT_THAT(ToVector(FindRealRoots({0, 0, 0, 0, 1})), ElementsAre(0));
}

TEST(QuarticRoots, ADoubleRootBetweenComplexOnesIsFound) {
    // (x - 1)^2 (x^2 + 1) touches zero without a change of sign.
    EXPECT_THAT(ToVector(FindRealRoots({1, -2, 2, -2, 1})), ElementsAre(DoubleNear(1, 1e-7)));
}

TEST(QuarticRoots, LeadingZerosLowerTheDegree) {
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({1, 2, 3}))),
                ElementsAre(DoubleNear(1, 1e-14), DoubleNear(2, 1e-14), DoubleNear(3, 1e-14)));
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({-3, 4}))), ElementsAre(DoubleNear(-3, 1e-14), DoubleNear(4, 1e-14)));
    EXPECT_THAT(ToVector(FindRealRoots({-6, 3, 0, 0, 0})), ElementsAre(2));
    EXPECT_TRUE(FindRealRoots({5, 0, 0, 0, 0}).empty());
    EXPECT_TRUE(FindRealRoots({0, 0, 0, 0, 0}).empty());
}

TEST(QuarticRoots, OnlyRootsOfTheIntervalAreListed) {
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({-2, -0.5, 0.25, 3}), -1, 1)),
                ElementsAre(DoubleNear(-0.5, 1e-15), DoubleNear(0.25, 1e-15)));
    EXPECT_THAT(ToVector(FindRealRoots(FromRoots({-1, 0.5}), -1, 0.5)), ElementsAre(-1, 0.5));
    EXPECT_TRUE(FindRealRoots(FromRoots({2}), -1, 1).empty());
}

TEST(QuarticRoots, CoefficientsThatAreNotFiniteGiveNoRoots) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(FindRealRoots({nan, nan, nan, nan, nan}, -1, 1).empty());
    EXPECT_TRUE(FindRealRoots({-1, nan, 0, 0, 1}, -1, 1).empty());
    EXPECT_TRUE(FindRealRoots({-1, nan, 0, 0, 1}).empty());
}

TEST(QuarticRoots, FindsRandomRootsOfEveryMultiplicity) {
    constexpr std::uint32_t kSeed = 4410;
    SCOPED_TRACE(kSeed);
    RandomRoots random(kSeed);
    for (int i = 0; i < 4000; ++i) {
        double const a = random.Between(-1, -0.6);
        double const b = random.Between(-0.4, 0);
        double const c = random.Between(0.2, 0.5);
        double const d = random.Between(0.7, 1);
        struct Case {
            Roots roots;
            double tolerance;
        };
        for (auto const& [roots, tolerance] :
             {Case{{a, b, c, d}, 1e-11}, Case{{a, b, c, c}, 1e-6}, Case{{a, a, d, d}, 1e-6}, Case{{a, b, b, b}, 1e-4},
              Case{{c, c, c, c}, 1e-3}}) {
            auto const coefficients = FromRoots(roots, random.Between(0.5, 20));
            RealRoots const found = FindRealRoots(coefficients);
            ExpectEachFound(found, roots, tolerance);
            ExpectAscendingWithSmallResiduals(coefficients, found);
        }
    }
}

TEST(QuarticRoots, FindsRootsThatAreFarApart) {
    constexpr std::uint32_t kSeed = 4411;
    SCOPED_TRACE(kSeed);
    RandomRoots random(kSeed);
    for (int i = 0; i < 2000; ++i) {
        Roots roots(4);
        for (std::size_t k = 0; k < roots.size(); ++k) {
            roots[k] = std::pow(10, 3 * static_cast<double>(k) - 6) * random.Between(1, 5) * (i & (1 << k) ? -1 : 1);
        }
        auto const coefficients = FromRoots(roots);
        RealRoots const found = FindRealRoots(coefficients);
        ASSERT_EQ(found.size(), 4u);
        for (double const root : roots) ExpectEachFound(found, {root}, 1e-10 * std::abs(root));
        ExpectAscendingWithSmallResiduals(coefficients, found);
    }
}

TEST(QuarticRoots, FindsPairsAsCloseAsRoundingAllows) {
    for (double const gap : {1e-2, 1e-4, 1e-6, 1e-8, 1e-10}) {
        auto const coefficients = FromRoots({-0.5, 0.25, 0.25 + gap, 0.75});
        RealRoots const found = FindRealRoots(coefficients);
        ExpectEachFound(found, {-0.5, 0.25, 0.25 + gap, 0.75}, 1e-7);
        ExpectAscendingWithSmallResiduals(coefficients, found);
    }
}

}  // namespace Quorlan::Testing
