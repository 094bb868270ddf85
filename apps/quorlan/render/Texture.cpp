#include "render/Texture.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace QuorlanProgram {
namespace {

constexpr std::uint32_t kMaxSide = 16384;  ///< [pixels] larger images are left alone

/// Row by row from the top; empty if `bytes` is no PNG image.
std::vector<Rgba> DecodePng(std::vector<char> const& bytes, std::uint32_t& width, std::uint32_t& height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    std::vector<Rgba> pixels;
    if (bytes.empty() || png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) return pixels;
    image.format = PNG_FORMAT_RGBA;
    width = image.width;
    height = image.height;
    if (width <= kMaxSide && height <= kMaxSide) {
        pixels.resize(std::size_t{width} * height);
        if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) pixels.clear();
    }
    png_image_free(&image);
    return pixels;
}

std::int64_t Wrap(std::int64_t i, std::int64_t size) { return (i % size + size) % size; }

}  // namespace

std::vector<Texture> Texture::ReadAll(Quorlan::IGeometryReader const& geometry) {
    std::vector<Texture> textures(geometry.GetTextureCount());
    Quorlan::Texture encoded;
    for (std::uint32_t i = 0; i < textures.size(); ++i) {
        geometry.GetTexture(encoded, i);
        if (encoded.getType() != Quorlan::TextureType::PNG) continue;
        std::uint32_t width = 0, height = 0;
        auto const pixels = DecodePng(encoded.getData(), width, height);
        if (pixels.empty()) continue;
        Level finest{width, height, {}};
        finest.texels.reserve(pixels.size());
        for (auto const& pixel : pixels) finest.texels.push_back(ToLight(pixel));
        auto& levels = textures[i].levels_;
        levels.push_back(std::move(finest));
        while (levels.back().texels.size() > 1) levels.push_back(levels.back().Halve());
    }
    return textures;
}

Light const& Texture::Level::At(std::int64_t x, std::int64_t y) const {
    return texels[static_cast<std::size_t>(Wrap(y, height) * width + Wrap(x, width))];
}

Texture::Level Texture::Level::Halve() const {
    Level half{std::max<std::int64_t>(1, width / 2), std::max<std::int64_t>(1, height / 2), {}};
    for (std::int64_t y = 0; y < half.height; ++y) {
        for (std::int64_t x = 0; x < half.width; ++x) {
            auto const sum = At(2 * x, 2 * y) + At(2 * x + 1, 2 * y) + At(2 * x, 2 * y + 1) + At(2 * x + 1, 2 * y + 1);
            half.texels.push_back(0.25f * sum);
        }
    }
    return half;
}

Light Texture::Level::Sample(float u, float v) const {
    auto const x = (u - std::floor(u)) * static_cast<float>(width) - 0.5f;
    auto const y = (1 - (v - std::floor(v))) * static_cast<float>(height) - 0.5f;
    auto const left = std::floor(x), top = std::floor(y);
    auto const i = static_cast<std::int64_t>(left), j = static_cast<std::int64_t>(top);
    auto const upper = Mix(At(i, j), At(i + 1, j), x - left);
    auto const lower = Mix(At(i, j + 1), At(i + 1, j + 1), x - left);
    return Mix(upper, lower, y - top);
}

Light Texture::Sample(float u, float v, float footprint) const {
    if (!std::isfinite(u) || !std::isfinite(v)) return levels_.front().texels.front();
    auto const texels = footprint * static_cast<float>(std::max(levels_.front().width, levels_.front().height));
    auto const last = static_cast<float>(levels_.size() - 1);
    auto const level = texels > 1 ? std::min(std::log2(texels), last) : 0.0f;
    auto const fine = static_cast<std::size_t>(level);
    auto const coarse = std::min(fine + 1, levels_.size() - 1);
    return Mix(levels_[fine].Sample(u, v), levels_[coarse].Sample(u, v), level - static_cast<float>(fine));
}

}  // namespace QuorlanProgram
