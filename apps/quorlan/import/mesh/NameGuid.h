#pragma once

#include <Quorlan/Guid.h>

#include <string_view>

namespace QuorlanProgram::Import {

/// A GUID that follows from a seed and a name alone (version 8 of RFC 9562): two FNV-1a hashes of 64 bits (Fowler, Noll
/// and Vo, 1991) of both texts. For telling parts apart, not for security.
_GUID MakeNameGuid(std::string_view seed, std::string_view name);

}  // namespace QuorlanProgram::Import
