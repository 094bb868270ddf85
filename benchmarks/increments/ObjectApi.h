#pragma once

#include <cstddef>
#include <vector>

namespace Quorlan::Benchmarks {

/// Unpacks a model buffer into FlatBuffers' generated object types and packs them again. RETURNS the new size.
std::size_t UnpackAndPack(std::vector<char> const& buffer);

}  // namespace Quorlan::Benchmarks
