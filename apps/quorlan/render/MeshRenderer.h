#pragma once

#include "PickScene.h"
#include "render/Picture.h"
#include "render/Surfaces.h"

#include <Tools/Picking/ViewProjection.h>

#include <array>
#include <cstdint>
#include <vector>

namespace QuorlanProgram {

/// How a picture of render meshes is made.
struct MeshPictureOptions {
    ColorMode mode = ColorMode::Material;
    std::uint32_t samples = 8;                          ///< per pixel where neighbours differ; elsewhere one is enough
    bool hasEdges = false;                              ///< draws clear outlines along creases and boundaries
    std::vector<std::array<double, 4>> clippingPlanes;  ///< as in `VisibilityOptions`
};

/// False in a program that was built without Embree, where `RenderMeshes` always throws.
bool CanRenderMeshes();

/// Casts a picture of the render meshes: smooth surfaces, textures, glass, the light of a sky and a sun with soft
/// shadows, lines one pixel wide. Solids that a clipping plane cuts are closed at the cut. `surfaces` has one surface
/// per instance. The same call gives the same picture, on any number of processors.
/// THROWS Failure if the model does not fit into memory.
Picture RenderMeshes(ModelFile const& model, PickScene const& scene, std::vector<Surface> const& surfaces,
                     Quorlan::Tools::Picking::ViewProjection const& view, MeshPictureOptions const& options);

}  // namespace QuorlanProgram
