#pragma once

#include "geometry/Frame.h"

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/GraphicsContainer.h>
#include <Quorlan/ModelTypes.h>

#include <array>
#include <optional>

namespace Quorlan::Tools::Increments {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::DoubleFrame;
using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;

/// Where a shape of a source model stands in the definition that was written for it.
///
/// The move is told by its rotation and by one point in both frames, the centre of the shape's box. A placement rounds
/// its axes to single precision; with the centre held fixed, that error acts over half the shape's size and not over
/// the shape's distance from its origin.
struct DefinitionMove {
    Vertex sourceCenter;                    ///< in coordinates of the source definition
    Vertex writtenCenter;                   ///< the same point in coordinates of the written definition
    std::array<Vertex, 2> inverseRotation;  ///< source directions of the written definition's X and Y axes
    bool rotates = false;
};

/// The move of a shape by `writtenFromSource` (rigid); empty if it moves nothing by more than single precision
/// resolves.
std::optional<DefinitionMove> FindMove(AffineTransform const& writtenFromSource, FacetedBRep const& shape);
std::optional<DefinitionMove> FindMove(AffineTransform const& writtenFromSource, GraphicsContainer const& graphics);

/// The placement that shows the written definition where `placement` shows the source shape. `frame` is `placement`
/// before it was rounded. The axes stay those of `placement` unless the move rotates.
PlacementRecord PlaceMoved(PlacementRecord const& placement, DoubleFrame const& frame, DefinitionMove const& move);

/// The frame that readers make of a placement.
inline DoubleFrame ToDoubleFrame(PlacementRecord const& placement) {
    auto const& o = placement.origin;
    auto const& x = placement.xAxis;
    auto const& y = placement.yAxis;
    return DoubleFrame::FromAxes({o[0], o[1], o[2]}, {x[0], x[1], x[2]}, {y[0], y[1], y[2]});
}

/// The placement of a frame, with its axes rounded.
PlacementRecord ToPlacementRecord(DoubleFrame const& frame);

}  // namespace Quorlan::Tools::Increments
