#include "model/IfcGuid.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Quorlan::CompressGuid;
using Quorlan::ExpandGuid;

constexpr _GUID kGuid{0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};

bool Expands(std::string const& text) {
    _GUID guid{};
    return ExpandGuid(text.data(), text.size(), guid);
}

TEST(IfcGuid, ExpandsWhatItCompressed) {
    std::string const text = CompressGuid(kGuid);
    _GUID guid{};
    ASSERT_TRUE(ExpandGuid(text.data(), text.size(), guid));
    EXPECT_TRUE(guid == kGuid);
}

TEST(IfcGuid, EveryBitOfAGuidHasItsPlaceInTheText) {
    for (int bit = 0; bit < 128; ++bit) {
        _GUID guid{};
        reinterpret_cast<unsigned char*>(&guid)[bit / 8] = static_cast<unsigned char>(1 << bit % 8);
        std::string const text = CompressGuid(guid);
        EXPECT_NE(text, "0000000000000000000000") << bit;
        _GUID back{};
        ASSERT_TRUE(ExpandGuid(text.data(), text.size(), back)) << bit;
        EXPECT_TRUE(back == guid) << bit << " " << text;
    }
}

TEST(IfcGuid, AFailedExpansionLeavesTheOutputAsItWas) {
    _GUID guid = kGuid;
    EXPECT_FALSE(ExpandGuid("000000000000000000000-", 22, guid));
    EXPECT_FALSE(ExpandGuid("00000000000000000000000", 23, guid));
    EXPECT_TRUE(guid == kGuid);
}

TEST(IfcGuid, EachPositionRefusesACharacterOutsideTheAlphabet) {
    for (std::size_t position = 0; position < Quorlan::kIfcGuidLength; ++position) {
        for (char const character : {'-', ' ', '\0', '+', '\xE4'}) {
            std::string text(Quorlan::kIfcGuidLength, '0');
            text[position] = character;
            EXPECT_FALSE(Expands(text)) << position;
        }
    }
}

}  // namespace
