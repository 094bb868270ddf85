#pragma once

#include "geometry/Avx2.h"
#include "model/ModelView.h"

#include <vector>

/// What the builders of boxes and of placements compute, one value per instance of a model. With AVX2 and without, the
/// results are the same to the bit; tests ask for both.
namespace Quorlan {

using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::Matrix4;

/// The world boxes, moved by `caller`.
void ComputeBoxes(ModelView const& model, Frame const& caller, std::vector<AxisAlignedBox3>& boxes,
                  bool usesAvx2 = HasAvx2());

/// The world matrices; where `transform` is not null, its products with them.
void ComputePlacements(ModelView const& model, Matrix4 const* transform, std::vector<Matrix4>& placements,
                       bool usesAvx2 = HasAvx2());

}  // namespace Quorlan
