#include "picking/SurfacePick.h"

#include "picking/InstancePick.h"
#include "picking/InstanceRays.h"
#include "picking/PlaneStore.h"
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

SurfaceHit IntersectInstance(Schema::Geometry const& geometry, Schema::Instance const& instance, Ray3f const& ray,
                             std::vector<glm::vec4> const& clippingPlanes, PlaneStore& store) {
    bool const isSingleSided = !IsTwoSided(geometry, instance.materialIndex());
    std::uint32_t const index = instance.definitionIndex();
    PlaneStore::Shape* shape = store.Find(index);
    if (shape == nullptr) {
        auto const& definition = *geometry.definitions()->Get(index);
        auto const brep = Quorlan::FindBRep(geometry, definition.kind(), definition.kindIndex());
        if (!brep) return {};
        shape = store.Add(index, *brep);
        if (shape == nullptr) return IntersectSurface(ray, clippingPlanes, StoredBRepAccess(*brep), isSingleSided);
    }
    PlaneStore::Reader planes(*shape);
    return IntersectSurface(ray, clippingPlanes, shape->access, isSingleSided, planes);
}

/// The best hit so far, in the coordinates of its definition.
struct BestSurface {
    SurfaceHit hit;  // t as in a miss: none
    unsigned instance = 0;
};

BestSurface FindBest(ModelView const& model, InstanceArrays const& arrays, InstancePick& pick, ModelRay const& ray,
                     std::vector<unsigned> const& ids, bool usesAvx2) {
    Schema::Geometry const& geometry = *model.geometry;
    BestSurface best;
    PlaneStore store;
    std::array<InstanceRays, kRayBlocks> rays;
    for (std::size_t first = 0; first < ids.size(); first += kRayBlocks * kLaneCount) {
        std::size_t const end = std::min<std::size_t>(first + kRayBlocks * kLaneCount, ids.size());
        for (std::size_t i = first; i < end; ++i) InstanceRays::Prefetch(arrays, arrays.GetInstance(ids[i]));
        for (std::size_t i = first; i < end; i += kLaneCount) {
            rays[(i - first) / kLaneCount] = InstanceRays(arrays, ids.data(), i, ids.size(), ray, usesAvx2);
        }
        for (std::size_t i = first; i < end; ++i) {
            InstanceRays const& block = rays[(i - first) / kLaneCount];
            std::size_t const lane = i % kLaneCount;
            if (block.GetLeastParameter(lane) > best.hit.t) continue;
            Schema::Instance const& instance = arrays.GetInstance(ids[i]);
            SurfaceHit const hit =
                IntersectInstance(geometry, instance, block.Get(lane), pick.GetClippingPlanesOf(instance), store);
            if (hit.isHit && hit.t < best.hit.t) best = {hit, ids[i]};
        }
    }
    return best;
}

#if QUORLAN_HAS_AVX2
/// The same code for a processor with AVX2.
QUORLAN_AVX2_WHOLE BestSurface FindBestAvx2(ModelView const& model, InstanceArrays const& arrays, InstancePick& pick,
                                            ModelRay const& ray, std::vector<unsigned> const& ids) {
    return FindBest(model, arrays, pick, ray, ids, true);
}
#endif

BestSurface FindBestOf(ModelView const& model, InstanceArrays const& arrays, InstancePick& pick, ModelRay const& ray,
                       std::vector<unsigned> const& ids, [[maybe_unused]] bool usesAvx2) {
#if QUORLAN_HAS_AVX2
    if (usesAvx2) return FindBestAvx2(model, arrays, pick, ray, ids);
#endif
    return FindBest(model, arrays, pick, ray, ids, false);
}

}  // namespace

std::optional<SurfacePick> FindNearestSurface(ModelView const& model, AffineTransform const& transform,
                                              ModelRay const& ray, std::vector<Plane3f> const& clippingPlanes,
                                              std::vector<unsigned> const& instanceIds, bool usesAvx2) {
    if (instanceIds.empty()) return std::nullopt;
    InstanceArrays const arrays(model);
    InstancePick pick(model, ray, CarryPlanes(clippingPlanes, transform));
    BestSurface const best = FindBestOf(model, arrays, pick, ray, instanceIds, usesAvx2);
    if (!best.hit.isHit) return std::nullopt;
    InstanceFrame const frame = pick.GetFrameOf(arrays.GetInstance(best.instance));
    auto const& worldFromModel = transform.matrix;
    return SurfacePick{best.hit.t * Length(worldFromModel.GetColumn(0)),
                       TransformPoint(worldFromModel, frame.ToModelPoint(best.hit.position)),
                       TransformDirection(worldFromModel, frame.ToModelDirection(best.hit.normal)), best.instance,
                       static_cast<unsigned>(best.hit.face)};
}

}  // namespace Quorlan::Tools::Picking
