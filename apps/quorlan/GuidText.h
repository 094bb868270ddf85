#pragma once

#include <Quorlan/Guid.h>

#include <optional>
#include <string>

namespace QuorlanProgram {

/// A GUID in either of its forms: 22 characters as IFC writes it, or 36 in hexadecimal, with or without braces. Nothing
/// if the text is neither, or if it would not read back as the same text.
std::optional<_GUID> ParseGuid(std::string const& text);

/// The same for a GUID that the user gave as `text`. THROWS Failure if it is none.
_GUID RequireGuid(std::string const& text);

/// For maps: any strict order.
struct GuidLess {
    bool operator()(_GUID const& a, _GUID const& b) const { return std::memcmp(&a, &b, sizeof(_GUID)) < 0; }
};

}  // namespace QuorlanProgram
