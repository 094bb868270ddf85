#pragma once

#include <string>

#include "shape/Shape.h"

struct aiNode;

namespace QuorlanProgram::Import {

/// What `quorlan export` writes into the extras of a glTF node.
struct NodeExtras {
    std::string guid;   ///< of the entity, in 22 characters; empty where there is none, or a text that is no GUID
    std::string layer;  ///< empty where there is none
    Vertex offset;      ///< [m] of the root: what was taken off all positions, with Z up
};

NodeExtras ReadExtras(aiNode const& node);

}  // namespace QuorlanProgram::Import
