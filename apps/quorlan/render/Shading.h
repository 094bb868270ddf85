#pragma once

#include "render/Colors.h"

#include <GeometryObjectLib/Vector3f.h>

#include <array>
#include <cstdint>

/// The light in a picture of render meshes: a sky, a sun with a soft edge, and glass.
namespace QuorlanProgram {

using GeometryObjectLib::Vector3f;

/// Two numbers from 0 to 1. Consecutive ones of a sequence fill the square evenly.
using Sample2 = std::array<float, 2>;

/// Element `n` of an evenly filling sequence (Roberts, "The Unreasonable Effectiveness of Quasirandom Sequences",
/// 2018), moved by `shift`.
Sample2 SampleAt(std::uint32_t n, Sample2 const& shift = {0.5f, 0.5f});

/// A shift for each pixel, the same in every run.
Sample2 ShiftOf(std::uint32_t x, std::uint32_t y);

/// The unit vector along `v`; upwards for a vector without length.
Vector3f UnitVector(Vector3f const& v);

/// A direction around `normal`, the more likely the more light it brings (Lambert's cosine law).
Vector3f DirectionAround(Vector3f const& normal, Sample2 const& sample);

/// A direction to a point of the sun's disc.
Vector3f DirectionToSun(Vector3f const& sun, Sample2 const& sample);

/// What comes from a direction that nothing stands in: the sky, or below the horizon the ground.
Light SkyFrom(Vector3f const& direction);

/// What comes from a direction in which something stands close by: light it has got from elsewhere.
Light BounceFrom(Vector3f const& direction);

/// The sun's light on a surface that faces it.
extern Light const kSunlight;

/// The share that glass throws back (Schlick, "An Inexpensive BRDF Model for Physically-based Rendering", 1994).
/// `cosine` is between the ray and the surface's normal.
float ReflectedShare(float cosine);

/// Compresses what is brighter than a picture can show.
Light Expose(Light light);

}  // namespace QuorlanProgram
