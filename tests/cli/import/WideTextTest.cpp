#include "step/WideText.h"

#include <gtest/gtest.h>

namespace QuorlanProgram::Import {
namespace {

TEST(WideText, WritesOneToFourBytes) {
    EXPECT_EQ(ToUtf8(std::wstring(L"a\u00e4\u20ac\U0001F3E0")), "a\u00e4\u20ac\U0001F3E0");
}

TEST(WideText, JoinsSurrogatePairsAndReplacesSingleOnes) {
    EXPECT_EQ(ToUtf8(std::wstring{wchar_t(0xD83C), wchar_t(0xDFE0)}), "\U0001F3E0");
    EXPECT_EQ(ToUtf8(std::wstring{wchar_t(0xD83C), L'x'}), "\uFFFDx");
    EXPECT_EQ(ToUtf8(std::wstring{wchar_t(0xDFE0)}), "\uFFFD");
}

}  // namespace
}  // namespace QuorlanProgram::Import
