#include "increments/ShapeSieve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools::Increments;

constexpr double kTolerance = 1e-5;

ShapeSketch SketchOf(double first, double second, std::uint64_t topology = 1) { return {topology, {first, second}}; }

TEST(ShapeSieve, HandsOutWhatIsSimilarOnceInTheOrderOfComing) {
    ShapeSieve sieve(kTolerance);
    std::vector<GeometryDefinitionIndex_t> waiting;
    ASSERT_FALSE(sieve.FindSimilar(SketchOf(1, 2), waiting));
    sieve.Wait(SketchOf(1, 2), GeometryDefinitionIndex_t{7});
    sieve.Wait(SketchOf(1 + 15 * kTolerance, 2), GeometryDefinitionIndex_t{5});
    EXPECT_FALSE(sieve.FindSimilar(SketchOf(1, 2, 9), waiting));
    EXPECT_FALSE(sieve.FindSimilar(SketchOf(1, 2 + 9 * kTolerance), waiting));
    EXPECT_TRUE(sieve.FindSimilar(SketchOf(1 + 7.5 * kTolerance, 2), waiting));
    EXPECT_EQ(waiting,
              (std::vector<GeometryDefinitionIndex_t>{GeometryDefinitionIndex_t{7}, GeometryDefinitionIndex_t{5}}));
    waiting.clear();
    EXPECT_TRUE(sieve.FindSimilar(SketchOf(1 + 7.5 * kTolerance, 2), waiting)) << "they still resemble it";
    EXPECT_TRUE(waiting.empty()) << "but wait no longer";
}

TEST(ShapeSieve, ReleasesAllInTheOrderOfComing) {
    ShapeSieve sieve(kTolerance);
    sieve.Reserve(1000);
    std::vector<GeometryDefinitionIndex_t> expected;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        expected.push_back(GeometryDefinitionIndex_t{i});
        sieve.Wait(SketchOf(1000.0 - i, 2, i % 3), expected.back());
    }
    std::vector<GeometryDefinitionIndex_t> waiting;
    sieve.ReleaseAll(waiting);
    EXPECT_EQ(waiting, expected);
    waiting.clear();
    sieve.ReleaseAll(waiting);
    EXPECT_TRUE(waiting.empty());
}

/// Whatever could have a common copy with a sketch is noticed, however the sketches crowd, also where lengths are huge.
TEST(ShapeSieve, MissesNothingThatAScanFinds) {
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        std::mt19937 random(seed);
        double const scale = seed == 5 ? 1e12 : 1;
        std::uniform_real_distribution<double> length(0, 400 * kTolerance);
        ShapeSieve sieve(kTolerance);
        std::vector<ShapeSketch> seen;
        std::vector<bool> isHandedOut;
        for (std::uint32_t i = 0; i < 300; ++i) {
            auto const sketch = SketchOf(scale + length(random), scale + length(random), random() % 2);
            std::vector<GeometryDefinitionIndex_t> waiting;
            bool const isSimilar = sieve.FindSimilar(sketch, waiting);
            for (auto const shape : waiting) {
                ASSERT_FALSE(isHandedOut[static_cast<std::uint32_t>(shape)]) << "seed " << seed;
                isHandedOut[static_cast<std::uint32_t>(shape)] = true;
            }
            for (std::uint32_t k = 0; k < i; ++k) {
                bool const isNear = seen[k].topology == sketch.topology &&
                                    std::abs(seen[k].lengths[0] - sketch.lengths[0]) <= 8 * kTolerance &&
                                    std::abs(seen[k].lengths[1] - sketch.lengths[1]) <= 8 * kTolerance;
                if (!isNear) continue;
                ASSERT_TRUE(isSimilar) << "seed " << seed;
                ASSERT_TRUE(isHandedOut[k]) << "seed " << seed;
            }
            seen.push_back(sketch);
            isHandedOut.push_back(isSimilar);
            if (isSimilar) {
                sieve.Remember(sketch);
            } else {
                sieve.Wait(sketch, GeometryDefinitionIndex_t{i});
            }
        }
    }
}

}  // namespace
