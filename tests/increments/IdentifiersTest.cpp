#include <Tools/Identifiers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/TestData.h"

namespace {

using testing::ElementsAre;
using namespace Quorlan::Tools;

constexpr _GUID kGuid{0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};
constexpr char kGuidText[] = "01234567-89ab-cdef-fedc-ba9876543210";

_GUID RandomGuid(std::mt19937& random) {
    _GUID guid;
    for (std::size_t i = 0; i < sizeof(guid); ++i) {
        auto const byte = static_cast<unsigned char>(random());
        std::memcpy(reinterpret_cast<char*>(&guid) + i, &byte, 1);
    }
    return guid;
}

std::vector<char> Bytes(std::initializer_list<int> values) {
    std::vector<char> bytes;
    for (int const value : values) bytes.push_back(static_cast<char>(value));
    return bytes;
}

// ---- the 36-character form ----------------------------------------------------------------------------------------

TEST(Identifiers, GuidTextIsLowerCaseWithoutBraces) {
    EXPECT_EQ(GuidToText(kGuid), kGuidText);
    EXPECT_EQ(GuidToText(_GUID{}), "00000000-0000-0000-0000-000000000000");
}

TEST(Identifiers, TextToGuidReadsEitherCase) {
    for (char const* text :
         {kGuidText, "01234567-89AB-CDEF-FEDC-BA9876543210", "01234567-89aB-CdEF-fedc-bA9876543210"}) {
        _GUID guid{};
        TextToGuid(text, guid);
        EXPECT_TRUE(guid == kGuid) << text;
    }
}

/// The scan that defines the result for every text.
_GUID Scan(std::string const& text, _GUID const& before) {
    _GUID guid = before;
    unsigned int data1 = guid.Data1;
    std::sscanf(text.c_str(), "%8x-%4hx-%4hx-%2hhx%2hhx-%2hhx%2hhx%2hhx%2hhx%2hhx%2hhx", &data1, &guid.Data2,
                &guid.Data3, &guid.Data4[0], &guid.Data4[1], &guid.Data4[2], &guid.Data4[3], &guid.Data4[4],
                &guid.Data4[5], &guid.Data4[6], &guid.Data4[7]);
    guid.Data1 = data1;
    return guid;
}

TEST(Identifiers, TextToGuidDoesWhatTheScanDoesWithOddTexts) {
    _GUID const before{0xAAAAAAAA, 0xBBBB, 0xCCCC, {1, 2, 3, 4, 5, 6, 7, 8}};
    for (std::string const text : {"",
                                   "-",
                                   "x",
                                   "0",
                                   "01234567",
                                   "01234567-",
                                   "01234567-89ab",
                                   "0x123456-89ab-cdef-fedc-ba9876543210",
                                   "  234567-89ab-cdef-fedc-ba9876543210",
                                   "1-2-3-4-5-6-7-8-9-0-a-b-c-d-e-f-0-1-2",
                                   "-1234567-89ab-cdef-fedc-ba",
                                   "+1234567-89ab-cdef-fedc-ba9876543210",
                                   "{01234567-89ab-cdef-fedc-ba9876543210}",
                                   "01234567-89ab-cdef-fedc-ba9876543210 and more",
                                   "01234567-89ab-cdef-fedc-ba987654321g",
                                   "01234567-89ab-cdef-fedcba9876543210----",
                                   "0123456789abcdeffedcba9876543210",
                                   "g1234567-89ab-cdef-fedc-ba98",
                                   "01234567_89ab-cdef-fedc-ba9876543210",
                                   "01234567-89ab-cdef-fedc-ba98765432",
                                   "0x-0x-0x-0x0x-0x0x0x0x0x0x"}) {
        _GUID guid = before;
        TextToGuid(text, guid);
        EXPECT_EQ(GuidToText(guid), GuidToText(Scan(text, before))) << "\"" << text << "\"";
    }
}

TEST(Identifiers, TextToGuidKeepsTheFieldsItDoesNotReach) {
    _GUID guid{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    TextToGuid("000000ff-00ee", guid);
    EXPECT_EQ(GuidToText(guid), "000000ff-00ee-0003-0405-060708090a0b");
}

TEST(Identifiers, TextToGuidDoesWhatTheScanDoesWithChangedRegularTexts) {
    unsigned const seed = 77;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::string const characters = "0123456789abcdefABCDEFxX-+ {}g";
    for (int round = 0; round < 5000; ++round) {
        std::string text = GuidToText(RandomGuid(random));
        for (auto changes = random() % 4; changes > 0; --changes) {
            text[random() % text.size()] = characters[random() % characters.size()];
        }
        if (random() % 8 == 0) text.resize(random() % 40, '0');
        _GUID const before = RandomGuid(random);
        _GUID guid = before;
        TextToGuid(text, guid);
        ASSERT_EQ(GuidToText(guid), GuidToText(Scan(text, before))) << "\"" << text << "\"";
    }
}

// ---- the compressed form ------------------------------------------------------------------------------------------

TEST(Identifiers, TheZeroGuidCompressesToZeros) { EXPECT_EQ(GuidToIfcGuid(_GUID{}), "0000000000000000000000"); }

TEST(Identifiers, TheHighestFirstFieldCompressesToA3AndDollars) {
    EXPECT_EQ(GuidToIfcGuid(_GUID{0xFFFFFFFF, 0, 0, {}}), "3$$$$$0000000000000000");
    EXPECT_EQ(GuidToIfcGuid(_GUID{0xFFFFFFFF, 0xFFFF, 0xFFFF, {255, 255, 255, 255, 255, 255, 255, 255}}),
              "3$$$$$$$$$$$$$$$$$$$$$");
}

/// The compressed form by its definition: groups of 8 and 24 bits, written from the last digit backwards.
std::string CompressByDefinition(_GUID const& g) {
    std::string const alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
    std::uint32_t const values[6] = {g.Data1 >> 24,
                                     g.Data1 & 0xFFFFFF,
                                     g.Data2 * 256u + g.Data3 / 256u,
                                     ((g.Data3 & 0xFFu) * 256 + g.Data4[0]) * 256 + g.Data4[1],
                                     (g.Data4[2] * 256u + g.Data4[3]) * 256 + g.Data4[4],
                                     (g.Data4[5] * 256u + g.Data4[6]) * 256 + g.Data4[7]};
    std::string text;
    for (int group = 0; group < 6; ++group) {
        std::string digits(group == 0 ? 2 : 4, '0');
        std::uint32_t value = values[group];
        for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, value >>= 6) *digit = alphabet[value & 63];
        text += digits;
    }
    return text;
}

TEST(Identifiers, EveryGuidComesBackFromBothTextForms) {
    unsigned const seed = 4711;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 10000; ++round) {
        _GUID const guid = RandomGuid(random);
        std::string const compressed = GuidToIfcGuid(guid);
        ASSERT_EQ(compressed, CompressByDefinition(guid));
        _GUID fromCompressed{};
        ASSERT_TRUE(IfcGuidToGuid(compressed, fromCompressed));
        ASSERT_TRUE(fromCompressed == guid) << compressed;
        _GUID fromText{};
        TextToGuid(GuidToText(guid), fromText);
        ASSERT_TRUE(fromText == guid) << GuidToText(guid);
    }
}

