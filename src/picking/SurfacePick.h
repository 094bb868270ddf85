#pragma once

#include "geometry/Avx2.h"
#include "model/ModelView.h"
#include "picking/ModelRay.h"

#include <optional>
#include <vector>

namespace Quorlan::Tools::Picking {

/// The nearest face among instances, in world space.
struct SurfacePick {
    double distance = 0;
    Vertex point;
    Vertex normal;
    unsigned instance = 0;
    unsigned face = 0;
};

/// Picks by the rules of `ModelInstancesPicker`; empty where nothing is hit. The planes are in world space. The result
/// has the same bits with AVX2 and without. REQUIRES: with `usesAvx2`, HasAvx2().
std::optional<SurfacePick> FindNearestSurface(ModelView const& model, AffineTransform const& transform,
                                              ModelRay const& ray, std::vector<Plane3f> const& clippingPlanes,
                                              std::vector<unsigned> const& instanceIds, bool usesAvx2 = HasAvx2());

}  // namespace Quorlan::Tools::Picking
