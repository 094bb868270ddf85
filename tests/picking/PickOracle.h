#pragma once

#include "picking/PickScene.h"

#include <GeometryObjectLib/Plane3f.h>
#include <Tools/Picking/ViewProjection.h>

#include <cstdint>
#include <vector>

/// Picks in world space and double precision over listed instances, without trees, frames or local coordinates.
namespace Quorlan::Testing {

struct OraclePick {
    bool isHit = false;
    bool isClear = true;  ///< no decision was so close that single precision could take it the other way
    double t = 0;         ///< [model units of the world] along the world ray
    std::uint32_t instance = 0;
    std::uint32_t face = 0;
    Vertex point;
    Vertex normal;
};

/// The nearest face. REQUIRES: `transform` does not make the model smaller; the bound of the definitions' boxes then
/// drops nothing that could win. `slack` is the precision asked for, in world units.
OraclePick PickSurfacesInWorld(RawModel const& model, AffineTransform const& transform,
                               Tools::Picking::ViewProjection const& view, double x, double y,
                               std::vector<GeometryObjectLib::Plane3f> const& planes,
                               std::vector<unsigned> const& instances, double slack);

/// The edge, line or arc picked among the instances, each taken through the edge builders by itself in coordinates made
/// from 4 x 4 matrices. `isClear` is false where a hundredth of a pixel or a thousandth of the tolerance would change
/// the pick. Definitions of other kinds than the bits of `kindMask` are passed over.
OraclePick PickEdgesOneByOne(RawModel const& model, std::vector<char> const& buffer, AffineTransform const& transform,
                             Tools::Picking::ViewProjection const& view, double x, double y,
                             std::vector<GeometryObjectLib::Plane3f> const& planes,
                             std::vector<unsigned> const& instances, unsigned kindMask, double tolerance);

}  // namespace Quorlan::Testing
