#pragma once

#include <Quorlan/Guid.h>
#include <Tools/Export.h>

#include <string>
#include <vector>

/// Conversions between GUIDs, the texts that other systems write them as, and numbers in base64.
///
/// All are free of state and may run on several threads at once.
namespace Quorlan::Tools {

/// The 36-character form in lower case: 01234567-89ab-cdef-0123-456789abcdef.
QUORLAN_TOOLS_API std::string GuidToText(_GUID const& guid);

/// Reads the 36-character form in either case, as `sscanf` with "%8x-%4hx-%4hx-%2hhx%2hhx-%2hhx..." reads any text:
/// what stands behind the form is not looked at, and where the text departs from it the remaining fields of `out` keep
/// what they held. Nothing is reported; check the text beforehand where that matters.
QUORLAN_TOOLS_API void TextToGuid(std::string const& text, _GUID& out);

/// The 22-character compressed form of IFC.
QUORLAN_TOOLS_API std::string GuidToIfcGuid(_GUID const& guid);

/// Reads the compressed form. Of a first group above 255 ("3$") the high bits are dropped.
/// RETURNS false, with `out` unchanged, for a text of another length than 22 or with a character outside the alphabet.
QUORLAN_TOOLS_API bool IfcGuidToGuid(std::string const& text, _GUID& out);

/// Standard base64 (RFC 4648) with padding and without line breaks. The bytes are words of 32 bits: a rest of 1 to 3
/// bytes behind the last word is left out.
QUORLAN_TOOLS_API std::string Base64Encode(std::vector<char> const& words);

/// Lenient decoding: characters outside the alphabet are skipped, the first "=" ends the text, bits that do not fill a
/// byte are dropped. Never fails.
QUORLAN_TOOLS_API std::vector<char> Base64Decode(std::string const& text);

/// Appends the little-endian IEEE 754 numbers in a base64 text to `out`; bytes that do not fill a number are dropped.
/// RETURNS false, with `out` emptied, if the text holds no byte at all.
QUORLAN_TOOLS_API bool DecodeFloats(std::string const& text, std::vector<float>& out);
QUORLAN_TOOLS_API bool DecodeDoubles(std::string const& text, std::vector<double>& out);

}  // namespace Quorlan::Tools