TEST(Identifiers, ACompressedTextOfAnotherLengthFails) {
    _GUID guid = kGuid;
    for (std::size_t length = 0; length < 40; ++length) {
        EXPECT_EQ(IfcGuidToGuid(std::string(length, '0'), guid), length == 22) << length;
    }
}

TEST(Identifiers, ACompressedTextWithACharacterOutsideTheAlphabetFails) {
    _GUID guid = kGuid;
    EXPECT_FALSE(IfcGuidToGuid("00000000000-0000000000", guid));
    EXPECT_FALSE(IfcGuidToGuid("000000000000000000000 ", guid));
    EXPECT_TRUE(guid == kGuid);
}

TEST(Identifiers, HighBitsOfTheFirstGroupAreDroppedNotRefused) {
    _GUID guid{};
    ASSERT_TRUE(IfcGuidToGuid("$$00000000000000000000", guid));
    EXPECT_EQ(GuidToText(guid), "ff000000-0000-0000-0000-000000000000");
}

// ---- real files ---------------------------------------------------------------------------------------------------

bool IsGuidText(std::string const& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isHyphen = i == 8 || i == 13 || i == 18 || i == 23;
        if (isHyphen ? text[i] != '-' : std::isxdigit(static_cast<unsigned char>(text[i])) == 0) return false;
    }
    return text.size() == 36;
}

