#pragma once

#include <string>

namespace QuorlanProgram::Import {

/// The UTF-8 form of a wide text. Surrogate pairs, which the IFC library leaves apart, are joined; a character that is
/// none becomes the replacement character.
std::string ToUtf8(std::wstring const& text);

/// The wide form of a UTF-8 text; a byte that belongs to no character becomes the replacement character.
std::wstring ToWide(std::string const& text);

/// The UTF-8 form of an optional IFC text (IfcLabel, IfcText, IfcIdentifier); empty for null.
template <typename Text>
std::string ToUtf8(Text const& text) {
    return text ? ToUtf8(text->m_value) : std::string();
}

}  // namespace QuorlanProgram::Import
