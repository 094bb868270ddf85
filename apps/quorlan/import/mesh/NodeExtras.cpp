#include "mesh/NodeExtras.h"

#include <Tools/Identifiers.h>
#include <assimp/scene.h>

#include <cstdint>

namespace QuorlanProgram::Import {

namespace {

std::string GetText(aiMetadata const& extras, char const* key) {
    aiString text;
    return extras.Get(key, text) ? text.C_Str() : "";
}

/// Zero for what is no number.
double GetNumber(aiMetadataEntry const& entry) {
    switch (entry.mType) {
        case AI_DOUBLE: return *static_cast<double const*>(entry.mData);
        case AI_FLOAT: return static_cast<double>(*static_cast<float const*>(entry.mData));
        case AI_INT32: return static_cast<double>(*static_cast<std::int32_t const*>(entry.mData));
        case AI_UINT64: return static_cast<double>(*static_cast<std::uint64_t const*>(entry.mData));
        default: return 0;
    }
}

/// The library gives an array as entries that all have the array's name.
Vertex GetVertex(aiMetadata const& extras, char const* key) {
    aiMetadata array;
    if (!extras.Get(key, array) || array.mNumProperties != 3) return {};
    return {GetNumber(array.mValues[0]), GetNumber(array.mValues[1]), GetNumber(array.mValues[2])};
}

}  // namespace

NodeExtras ReadExtras(aiNode const& node) {
    NodeExtras extras;
    if (node.mMetaData == nullptr) return extras;
    _GUID guid{};
    auto const text = GetText(*node.mMetaData, "guid");
    if (Quorlan::Tools::IfcGuidToGuid(text, guid)) extras.guid = text;
    extras.layer = GetText(*node.mMetaData, "layer");
    extras.offset = GetVertex(*node.mMetaData, "offset");
    return extras;
}

}  // namespace QuorlanProgram::Import
