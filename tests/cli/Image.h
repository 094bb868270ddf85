#pragma once

#include <png.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Quorlan::Testing {

using Pixel = std::array<unsigned char, 4>;

/// A PNG file; without pixels if there is none.
struct Image {
    unsigned width = 0, height = 0;
    std::vector<Pixel> pixels;

    explicit Image(std::string const& path) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return;
        image.format = PNG_FORMAT_RGBA;
        width = image.width;
        height = image.height;
        pixels.resize(std::size_t{width} * height);
        png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr);
    }

    Pixel const& At(unsigned x, unsigned y) const { return pixels[std::size_t{y} * width + x]; }
};

}  // namespace Quorlan::Testing
