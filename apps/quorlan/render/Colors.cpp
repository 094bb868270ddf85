#include "render/Colors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace QuorlanProgram {
namespace {

constexpr double kGoldenRatio = 0.6180339887498949;  ///< steps of it never bunch up on a circle

float Linear(std::uint8_t value) {
    auto const v = static_cast<float>(value) / 255;
    return v <= 0.04045f ? v / 12.92f : std::pow((v + 0.055f) / 1.055f, 2.4f);
}

std::uint8_t Encoded(float value) {
    auto const v = std::clamp(value, 0.0f, 1.0f);
    auto const encoded = v <= 0.0031308f ? 12.92f * v : 1.055f * std::pow(v, 1 / 2.4f) - 0.055f;
    return static_cast<std::uint8_t>(std::lround(255 * encoded));
}

/// A colour of the circle of hues, all three 0 to 1.
Rgba FromHue(double hue, double saturation, double value) {
    auto const channel = [&](double shift) {
        auto const k = std::fmod(shift + 6 * hue, 6.0);
        auto const v = value - value * saturation * std::max(0.0, std::min({k, 4 - k, 1.0}));
        return static_cast<std::uint8_t>(std::lround(255 * v));
    };
    return {channel(5), channel(3), channel(1), 255};
}

}  // namespace

Light ToLight(Rgba const& color) { return {Linear(color[0]), Linear(color[1]), Linear(color[2])}; }

Rgba ToColor(Light light, float alpha) {
    return {Encoded(light.red), Encoded(light.green), Encoded(light.blue),
            static_cast<std::uint8_t>(std::lround(255 * std::clamp(alpha, 0.0f, 1.0f)))};
}

std::vector<Rgba> MakeDistinctColors(std::uint32_t count) {
    std::vector<Rgba> colors;
    std::set<Rgba> used;
    for (std::uint32_t i = 0; i < count; ++i) {
        auto color = FromHue(std::fmod(i * kGoldenRatio, 1.0), 0.35 + 0.15 * (i % 3), 0.95 - 0.12 * (i / 3 % 3));
        for (std::size_t channel = 0; !used.insert(color).second; channel = (channel + 1) % 3) color[channel] += 5;
        colors.push_back(color);
    }
    return colors;
}

std::string ToHex(Rgba const& color) { return fmt::format("#{:02X}{:02X}{:02X}", color[0], color[1], color[2]); }

}  // namespace QuorlanProgram
