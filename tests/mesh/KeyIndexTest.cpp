#include "mesh/KeyIndex.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unordered_map>

namespace {

using Quorlan::Tools::KeyIndex;

TEST(KeyIndex, AnEmptyIndexFindsNothing) {
    EXPECT_EQ(KeyIndex().Find(0), KeyIndex::kNone);
    EXPECT_EQ(KeyIndex().Find(KeyIndex::kNone), KeyIndex::kNone);
}

TEST(KeyIndex, EveryKeyIsAllowed) {
    KeyIndex index;
    index.Insert(0, 5);
    index.Insert(KeyIndex::kNone, 0);
    EXPECT_EQ(index.Find(0), 5u);
    EXPECT_EQ(index.Find(KeyIndex::kNone), 0u);
    EXPECT_EQ(index.Find(1), KeyIndex::kNone);
}

TEST(KeyIndex, FindsWhatAStandardMapFinds) {
    unsigned const seed = 6;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    // Few high bits, few low bits, and neighbours: keys that a poor hash would pile up.
    for (int const shift : {0, 8, 48}) {
        KeyIndex index;
        std::unordered_map<std::uint64_t, std::uint64_t> expected;
        for (std::uint64_t value = 0; value < 3000; ++value) {
            std::uint64_t const key = (random() & 0x3FFF) << shift;
            auto const known = expected.find(key);
            ASSERT_EQ(index.Find(key), known == expected.end() ? KeyIndex::kNone : known->second);
            if (known != expected.end()) continue;
            index.Insert(key, value);
            expected.emplace(key, value);
        }
        for (auto const& [key, value] : expected) ASSERT_EQ(index.Find(key), value);
    }
}

}  // namespace
