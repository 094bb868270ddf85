#include "model/TextPool.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

using Quorlan::TextPool;
using Quorlan::UniqueTexts;

TEST(TextPool, KeepsEveryTextUnderItsIndex) {
    TextPool pool;
    std::string const zero("a\0b", 3);
    EXPECT_EQ(pool.Add("one"), 0u);
    EXPECT_EQ(pool.Add(""), 1u);
    EXPECT_EQ(pool.Add(zero), 2u);
    EXPECT_EQ(pool.GetCount(), 3u);
    EXPECT_EQ(pool.GetCharacterCount(), 6u);
    EXPECT_EQ(pool.Get(0), "one");
    EXPECT_EQ(pool.Get(1), "");
    EXPECT_EQ(pool.Get(2), zero);
}

TEST(UniqueTexts, AgreeWithAMapOnRandomTexts) {
    std::mt19937 random(3);
    UniqueTexts texts;
    std::map<std::string, std::uint32_t> expected;
    for (int i = 0; i < 5000; ++i) {
        std::string text(random() % 12, 'x');
        for (char& c : text) c = static_cast<char>('a' + random() % 3);
        auto const index = expected.try_emplace(text, static_cast<std::uint32_t>(expected.size())).first->second;
        ASSERT_EQ(texts.Add(text), index) << text;
    }
    EXPECT_EQ(texts.GetAll().GetCount(), expected.size());
}

TEST(UniqueTexts, ATextThatIsAddedApartIsNotFoundAgain) {
    UniqueTexts texts;
    EXPECT_EQ(texts.AddApart("t"), 0u);
    EXPECT_EQ(texts.Add("t"), 1u);
    EXPECT_EQ(texts.AddApart("t"), 2u);
    EXPECT_EQ(texts.Add("t"), 1u);
}

}  // namespace
