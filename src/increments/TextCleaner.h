#pragma once

#include "model/WideText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Quorlan::Tools::Increments {

inline bool IsAscii(std::string_view text) {
    std::size_t position = 0;
    for (; position + 8 <= text.size(); position += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + position, 8);
        if ((word & 0x8080808080808080) != 0) return false;
    }
    return std::all_of(text.begin() + position, text.end(), [](char c) { return (c & 0x80) == 0; });
}

/// A stored text as it is stored again once it has been a wide text: bytes that are no UTF-8 are replaced.
class TextCleaner {
public:
    std::string_view Clean(std::string_view text) {
        if (IsAscii(text)) return text;
        FromUtf8(text, wide_);
        cleaned_ = ToUtf8(wide_);
        return cleaned_;
    }

private:
    std::wstring wide_;
    std::string cleaned_;
};

}  // namespace Quorlan::Tools::Increments
