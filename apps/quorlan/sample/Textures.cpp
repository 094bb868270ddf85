#include "Textures.h"

#include "Png.h"
#include "Random.h"

#include <cstdint>

namespace QuorlanSample {
namespace {

constexpr std::uint32_t kSize = 32;  ///< [pixels] width and height

void Append(std::vector<std::uint8_t>& pixels, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    for (auto const channel : {red, green, blue}) pixels.push_back(static_cast<std::uint8_t>(channel));
}

std::vector<char> Encode(std::vector<std::uint8_t> const& pixels) {
    return QuorlanProgram::EncodePng({kSize, kSize, 3, pixels.data()});
}

}  // namespace

std::vector<char> MakeBrickTexture() {
    Random random(HashOf("bricks"));
    std::vector<std::uint8_t> pixels;
    for (std::uint32_t y = 0; y < kSize; ++y) {
        auto const course = y / 16;
        for (std::uint32_t x = 0; x < kSize; ++x) {
            bool const joint = y % 16 < 2 || (x + 16 * course) % 32 < 2;
            auto const grain = random.Below(24);
            joint ? Append(pixels, 206 + grain, 200 + grain, 190 + grain)
                  : Append(pixels, 156 + grain, 80 + grain, 60 + grain);
        }
    }
    return Encode(pixels);
}

std::vector<char> MakeSolarTexture() {
    std::vector<std::uint8_t> pixels;
    for (std::uint32_t y = 0; y < kSize; ++y) {
        for (std::uint32_t x = 0; x < kSize; ++x) {
            bool const frame = x < 2 || y < 2;
            frame ? Append(pixels, 186, 190, 196) : Append(pixels, 36 + x / 2, 54 + y / 2, 102 + (x + y) / 2);
        }
    }
    return Encode(pixels);
}

}  // namespace QuorlanSample
