#pragma once

#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <string>
#include <vector>

namespace QuorlanProgram {

/// How an entity is named to the user, in UTF-8.
struct EntityLabel {
    std::string guid;  ///< 22 characters; empty for an entity that no GUID identifies
    std::string name;
};

EntityLabel LabelOf(Quorlan::IEntityReader const& entities, std::uint32_t entity);

/// The labels of all entities, by entity index.
std::vector<EntityLabel> LabelsOf(Quorlan::IEntityReader const& entities);

std::string ToUtf8(std::wstring const& text);

/// Invalid bytes become U+FFFD.
std::wstring FromUtf8(std::string const& text);

}  // namespace QuorlanProgram
