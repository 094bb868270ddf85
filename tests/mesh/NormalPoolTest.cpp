#include "mesh/NormalPool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace Quorlan::Tools;

/// The tree's rule, written down plainly.
class PlainPool {
public:
    std::uint16_t FindOrAdd(Vector3f const& n) {
        int* link = &root_;
        for (int axis = 0; *link >= 0; axis = (axis + 1) % 3) {
            Node& node = nodes_[static_cast<std::size_t>(*link)];
            Vector3f const d = n - node.normal;
            if (static_cast<double>(Dot(d, d)) < 1.0000000000000002e-10) return static_cast<std::uint16_t>(*link);
            float const onAxis = axis == 0 ? d.x : axis == 1 ? d.y : d.z;
            link = onAxis >= -4e-5 ? &node.first : &node.second;
        }
        *link = static_cast<int>(nodes_.size());
        nodes_.push_back({n, -1, -1});
        return static_cast<std::uint16_t>(nodes_.size() - 1);
    }

private:
    struct Node {
        Vector3f normal;
        int first;
        int second;
    };
    int root_ = -1;
    std::vector<Node> nodes_ = [] {
        std::vector<Node> nodes;
        nodes.reserve(65536);  // links point into it
        return nodes;
    }();
};

Vector3f RandomUnit(std::mt19937& random) {
    std::uniform_real_distribution<float> coordinate(-1, 1);
    for (;;) {
        Vector3f const v{coordinate(random), coordinate(random), coordinate(random)};
        if (float const length = Length(v); length > 0.1F) return v / length;
    }
}

TEST(NormalPool, IndicesFollowTheOrderOfFirstUse) {
    NormalPool pool;
    EXPECT_EQ(pool.FindOrAdd({0, 0, 1}), 0);
    EXPECT_EQ(pool.FindOrAdd({1, 0, 0}), 1);
    EXPECT_EQ(pool.FindOrAdd({0, 0, 1}), 0);
    EXPECT_EQ(pool.GetSize(), 2u);
    EXPECT_EQ(pool.Get(1).x, 1);
}

TEST(NormalPool, EqualityIsStrictlyBelowTheSquareOfOneHundredThousandth) {
    float const close = 1e-5F;  // its square in single precision is just below the limit
    ASSERT_LT(static_cast<double>(close * close), 1.0000000000000002e-10);
    float far = close;
    while (static_cast<double>(far * far) < 1.0000000000000002e-10) far = std::nextafter(far, 1.0F);
    NormalPool pool;
    pool.FindOrAdd({0, 0, 0});
    EXPECT_EQ(pool.FindOrAdd({std::nextafter(far, 0.0F), 0, 0}), 0);
    EXPECT_EQ(pool.FindOrAdd({far, 0, 0}), 1);
}

TEST(NormalPool, EqualNormalBeyondThePlaneOfANodeIsNotFound) {
    // Seen from the root, the second normal is just inside the descent's tolerance and the third just outside, so that
    // they take different ways although they are closer than 1e-5.
    NormalPool pool;
    EXPECT_EQ(pool.FindOrAdd({0, 0, 0}), 0);
    EXPECT_EQ(pool.FindOrAdd({-3.99e-5F, 0.5F, 0}), 1);
    EXPECT_EQ(pool.FindOrAdd({-4.01e-5F, 0.5F, 0}), 2);
    EXPECT_EQ(pool.FindOrAdd({-4.01e-5F, 0.5F, 0}), 2);
    EXPECT_FALSE(pool.IsCertain(1, {-3.99e-5F, 0.5F, 0}));
}

TEST(NormalPool, AnswersAreThoseOfThePlainTree) {
    // Near as rounding makes them, near as what counts as equal, and near as what a search tolerates.
    float const spreads[] = {2e-6F, 8e-6F, 5e-5F};
    for (unsigned const seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        float const spread = spreads[seed - 1];
        std::uniform_real_distribution<float> jitter(-spread, spread);
        std::vector<Vector3f> centres(200);
        for (auto& centre : centres) centre = RandomUnit(random);
        NormalPool pool;
        PlainPool plain;
        for (int i = 0; i < 20000; ++i) {
            Vector3f n = centres[random() % centres.size()];
            if (i % 4 != 0) n = n + Vector3f{jitter(random), jitter(random), jitter(random)};
            std::uint16_t const expected = plain.FindOrAdd(n);
            for (int near = 0; near < 4 && pool.GetSize() != 0; ++near) {
                auto const guess = static_cast<std::uint16_t>(near == 0 ? expected : random() % pool.GetSize());
                if (guess >= pool.GetSize() || !pool.IsCertain(guess, n)) continue;
                ASSERT_EQ(guess, expected) << i;
            }
            ASSERT_EQ(pool.FindOrAdd(n), expected) << i;
        }
    }
}

TEST(NormalPool, CertainAnswersForRoundedNormalsAreThoseOfTheTree) {
    constexpr unsigned kSeed = 17;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    NormalPool pool;
    int certain = 0;
    for (int i = 0; i < 20000; ++i) {
        Vector3f const n = RandomUnit(random);
        std::uint16_t const index = pool.FindOrAdd(n);
        Vector3f const rounded{std::nextafter(n.x, 2.0F), std::nextafter(n.y, -2.0F), n.z};
        if (pool.IsCertain(index, rounded)) {
            ++certain;
            ASSERT_EQ(pool.FindOrAdd(rounded), index);
        }
    }
    EXPECT_GT(certain, 19000);
}

TEST(NormalPool, WhatIsNotANumberEqualsNothing) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    NormalPool pool;
    EXPECT_EQ(pool.FindOrAdd({nan, 0, 0}), 0);
    EXPECT_EQ(pool.FindOrAdd({nan, 0, 0}), 1);
    EXPECT_FALSE(pool.IsCertain(0, {nan, 0, 0}));
    EXPECT_EQ(pool.FindOrAdd({0, 0, 1}), 2);
    EXPECT_EQ(pool.FindOrAdd({0, 0, 1}), 2);
}

TEST(NormalPool, IsFullAt65535AndStillFinds) {
    NormalPool pool;
    for (std::uint32_t i = 0; i < 65535; ++i) {
        // A grid in an order that keeps the tree balanced enough.
        std::uint32_t const j = i * 40503 % 65536;
        pool.FindOrAdd({static_cast<float>(j % 41), static_cast<float>(j / 41 % 40), static_cast<float>(j / 1640)});
    }
    ASSERT_EQ(pool.GetSize(), 65535u);
    EXPECT_EQ(pool.FindOrAdd({-1, -1, -1}), NormalPool::kNone);
    EXPECT_EQ(pool.FindOrAdd({0, 0, 0}), 0);
}

TEST(NormalPool, ClearForgetsEverything) {
    NormalPool pool;
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(pool.FindOrAdd({0, static_cast<float>(round), 0}), 0);
        EXPECT_EQ(pool.FindOrAdd({0, 5, 0}), 1);
        pool.Clear();
        EXPECT_EQ(pool.GetSize(), 0u);
    }
}

}  // namespace
