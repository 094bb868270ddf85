#pragma once

#include <Quorlan/Guid.h>

#include <cstddef>
#include <string>

/// The compressed GUID of IFC: 22 digits of base 64, one group of 2 for the first byte and five groups of 4 for three
/// bytes each, most significant digit first (buildingSMART, "IFC GUID").
namespace Quorlan {

constexpr std::size_t kIfcGuidLength = 22;

/// The 22-character form. Every GUID has one: its groups are 8 and 24 bits wide and always fit.
std::string CompressGuid(_GUID const& guid);

/// Reads the 22-character form. Bits of the first group beyond 8 are dropped.
/// RETURNS false, with `out` unchanged, for another length and for a character outside the alphabet.
bool ExpandGuid(char const* text, std::size_t length, _GUID& out);

}  // namespace Quorlan