/// The hexadecimal GUID in quotes, after "ID" or not, that some programs add to an entity as its tag; empty if none.
std::string FindTag(std::string const& line) {
    for (auto end = line.find('\''); end != std::string::npos; end = line.find('\'', end + 1)) {
        bool const isTag = end >= 39 && (line[end - 37] == '\'' || line.compare(end - 39, 3, "'ID") == 0);
        if (!isTag) continue;
        std::string const text = line.substr(end - 36, 36);
        if (IsGuidText(text)) return text;
    }
    return std::string();
}

TEST(Identifiers, GuidsOfRealFilesConvertBothWaysAndAgreeWithTheirTags) {
    auto const folder = TestSupport::FindTestData();
    if (!folder) GTEST_SKIP() << TestSupport::kNoTestData;
    std::size_t guidCount = 0;
    std::size_t tagCount = 0;
    for (char const* name : {"AC20-FZK-Haus.ifc", "Schependomlaan_MULTICOM-Prefab.ifc",
                             "Schependomlaan_MULTICOM-trappen+bordessen.rev2.ifc"}) {
        std::istringstream file(TestSupport::ReadText(*folder / name));
        for (std::string line; std::getline(file, line);) {
            auto const begin = line.find("('");
            if (begin == std::string::npos || line.find('\'', begin + 2) != begin + 24) continue;
            std::string const compressed = line.substr(begin + 2, 22);
            _GUID guid{};
            // Names may have 22 characters too; the first digit of a GUID holds two bits.
            if (compressed[0] < '0' || compressed[0] > '3' || !IfcGuidToGuid(compressed, guid)) continue;
            ++guidCount;
            ASSERT_EQ(GuidToIfcGuid(guid), compressed) << name;
            std::string tag = FindTag(line);
            if (tag.empty()) continue;
            ++tagCount;
            for (char& c : tag) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            ASSERT_EQ(GuidToText(guid), tag) << name;
            _GUID fromTag{};
            TextToGuid(tag, fromTag);
            ASSERT_EQ(GuidToIfcGuid(fromTag), compressed) << name;
        }
    }
    if (guidCount == 0) GTEST_SKIP() << "none of the expected IFC files in " << *folder;
    EXPECT_GT(tagCount, 100u) << "of " << guidCount << " GUIDs";
}

// ---- base64 -------------------------------------------------------------------------------------------------------

TEST(Identifiers, Base64OfFourBytes) {
    EXPECT_EQ(Base64Encode(Bytes({0, 1, 2, 3})), "AAECAw==");
    EXPECT_EQ(Base64Decode("AAECAw=="), Bytes({0, 1, 2, 3}));
    EXPECT_EQ(Base64Decode("AA EC*Aw"), Bytes({0, 1, 2, 3}));
}

TEST(Identifiers, Base64EndsWithNoOneOrTwoPaddingCharacters) {
    EXPECT_EQ(Base64Encode(Bytes({0xFF, 0xFF, 0xFF, 0xFF})), "/////w==");
    EXPECT_EQ(Base64Encode(Bytes({0xFB, 0xEF, 0xBE, 0xFB, 0xEF, 0xBE, 0xFF, 0x00})), "++++++++/wA=");
    EXPECT_EQ(Base64Encode(Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})), "AQIDBAUGBwgJCgsM");
}

TEST(Identifiers, Base64LeavesOutABrokenWordAtTheEnd) {
    EXPECT_EQ(Base64Encode({}), "");
    EXPECT_EQ(Base64Encode(Bytes({1, 2, 3})), "");
    EXPECT_EQ(Base64Encode(Bytes({0, 1, 2, 3, 4, 5, 6})), "AAECAw==");
}

TEST(Identifiers, Base64OfEveryLengthComesBackAsWholeWords) {
    std::mt19937 random(3);
    std::vector<char> bytes;
    for (std::size_t length = 0; length < 100; ++length) {
        std::string const text = Base64Encode(bytes);
        EXPECT_EQ(text.size(), (length / 4 * 4 + 2) / 3 * 4) << length;
        auto const words = std::vector<char>(bytes.begin(), bytes.begin() + static_cast<long>(length / 4 * 4));
        EXPECT_EQ(Base64Decode(text), words) << length;
        bytes.push_back(static_cast<char>(random()));
    }
}

