#pragma once

#include <cstdint>
#include <vector>

namespace QuorlanProgram {

/// Pixels row by row from the top, `channels` bytes each: 3 for RGB, 4 for RGBA, alpha not premultiplied.
struct PixelView {
    std::uint32_t width, height, channels;
    std::uint8_t const* pixels;
};

/// The image as a PNG file. THROWS std::runtime_error if libpng refuses it.
std::vector<char> EncodePng(PixelView const& view);

}  // namespace QuorlanProgram
