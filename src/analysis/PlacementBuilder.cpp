#include <Tools/PlacementBuilder.h>

#include "analysis/PlacedInstances.h"

namespace Quorlan::Tools {

bool PlacementBuilder::Build(void const* buffer) {
    auto const model = ModelView::Open(buffer);
    if (!model) return false;

    ComputePlacements(*model, nullptr, placements_);
    return true;
}

bool PlacementBuilder::Build(void const* buffer, AffineTransform const& transform) {
    auto const model = ModelView::Open(buffer);
    if (!model) return false;

    Matrix4 const matrix = transform.matrix;  // the caller's may be one of the matrices that are overwritten
    ComputePlacements(*model, &matrix, placements_);
    return true;
}

}  // namespace Quorlan::Tools
