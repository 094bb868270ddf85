#pragma once

#include <Quorlan/IModelReader.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace QuorlanProgram {

using Rgba = std::array<std::uint8_t, 4>;

/// Light, linear in energy, 0 to 1 per channel.
struct Light {
    float red = 0, green = 0, blue = 0;
};

constexpr Light operator+(Light a, Light b) { return {a.red + b.red, a.green + b.green, a.blue + b.blue}; }
constexpr Light operator*(float k, Light a) { return {k * a.red, k * a.green, k * a.blue}; }
constexpr Light operator*(Light a, Light b) { return {a.red * b.red, a.green * b.green, a.blue * b.blue}; }
constexpr Light Mix(Light a, Light b, float share) { return (1 - share) * a + share * b; }

/// From and to the colours of a picture (IEC 61966-2-1, sRGB).
Light ToLight(Rgba const& color);
Rgba ToColor(Light light, float alpha);

/// `count` colours of which no two are equal, neighbours far apart.
std::vector<Rgba> MakeDistinctColors(std::uint32_t count);

/// "#RRGGBB"
std::string ToHex(Rgba const& color);

}  // namespace QuorlanProgram
