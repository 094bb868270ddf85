#include "model/IfcGuid.h"

#include <array>
#include <cstdint>

namespace Quorlan {
namespace {

constexpr char kAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";

constexpr std::uint32_t kNoDigit = 0x80000000;  ///< above every group, so that one test at the end finds it

constexpr std::array<std::uint32_t, 256> MakeDigits() {
    std::array<std::uint32_t, 256> digits{};
    for (std::uint32_t& digit : digits) digit = kNoDigit;
    for (std::uint32_t value = 0; value < 64; ++value) digits[static_cast<unsigned char>(kAlphabet[value])] = value;
    return digits;
}

constexpr std::array<std::uint32_t, 256> kDigits = MakeDigits();

std::uint32_t DigitOf(char character) { return kDigits[static_cast<unsigned char>(character)]; }

void WriteGroup(char* out, std::uint32_t value) {
    out[0] = kAlphabet[value >> 18 & 63];
    out[1] = kAlphabet[value >> 12 & 63];
    out[2] = kAlphabet[value >> 6 & 63];
    out[3] = kAlphabet[value & 63];
}

/// Four digits; `invalid` collects the marks of characters that are none.
std::uint32_t ReadGroup(char const* text, std::uint32_t& invalid) {
    std::uint32_t const a = DigitOf(text[0]);
    std::uint32_t const b = DigitOf(text[1]);
    std::uint32_t const c = DigitOf(text[2]);
    std::uint32_t const d = DigitOf(text[3]);
    invalid |= a | b | c | d;
    return a << 18 | b << 12 | c << 6 | d;
}

std::uint32_t ThreeBytes(unsigned char const* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 16 | static_cast<std::uint32_t>(bytes[1]) << 8 | bytes[2];
}

void SplitBytes(unsigned char* bytes, std::uint32_t value) {
    bytes[0] = static_cast<unsigned char>(value >> 16);
    bytes[1] = static_cast<unsigned char>(value >> 8);
    bytes[2] = static_cast<unsigned char>(value);
}

}  // namespace

std::string CompressGuid(_GUID const& guid) {
    auto const data1 = static_cast<std::uint32_t>(guid.Data1);
    std::uint32_t const data3 = guid.Data3;
    char text[kIfcGuidLength];
    text[0] = kAlphabet[data1 >> 30];
    text[1] = kAlphabet[data1 >> 24 & 63];
    WriteGroup(text + 2, data1 & 0xFFFFFF);
    WriteGroup(text + 6, static_cast<std::uint32_t>(guid.Data2) << 8 | data3 >> 8);
    WriteGroup(text + 10, (data3 & 0xFF) << 16 | static_cast<std::uint32_t>(guid.Data4[0]) << 8 | guid.Data4[1]);
    WriteGroup(text + 14, ThreeBytes(guid.Data4 + 2));
    WriteGroup(text + 18, ThreeBytes(guid.Data4 + 5));
    return std::string(text, kIfcGuidLength);
}

bool ExpandGuid(char const* text, std::size_t length, _GUID& out) {
    if (length != kIfcGuidLength) return false;

    std::uint32_t const high = DigitOf(text[0]);
    std::uint32_t const low = DigitOf(text[1]);
    std::uint32_t invalid = high | low;
    std::uint32_t const group2 = ReadGroup(text + 2, invalid);
    std::uint32_t const group3 = ReadGroup(text + 6, invalid);
    std::uint32_t const group4 = ReadGroup(text + 10, invalid);
    std::uint32_t const group5 = ReadGroup(text + 14, invalid);
    std::uint32_t const group6 = ReadGroup(text + 18, invalid);
    if ((invalid & kNoDigit) != 0) return false;

    out.Data1 = (high << 6 | low) << 24 | group2;
    out.Data2 = static_cast<std::uint16_t>(group3 >> 8);
    out.Data3 = static_cast<std::uint16_t>((group3 & 0xFF) << 8 | group4 >> 16);
    out.Data4[0] = static_cast<unsigned char>(group4 >> 8);
    out.Data4[1] = static_cast<unsigned char>(group4);
    SplitBytes(out.Data4 + 2, group5);
    SplitBytes(out.Data4 + 5, group6);
    return true;
}

}  // namespace Quorlan
