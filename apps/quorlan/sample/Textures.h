#pragma once

#include <vector>

/// Small PNG images that tile.
namespace QuorlanSample {

std::vector<char> MakeBrickTexture();  ///< two courses of bricks
std::vector<char> MakeSolarTexture();  ///< one solar cell

}  // namespace QuorlanSample
