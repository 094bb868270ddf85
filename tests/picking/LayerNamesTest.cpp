#include "picking/LayerNames.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Quorlan::Tools::Picking::DecodeLayerName;
using Quorlan::Tools::Picking::DisabledLayers;

std::wstring Decode(std::string const& bytes) {
    flatbuffers::FlatBufferBuilder builder;
    builder.Finish(builder.CreateString(bytes));
    return DecodeLayerName(*flatbuffers::GetRoot<flatbuffers::String>(builder.GetBufferPointer()));
}

TEST(LayerNames, OneToThreeBytesMakeACharacter) {
    EXPECT_EQ(Decode(""), L"");
    EXPECT_EQ(Decode("A-WALL"), L"A-WALL");
    EXPECT_EQ(Decode("T\xC3\xBCr"), L"T\u00FCr");
    EXPECT_EQ(Decode("\xE2\x82\xAC 5"), L"\u20AC 5");
}

TEST(LayerNames, ContinuationBytesAreTakenForSuch) {
    EXPECT_EQ(Decode("\xC3"
                     "A"),
              std::wstring(1, wchar_t(3 << 6 | 'A' % 64)));
    EXPECT_EQ(Decode("\xE1zz"), std::wstring(1, wchar_t(1 << 12 | 'z' % 64 << 6 | 'z' % 64)));
}

TEST(LayerNames, NameEndsAtAZeroByte) { EXPECT_EQ(Decode(std::string("ab\0cd", 5)), L"ab"); }

TEST(LayerNames, TwoByteLeadAtTheEndTakesTheTerminatingZero) { EXPECT_EQ(Decode("a\xC3"), L"a\u00C0"); }

TEST(LayerNames, ThreeByteLeadThatLacksAByteEndsTheName) {
    EXPECT_EQ(Decode("ab\xE2"), L"ab");
    EXPECT_EQ(Decode("ab\xE2\x82"), L"ab");
}

TEST(LayerNames, AnyOtherLeadByteMakesTheNameEmpty) {
    EXPECT_EQ(Decode("ab\xF0\x9F\x98\x80"), L"");
    EXPECT_EQ(Decode("ab\x80"), L"");
    EXPECT_EQ(Decode("ab\xFF"
                     "cd"),
              L"");
}

}  // namespace
