#include "picking/SurfacePick.h"

#include "picking/InstancePick.h"
#include "picking/InstanceRays.h"
#include "picking/SurfaceIntersection.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Quorlan::Tools::Picking {
namespace {

constexpr std::size_t kRayBlocks = 4;  ///< blocks of rays that are carried over before their shapes are tested

bool IsTwoSided(Schema::Geometry const& geometry, std::uint32_t material) {
    return material < CountOf(geometry.materials()) && geometry.materials()->Get(material)->twoSided() == 1;
}

/// The best hit so far, in the coordinates of its definition.
struct BestSurface {
    SurfaceHit hit;  // t as in a miss: none
    unsigned instance = 0;
};

BestSurface FindBest(ModelView const& model, InstanceArrays const& arrays, InstancePick& pick, ModelRay const& ray,
                     std::vector<unsigned> const& ids) {
    Schema::Geometry const& geometry = *model.geometry;
    BestSurface best;
    std::array<InstanceRays, kRayBlocks> rays;
    for (std::size_t first = 0; first < ids.size(); first += kRayBlocks * kLaneCount) {
        std::size_t const end = std::min<std::size_t>(first + kRayBlocks * kLaneCount, ids.size());
        for (std::size_t i = first; i < end; ++i) InstanceRays::Prefetch(arrays, ids[i]);
        for (std::size_t i = first; i < end; i += kLaneCount) {
            rays[(i - first) / kLaneCount] = InstanceRays(arrays, ids.data(), i, ids.size(), ray);
        }
        for (std::size_t i = first; i < end; ++i) {
            InstanceRays const& block = rays[(i - first) / kLaneCount];
            std::size_t const lane = i % kLaneCount;
            if (block.GetLeastParameter(lane) > best.hit.t) continue;
            Schema::Instance const& instance = arrays.GetInstance(ids[i]);
            auto const& definition = *geometry.definitions()->Get(instance.definitionIndex());
            auto const brep = Quorlan::FindBRep(geometry, definition.kind(), definition.kindIndex());
            if (!brep) continue;
            SurfaceHit const hit =
                IntersectSurface(block.Get(lane), pick.GetClippingPlanesOf(instance), StoredBRepAccess(*brep),
                                 !IsTwoSided(geometry, instance.materialIndex()));
            if (hit.isHit && hit.t < best.hit.t) best = {hit, ids[i]};
        }
    }
    return best;
}

}  // namespace

std::optional<SurfacePick> FindNearestSurface(ModelView const& model, AffineTransform const& transform,
                                              ModelRay const& ray, std::vector<Plane3f> const& clippingPlanes,
                                              std::vector<unsigned> const& instanceIds) {
    if (instanceIds.empty()) return std::nullopt;
    InstanceArrays const arrays(model);
    InstancePick pick(model, ray, CarryPlanes(clippingPlanes, transform));
    BestSurface const best = FindBest(model, arrays, pick, ray, instanceIds);
    if (!best.hit.isHit) return std::nullopt;
    InstanceFrame const frame = pick.GetFrameOf(arrays.GetInstance(best.instance));
    auto const& worldFromModel = transform.matrix;
    return SurfacePick{best.hit.t * Length(worldFromModel.GetColumn(0)),
                       TransformPoint(worldFromModel, frame.ToModelPoint(best.hit.position)),
                       TransformDirection(worldFromModel, frame.ToModelDirection(best.hit.normal)), best.instance,
                       static_cast<unsigned>(best.hit.face)};
}

}  // namespace Quorlan::Tools::Picking
