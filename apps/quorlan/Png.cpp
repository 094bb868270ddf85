#include "Png.h"

#include <png.h>

#include <stdexcept>

namespace QuorlanProgram {

std::vector<char> EncodePng(PixelView const& view) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = view.width;
    image.height = view.height;
    image.format = view.channels == 4 ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;

    auto size = static_cast<png_alloc_size_t>(PNG_IMAGE_PNG_SIZE_MAX(image));
    std::vector<char> bytes(size);
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, view.pixels, 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace QuorlanProgram
