#pragma once

#include "render/Picture.h"

#include <GeometryObjectLib/Vertex.h>
#include <Tools/Picking/ViewProjection.h>

#include <vector>

namespace QuorlanProgram {

/// Draws marks over a finished picture. Widths and radii are in pixels.
class Overlay {
public:
    /// REQUIRES: `picture` outlives the overlay and was seen through `view`.
    Overlay(Picture& picture, Quorlan::Tools::Picking::ViewProjection const& view) : picture_(picture), view_(view) {}

    /// A path through world points; what lies behind the camera is left out.
    void DrawPath(std::vector<GeometryObjectLib::Vertex> const& path, Rgba const& color, double width);

    /// A ring around a world point.
    void DrawRing(GeometryObjectLib::Vertex const& center, double radius, Rgba const& color, double width);

private:
    struct Box;

    template <class Distance>
    void Fill(Box box, Rgba const& color, double halfWidth, Distance const& distance);

    Picture& picture_;
    Quorlan::Tools::Picking::ViewProjection view_;
};

}  // namespace QuorlanProgram
