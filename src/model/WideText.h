#pragma once

#include <string>
#include <string_view>

namespace Quorlan {

/// A wide text in UTF-8, without loss: what is no Unicode scalar value (a lone surrogate, a value beyond 0x10FFFF) is
/// written in the same scheme, extended to 36 bits.
std::string ToUtf8(std::wstring const& text);

/// The wide text of UTF-8, the inverse of `ToUtf8`. Each byte that belongs to no sequence becomes U+FFFD.
void FromUtf8(std::string_view utf8, std::wstring& out);

}  // namespace Quorlan
