#include <Tools/Identifiers.h>

#include "model/IfcGuid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace Quorlan::Tools {
namespace {

constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kHexDigits[] = "0123456789abcdef";

constexpr std::size_t kGuidTextLength = 36;

/// Marks what is no digit, in a bit above all digits, so that a run of characters is checked with one test.
constexpr std::uint32_t kNoDigit = 0x80000000;

using DigitTable = std::array<std::uint32_t, 256>;

template <std::size_t N>
constexpr DigitTable MakeDigits(char const (&alphabet)[N]) {
    DigitTable digits{};
    for (std::uint32_t& digit : digits) digit = kNoDigit;
    for (std::uint32_t value = 0; value + 1 < N; ++value) digits[static_cast<unsigned char>(alphabet[value])] = value;
    return digits;
}

constexpr DigitTable MakeHexValues() {
    DigitTable digits = MakeDigits(kHexDigits);
    for (std::uint32_t value = 10; value < 16; ++value) digits[static_cast<std::size_t>('A') + value - 10] = value;
    return digits;
}

constexpr DigitTable kBase64Values = MakeDigits(kBase64Alphabet);
constexpr DigitTable kHexValues = MakeHexValues();

std::uint32_t ValueOf(DigitTable const& digits, char character) {
    return digits[static_cast<unsigned char>(character)];
}

// ---- GUIDs ----------------------------------------------------------------------------------------------------------

char* WriteHex(char* out, std::uint32_t value, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) *out++ = kHexDigits[value >> shift & 15];
    return out;
}

/// The value of `digits` hexadecimal digits; `invalid` collects the marks of characters that are none.
std::uint32_t ReadHex(char const* text, int digits, std::uint32_t& invalid) {
    std::uint32_t value = 0;
    for (int i = 0; i < digits; ++i) {
        std::uint32_t const digit = ValueOf(kHexValues, text[i]);
        invalid |= digit;
        value = value << 4 | digit;
    }
    return value;
}

/// RETURNS false, with `out` unchanged, unless the text begins with 36 characters of the regular form.
bool ReadRegularForm(std::string const& text, _GUID& out) {
    if (text.size() < kGuidTextLength) return false;
    char const* const t = text.data();
    if (t[8] != '-' || t[13] != '-' || t[18] != '-' || t[23] != '-') return false;

    _GUID guid;
    std::uint32_t invalid = 0;
    guid.Data1 = ReadHex(t, 8, invalid);
    guid.Data2 = static_cast<std::uint16_t>(ReadHex(t + 9, 4, invalid));
    guid.Data3 = static_cast<std::uint16_t>(ReadHex(t + 14, 4, invalid));
    for (int i = 0; i < 2; ++i) guid.Data4[i] = static_cast<unsigned char>(ReadHex(t + 19 + 2 * i, 2, invalid));
    for (int i = 0; i < 6; ++i) guid.Data4[2 + i] = static_cast<unsigned char>(ReadHex(t + 24 + 2 * i, 2, invalid));
    if ((invalid & kNoDigit) != 0) return false;
    out = guid;
    return true;
}

// ---- base64 ---------------------------------------------------------------------------------------------------------

void EncodeThreeBytes(unsigned char const* in, char* out) {
    out[0] = kBase64Alphabet[in[0] >> 2];
    out[1] = kBase64Alphabet[(in[0] & 3) << 4 | in[1] >> 4];
    out[2] = kBase64Alphabet[(in[1] & 15) << 2 | in[2] >> 6];
    out[3] = kBase64Alphabet[in[2] & 63];
}

/// RETURNS false, with nothing written, unless all four characters are digits.
bool DecodeFourDigits(char const* in, char* out) {
    std::uint32_t const a = ValueOf(kBase64Values, in[0]);
    std::uint32_t const b = ValueOf(kBase64Values, in[1]);
    std::uint32_t const c = ValueOf(kBase64Values, in[2]);
    std::uint32_t const d = ValueOf(kBase64Values, in[3]);
    if (((a | b | c | d) & kNoDigit) != 0) return false;
    std::uint32_t const bytes = a << 18 | b << 12 | c << 6 | d;
    out[0] = static_cast<char>(bytes >> 16);
    out[1] = static_cast<char>(bytes >> 8);
    out[2] = static_cast<char>(bytes);
    return true;
}

