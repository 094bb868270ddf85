#include "step/WideText.h"

#include <cstdint>

namespace QuorlanProgram::Import {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(std::uint32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(std::uint32_t c) { return c >= 0xDC00 && c < 0xE000; }

void Append(std::string& out, std::uint32_t c) {
    auto const tail = [&](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        tail(0);
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

std::string ToUtf8(std::wstring const& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto c = static_cast<std::uint32_t>(text[i]);
        auto const next = i + 1 < text.size() ? static_cast<std::uint32_t>(text[i + 1]) : 0;
        if (IsHighSurrogate(c) && IsLowSurrogate(next)) {
            c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
            ++i;
        }
        auto const isCharacter = c <= 0x10FFFF && !IsHighSurrogate(c) && !IsLowSurrogate(c);
        Append(out, isCharacter ? c : kReplacement);
    }
    return out;
}

std::wstring ToWide(std::string const& text) {
    std::wstring out;
    for (std::size_t i = 0; i < text.size();) {
        auto const lead = static_cast<unsigned char>(text[i++]);
        std::size_t const count = lead < 0x80                   ? 0
                                  : lead >= 0xF0 && lead < 0xF8 ? 3
                                  : lead >= 0xE0                ? 2
                                  : lead >= 0xC0                ? 1
                                                                : 9;
        std::uint32_t c = count == 0 ? lead : count == 1 ? lead & 0x1Fu : count == 2 ? lead & 0x0Fu : lead & 0x07u;
        bool isWhole = count <= 3 && lead < 0xF8 && i + count <= text.size();
        for (std::size_t j = 0; isWhole && j < count; ++j) {
            auto const tail = static_cast<unsigned char>(text[i + j]);
            isWhole = (tail & 0xC0) == 0x80;
            c = c << 6 | (tail & 0x3Fu);
        }
        isWhole = isWhole && c <= 0x10FFFF;
        if (isWhole) i += count;
        out += static_cast<wchar_t>(isWhole ? c : kReplacement);
    }
    return out;
}

}  // namespace QuorlanProgram::Import