TEST(Identifiers, Base64DecodingStopsAtTheFirstPaddingCharacter) {
    EXPECT_EQ(Base64Decode("AAEC=AwQF"), Bytes({0, 1, 2}));
    EXPECT_EQ(Base64Decode("=AAEC"), Bytes({}));
    EXPECT_EQ(Base64Decode("AA=EC"), Bytes({0}));
}

TEST(Identifiers, Base64DecodingDropsLeftoverBits) {
    EXPECT_EQ(Base64Decode("/"), Bytes({}));
    EXPECT_EQ(Base64Decode("//"), Bytes({0xFF}));
    EXPECT_EQ(Base64Decode("///"), Bytes({0xFF, 0xFF}));
    EXPECT_EQ(Base64Decode("/////"), Bytes({0xFF, 0xFF, 0xFF}));
}

std::vector<char> DecodeByDefinition(std::string const& text) {
    std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<char> bytes;
    std::uint32_t accumulator = 0;
    unsigned bitCount = 0;
    for (char const c : text) {
        if (c == '=') break;
        auto const index = alphabet.find(c);
        if (index == std::string::npos) continue;
        accumulator = accumulator * 64 | static_cast<std::uint32_t>(index);
        bitCount += 6;
        if (bitCount < 8) continue;
        bitCount -= 8;
        bytes.push_back(static_cast<char>(accumulator >> bitCount & 255));
    }
    return bytes;
}

TEST(Identifiers, Base64DecodingOfAnyTextFollowsItsDefinition) {
    unsigned const seed = 99;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (auto length = random() % 40; length > 0; --length) {
            bool const isAny = random() % 10 == 0;
            text += isAny ? static_cast<char>(random()) : "ABYZabyz0189+/"[random() % 14];
        }
        ASSERT_EQ(Base64Decode(text), DecodeByDefinition(text)) << text;
    }
}

// ---- numbers ------------------------------------------------------------------------------------------------------

template <class Number>
std::string Encode(std::vector<Number> const& numbers) {
    std::vector<char> bytes(numbers.size() * sizeof(Number));
    if (!bytes.empty()) std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return Base64Encode(bytes);
}

TEST(Identifiers, NumbersAreAppendedToWhatTheOutputHolds) {
    std::vector<float> floats{1};
    EXPECT_TRUE(DecodeFloats(Encode<float>({2.5f, -3}), floats));
    EXPECT_THAT(floats, ElementsAre(1, 2.5f, -3));
    std::vector<double> doubles{1};
    EXPECT_TRUE(DecodeDoubles(Encode<double>({0.1, 1e300}), doubles));
    EXPECT_THAT(doubles, ElementsAre(1, 0.1, 1e300));
}

TEST(Identifiers, NumbersAreReadLittleEndian) {
    std::vector<float> floats;
    ASSERT_TRUE(DecodeFloats(Base64Encode(Bytes({0x00, 0x00, 0x80, 0x3F})), floats));
    EXPECT_THAT(floats, ElementsAre(1.0f));
    std::vector<double> doubles;
    ASSERT_TRUE(DecodeDoubles(Base64Encode(Bytes({0, 0, 0, 0, 0, 0, 0x00, 0x40})), doubles));
    EXPECT_THAT(doubles, ElementsAre(2.0));
}

TEST(Identifiers, ATextWithoutBytesEmptiesTheOutputAndFails) {
    for (char const* text : {"", "=", "*", "A", "=AAAA"}) {
        std::vector<float> floats{1, 2};
        EXPECT_FALSE(DecodeFloats(text, floats)) << text;
        EXPECT_TRUE(floats.empty()) << text;
        std::vector<double> doubles{1, 2};
        EXPECT_FALSE(DecodeDoubles(text, doubles)) << text;
        EXPECT_TRUE(doubles.empty()) << text;
    }
}

TEST(Identifiers, BytesThatDoNotFillANumberAreDroppedWithSuccess) {
    std::vector<float> floats{7};
    EXPECT_TRUE(DecodeFloats("AAAA", floats));  // three bytes
    EXPECT_THAT(floats, ElementsAre(7));
    std::vector<double> doubles;
    EXPECT_TRUE(DecodeDoubles(Encode<float>({1, 2, 3}), doubles));
    EXPECT_EQ(doubles.size(), 1u);
}

}  // namespace