template <class Number, class Bits>
bool DecodeNumbers(std::string const& text, std::vector<Number>& out) {
    static_assert(sizeof(Number) == sizeof(Bits));
    std::vector<char> const bytes = Base64Decode(text);
    if (bytes.empty()) {
        out.clear();
        return false;
    }
    out.reserve(out.size() + bytes.size() / sizeof(Number));
    for (std::size_t begin = 0; begin + sizeof(Number) <= bytes.size(); begin += sizeof(Number)) {
        Bits bits = 0;
        for (std::size_t i = 0; i < sizeof(Number); ++i) {
            bits |= static_cast<Bits>(static_cast<unsigned char>(bytes[begin + i])) << (8 * i);
        }
        Number number;
        std::memcpy(&number, &bits, sizeof(number));
        out.push_back(number);
    }
    return true;
}

}  // namespace

std::string GuidToText(_GUID const& guid) {
    char text[kGuidTextLength];
    char* end = WriteHex(text, static_cast<std::uint32_t>(guid.Data1), 8);
    *end++ = '-';
    end = WriteHex(end, guid.Data2, 4);
    *end++ = '-';
    end = WriteHex(end, guid.Data3, 4);
    *end++ = '-';
    for (int i = 0; i < 2; ++i) end = WriteHex(end, guid.Data4[i], 2);
    *end++ = '-';
    for (int i = 2; i < 8; ++i) end = WriteHex(end, guid.Data4[i], 2);
    return std::string(text, kGuidTextLength);
}

void TextToGuid(std::string const& text, _GUID& out) {
    if (ReadRegularForm(text, out)) return;

    // Any other text means what the standard library's scan makes of it: blanks, signs and prefixes included.
    auto data1 = static_cast<unsigned int>(out.Data1);
    auto& d = out.Data4;
    std::sscanf(text.c_str(), "%8x-%4hx-%4hx-%2hhx%2hhx-%2hhx%2hhx%2hhx%2hhx%2hhx%2hhx", &data1, &out.Data2, &out.Data3,
                &d[0], &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7]);
    out.Data1 = data1;
}

std::string GuidToIfcGuid(_GUID const& guid) { return CompressGuid(guid); }

bool IfcGuidToGuid(std::string const& text, _GUID& out) { return ExpandGuid(text.data(), text.size(), out); }

std::string Base64Encode(std::vector<char> const& words) {
    std::size_t const length = words.size() / 4 * 4;
    std::size_t const rest = length % 3;
    std::string text((length + 2) / 3 * 4, '=');
    auto const* in = reinterpret_cast<unsigned char const*>(words.data());
    char* out = text.data();
    for (std::size_t i = 0; i < length / 3; ++i, in += 3, out += 4) EncodeThreeBytes(in, out);
    if (rest == 0) return text;

    // The last one or two bytes, filled up with zeros: two or three characters of them count.
    unsigned char const last[3] = {in[0], rest == 2 ? in[1] : static_cast<unsigned char>(0), 0};
    char digits[4];
    EncodeThreeBytes(last, digits);
    std::memcpy(out, digits, rest + 1);
    return text;
}

std::vector<char> Base64Decode(std::string const& text) {
    std::vector<char> bytes(text.size() / 4 * 3 + 3);
    char* out = bytes.data();
    std::uint32_t accumulator = 0;
    unsigned bitCount = 0;
    for (std::size_t i = 0; i < text.size() && text[i] != '=';) {
        if (bitCount == 0 && text.size() - i >= 4 && DecodeFourDigits(text.data() + i, out)) {
            i += 4;
            out += 3;
            continue;
        }
        std::uint32_t const value = ValueOf(kBase64Values, text[i++]);
        if (value == kNoDigit) continue;
        accumulator = accumulator << 6 | value;
        bitCount += 6;
        if (bitCount < 8) continue;
        bitCount -= 8;
        *out++ = static_cast<char>(accumulator >> bitCount);
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    return bytes;
}

bool DecodeFloats(std::string const& text, std::vector<float>& out) {
    return DecodeNumbers<float, std::uint32_t>(text, out);
}

bool DecodeDoubles(std::string const& text, std::vector<double>& out) {
    return DecodeNumbers<double, std::uint64_t>(text, out);
}

}  // namespace Quorlan::Tools
