#pragma once

#include "render/Colors.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QuorlanProgram {

struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<Rgba> pixels;              ///< row by row from the top, alpha not premultiplied
    std::vector<std::uint32_t> instances;  ///< seen at each pixel's centre; kInvalidIndex for none
    std::uint64_t rayCount = 0;
    double seconds = 0;  ///< spent casting rays
};

}  // namespace QuorlanProgram
