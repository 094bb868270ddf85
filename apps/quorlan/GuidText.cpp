#include "GuidText.h"

#include "Command.h"

#include <Tools/Identifiers.h>

#include <cctype>

namespace QuorlanProgram {
namespace {

constexpr std::size_t kIfcLength = 22;
constexpr std::size_t kHexLength = 36;

}  // namespace

std::optional<_GUID> ParseGuid(std::string const& text) {
    _GUID guid{};
    if (text.size() == kIfcLength) {
        if (!Quorlan::Tools::IfcGuidToGuid(text, guid) || Quorlan::Tools::GuidToIfcGuid(guid) != text) return {};
        return guid;
    }
    bool const hasBraces = text.size() == kHexLength + 2 && text.front() == '{' && text.back() == '}';
    auto bare = hasBraces ? text.substr(1, kHexLength) : text;
    if (bare.size() != kHexLength) return {};
    for (auto& c : bare) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    Quorlan::Tools::TextToGuid(bare, guid);
    if (Quorlan::Tools::GuidToText(guid) != bare) return {};
    return guid;
}

_GUID RequireGuid(std::string const& text) {
    auto const guid = ParseGuid(text);
    if (!guid) throw Failure("'" + text + "' is no GUID: neither 22 characters of IFC nor 36 in hexadecimal");
    return *guid;
}

}  // namespace QuorlanProgram
