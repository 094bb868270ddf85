#pragma once

#include "render/Colors.h"

#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <vector>

namespace QuorlanProgram {

enum class ColorMode { Material, Entity, Layer, Normal };

/// What a surface looks like before light falls on it.
struct Surface {
    Light color;
    float alpha = 1;            ///< below 1 the ray goes on behind the surface
    std::int32_t texture = -1;  ///< -1 for none
    bool twoSided = false;      ///< both sides of a face can be seen
};

/// The surface of every instance, by what the colours shall tell. `entityColors` is used by `ColorMode::Entity` alone.
std::vector<Surface> SurfacesOf(Quorlan::IModelReader const& reader, ColorMode mode,
                                std::vector<Rgba> const& entityColors);

}  // namespace QuorlanProgram
