#pragma once

#include <Quorlan/IModelReader.h>

#include <vector>

namespace QuorlanProgram {

/// A copy of the model's geometry moved by `offset`: the same instances, definitions, materials and layers at the same
/// indices, owned by entities at the same indices that have no name. Textures, properties and histories stay behind.
std::vector<char> MoveModel(Quorlan::IModelReader const& reader, Quorlan::Vertex const& offset);

}  // namespace QuorlanProgram
