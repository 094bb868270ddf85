#pragma once

#include "PickScene.h"
#include "render/Colors.h"

#include <Tools/Picking/ViewProjection.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace QuorlanProgram {

enum class ColorMode { Material, Entity, Layer, Normal };

/// What a surface looks like before light falls on it.
struct Surface {
    Light color;
    float alpha = 1;  ///< below 1 the ray goes on behind the surface
};

struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<Rgba> pixels;              ///< row by row from the top, alpha not premultiplied
    std::vector<std::uint32_t> instances;  ///< seen at each pixel's centre; kInvalidIndex for none
    std::uint64_t rayCount = 0;
    double seconds = 0;  ///< spent casting rays
};

/// Casts a picture with the pickers: one ray through each pixel's centre, three more where the neighbours see something
/// else, one towards the light if shadows are wanted. It shows what a pick finds, no more and no less.
class Renderer {
public:
    Renderer(PickScene const& scene, Quorlan::Tools::Picking::ViewProjection const& view);

    /// One surface per instance.
    void SetSurfaces(std::vector<Surface> surfaces) { surfaces_ = std::move(surfaces); }

    /// DEFAULT: true. Without, every pixel has the plain colour of what is seen at its centre.
    void SetShading(bool shading) { isShaded_ = shading; }

    /// DEFAULT: false.
    void SetShadows(bool shadows) { hasShadows_ = shadows; }

    /// The colour of a surface shows where it faces. DEFAULT: false.
    void SetNormalColors(bool normalColors) { hasNormalColors_ = normalColors; }

    Picture Render() const;

private:
    struct Sample;
    class Worker;

    template <class Work>
    std::uint64_t ForEachPixel(Work const& work) const;

    PickScene const& scene_;
    Quorlan::Tools::Picking::ViewProjection view_;
    std::vector<Surface> surfaces_;
    bool isShaded_ = true;
    bool hasShadows_ = false;
    bool hasNormalColors_ = false;
};

}  // namespace QuorlanProgram
