#pragma once

#include "PickScene.h"
#include "render/Picture.h"
#include "render/Surfaces.h"

#include <Tools/Picking/ViewProjection.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace QuorlanProgram {

/// Casts a picture with the pickers: one ray through each pixel's centre, three more where the neighbours see something
/// else, one towards the light if shadows are wanted. It shows what a pick finds, no more and no less.
class Renderer {
public:
    Renderer(PickScene const& scene, Quorlan::Tools::Picking::ViewProjection const& view);

    /// One surface per instance.
    void SetSurfaces(std::vector<Surface> surfaces) { surfaces_ = std::move(surfaces); }

    /// DEFAULT: true. Without, every pixel has the plain colour of what is seen at its centre.
    void SetShading(bool shading) { isShaded_ = shading; }

    /// Draws clear outlines along creases and boundaries in place of faint ones. DEFAULT: false.
    void SetEdges(bool edges) { hasEdges_ = edges; }

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
    bool hasEdges_ = false;
    bool hasShadows_ = false;
    bool hasNormalColors_ = false;
};

}  // namespace QuorlanProgram
