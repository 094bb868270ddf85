#include "model/WideText.h"

#include <cstddef>
#include <cstdint>

namespace Quorlan {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

/// The first byte of a sequence of `length` bytes begins with `length` one bits.
constexpr unsigned char GetLeadMark(std::size_t length) { return static_cast<unsigned char>(0xFF00u >> length); }

std::size_t GetSequenceLength(std::uint32_t value) {
    std::size_t length = 2;
    for (std::uint64_t limit = 0x800; length < 7 && value >= limit; limit <<= 5) ++length;
    return length;
}

void AppendUtf8(std::uint32_t value, std::string& out) {
    if (value < 0x80) {
        out.push_back(static_cast<char>(value));
        return;
    }
    std::size_t const length = GetSequenceLength(value);
    char bytes[7];
    std::uint64_t rest = value;
    for (std::size_t i = length - 1; i > 0; --i, rest >>= 6) bytes[i] = static_cast<char>(0x80 | (rest & 0x3F));
    bytes[0] = static_cast<char>(GetLeadMark(length) | rest);
    out.append(bytes, length);
}

void AppendWide(std::uint32_t value, std::wstring& out) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (value >= 0x10000 && value <= 0x10FFFF) {
            out.push_back(static_cast<wchar_t>(0xD800 + ((value - 0x10000) >> 10)));
            out.push_back(static_cast<wchar_t>(0xDC00 + ((value - 0x10000) & 0x3FF)));
            return;
        }
    }
    out.push_back(static_cast<wchar_t>(value));
}

/// Reads one sequence at `position` and moves behind it. RETURNS false if there is none.
bool ReadSequence(std::string_view utf8, std::size_t& position, std::uint32_t& value) {
    auto const lead = static_cast<unsigned char>(utf8[position]);
    std::size_t length = 0;
    while (length < 8 && (lead & (0x80u >> length)) != 0) ++length;
    if (length < 2 || length > 7 || position + length > utf8.size()) return false;

    std::uint64_t bits = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        auto const byte = static_cast<unsigned char>(utf8[position + i]);
        if ((byte & 0xC0) != 0x80) return false;
        bits = (bits << 6) | (byte & 0x3F);
    }
    if (bits > 0xFFFFFFFF) return false;
    value = static_cast<std::uint32_t>(bits);
    position += length;
    return true;
}

}  // namespace

std::string ToUtf8(std::wstring const& text) {
    std::string utf8;
    utf8.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto value = static_cast<std::uint32_t>(text[i]);
        if constexpr (sizeof(wchar_t) == 2) {
            bool const isPair = (value & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
            if (isPair) value = 0x10000 + ((value & 0x3FF) << 10) + (static_cast<std::uint32_t>(text[++i]) & 0x3FF);
        }
        AppendUtf8(value, utf8);
    }
    return utf8;
}

void FromUtf8(std::string_view utf8, std::wstring& out) {
    out.clear();
    out.reserve(utf8.size());
    for (std::size_t position = 0; position < utf8.size();) {
        auto const byte = static_cast<unsigned char>(utf8[position]);
        std::uint32_t value = byte;
        if (byte < 0x80) {
            ++position;
            out.push_back(static_cast<wchar_t>(byte));
        } else if (ReadSequence(utf8, position, value)) {
            AppendWide(value, out);
        } else {
            ++position;
            out.push_back(kReplacement);
        }
    }
}

}  // namespace Quorlan
