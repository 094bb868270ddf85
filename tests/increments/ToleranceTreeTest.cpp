#include "increments/ToleranceTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Tree = Quorlan::Tools::ToleranceTree<3>;
using Key = Tree::Key;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<std::uint32_t> FindByScan(std::vector<Key> const& keys, Key const& key, double tolerance) {
    std::vector<std::uint32_t> found;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        bool matches = true;
        for (std::size_t value = 0; value < key.size(); ++value) {
            matches = matches && std::abs(keys[i][value] - key[value]) <= tolerance;
        }
        if (matches) found.push_back(static_cast<std::uint32_t>(i));
    }
    return found;
}

TEST(ToleranceTree, AnEmptyTreeFindsNothing) { EXPECT_THAT(Tree({}).Find({0, 0, 0}, 1), IsEmpty()); }

TEST(ToleranceTree, TheToleranceIsInclusiveInEveryValue) {
    Tree const tree({{1, 2, 3}});
    for (std::size_t value = 0; value < 3; ++value) {
        for (double const sign : {-1.0, 1.0}) {
            Key key{1, 2, 3};
            key[value] += sign * 0.5;
            EXPECT_THAT(tree.Find(key, 0.5), ElementsAre(0u));
            EXPECT_THAT(tree.Find(key, 0.4999), IsEmpty());
        }
    }
}

TEST(ToleranceTree, AToleranceOfZeroFindsEqualKeys) {
    Tree const tree({{1, 2, 3}, {1, 2, 4}, {1, 2, 3}});
    EXPECT_THAT(tree.Find({1, 2, 3}, 0), ElementsAre(0u, 2u));
}

TEST(ToleranceTree, AToleranceThatIsNotANumberOrNegativeFindsNothing) {
    Tree const tree({{1, 2, 3}});
    EXPECT_THAT(tree.Find({1, 2, 3}, kNaN), IsEmpty());
    EXPECT_THAT(tree.Find({1, 2, 3}, -1), IsEmpty());
}

TEST(ToleranceTree, ValuesThatAreNotNumbersMatchNothingAndDoNotDisturbTheOthers) {
    std::vector<Key> keys;
    for (int i = 0; i < 100; ++i) keys.push_back({i % 3 == 0 ? kNaN : i, 0, 0});
    Tree const tree(keys);
    EXPECT_THAT(tree.Find({50, 0, 0}, 2), ElementsAre(49u, 50u, 52u));
    EXPECT_THAT(tree.Find({kNaN, 0, 0}, 2), IsEmpty());
    EXPECT_THAT(tree.Find({kNaN, 0, 0}, kInfinity), IsEmpty());
}

TEST(ToleranceTree, AnInfiniteToleranceFindsAllFiniteKeysInAscendingOrder) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> coordinate(-1e9, 1e9);
    std::vector<Key> keys;
    for (int i = 0; i < 100; ++i) keys.push_back({coordinate(random), coordinate(random), coordinate(random)});
    auto const found = Tree(keys).Find({0, 0, 0}, kInfinity);
    ASSERT_EQ(found.size(), keys.size());
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
}

TEST(ToleranceTree, FindsWhatAScanFinds) {
    unsigned const seed = 321;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    // Few distinct coordinates make many ties and exact distances of one tolerance.
    for (int const coordinates : {1, 3, 20, 1000}) {
        for (std::size_t const count : {1u, 8u, 9u, 50u, 500u}) {
            auto const coordinate = [&] {
                return random() % 50 == 0 ? kInfinity : 0.25 * static_cast<int>(random() % coordinates);
            };
            std::vector<Key> keys;
            for (std::size_t i = 0; i < count; ++i) keys.push_back({coordinate(), coordinate(), coordinate()});
            Tree const tree(keys);
            for (int round = 0; round < 50; ++round) {
                Key const key{coordinate(), coordinate(), coordinate()};
                double const tolerance = 0.25 * static_cast<int>(random() % 5);
                ASSERT_EQ(tree.Find(key, tolerance), FindByScan(keys, key, tolerance)) << count << " " << coordinates;
            }
        }
    }
}

}  // namespace
