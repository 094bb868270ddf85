#include "picking/ContentBounds.h"
#include "picking/InstancePick.h"
#include "picking/InstanceRays.h"
#include "picking/SurfacePick.h"

#include <Quorlan/ModelTypes.h>
#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/RayToBRepEdgesBuilder.h>
#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {

/// The best hit so far, in the coordinates of its definition.
struct ModelInstancesPicker::Hit {
    float t = std::numeric_limits<float>::max();  // unchanged: no hit
    Vector3f position;
    Vector3f normal{1, 0, 0};
    unsigned instance = kInvalidIndex;
    unsigned primitive = kInvalidIndex;

    bool IsHit() const { return t != std::numeric_limits<float>::max(); }
};

namespace {

/// The definition kinds of the types, bit k for kind k.
unsigned GetKindMask(std::vector<GeometryType> const& types) {
    constexpr unsigned kMasks[] = {1u << 1, 1u << 2 | 1u << 3,   1u << 4,  1u << 5, 1u << 6, 1u << 7, 1u << 8,
                                   1u << 9, 1u << 10 | 1u << 11, 1u << 15, 1u << 13};
    unsigned mask = 0;
    for (GeometryType const type : types) {
        auto const value = static_cast<std::uint32_t>(type);
        if (value < std::size(kMasks)) mask |= kMasks[value];
        if (type == GeometryType::NONE) mask |= 1u << 0;
    }
    return mask;
}

bool Contains(unsigned kindMask, std::uint8_t kind) { return kind < 32 && (kindMask >> kind & 1u) != 0; }

/// How far on the screen a point lies from the ray.
class ScreenMeasure {
public:
    explicit ScreenMeasure(ViewProjection const& view) {
        if (!view.IsPerspective()) {
            pixelsPerUnit_ = static_cast<float>(1 / view.GetScale());
            return;
        }
        double angle = view.GetAngle();
        double const aspect = view.GetSizeX() / view.GetSizeY();
        if (aspect > 1) angle = 2 * std::atan(std::tan(angle / 2) / aspect);
        focalDistance_ = static_cast<float>((view.GetSizeY() * 0.5) / std::tan(angle / 2));
    }

    /// [pixels] REQUIRES: `t` is the ray parameter of `point`.
    float GetDistance(Ray3f const& ray, glm::vec3 const& point, float t) const {
        glm::vec3 const direction = ToGlm(ray.direction);
        glm::vec3 const toPoint = point - ToGlm(ray.origin);
        float const along = glm::dot(direction, toPoint);
        float const distance = glm::length(toPoint - along * direction);
        return (distance / t) * focalDistance_ + distance * pixelsPerUnit_;
    }

private:
    float pixelsPerUnit_ = 0;  // of a parallel camera
    float focalDistance_ = 0;  // [pixels], of a perspective camera
};

/// The closest edge or line of one definition.
struct EdgeHit {
    glm::vec3 point{0, 0, 0};
    float t = 0;
    unsigned primitive = 0;
};

/// Both edge builders of a pick behind one operation.
class EdgeFinder {
public:
    bool Find(EdgeHit& hit, Schema::GeometryDefinitionInfo const& definition, Ray3f const& ray,
              std::vector<glm::vec4> const& planes, std::vector<char> const& buffer) {
        glm::vec3 const origin = ToGlm(ray.origin);
        glm::vec3 const direction = ToGlm(ray.direction);
        if (definition.kind() == kGraphicsContainer) {
            if (!lines_.Build(origin, direction, planes, buffer, definition.kindIndex())) return false;
            hit = {lines_.GetNearestPoint(), lines_.GetRayParameter(), lines_.HitSegmentNumber()};
            return true;
        }
        auto const build = [&](auto operation) {
            return (edges_.*operation)(origin, direction, planes, buffer, definition.kindIndex());
        };
        if (!BuildOfKind(definition.kind(), build)) return false;
        hit = {edges_.GetEdgePoint(), edges_.GetRayParameter(), static_cast<unsigned>(edges_.GetWireIndex())};
        return true;
    }

private:
    template <class Build>
    static bool BuildOfKind(std::uint8_t kind, Build const& build) {
        switch (kind) {
            case kFacetedBRep: return build(&RayToBRepEdgesBuilder::BuildBRep);
            case kBRepWithUV: return build(&RayToBRepEdgesBuilder::BuildBRepWithUV);
            case kBRepWithNormal: return build(&RayToBRepEdgesBuilder::BuildBRepWithNormal);
            default: return false;
        }
    }

    RayToBRepEdgesBuilder edges_;
    RayToGraphicsContainerBuilder lines_;
};

/// An instance whose edges are to be measured, and what is less than the ray parameter of any point of them.
struct EdgeCandidate {
    float lowerBound;
    std::uint32_t place;  // in the list
    Ray3f ray;            // in the coordinates of its definition

    /// For heaps: the one that starts nearest is on top.
    friend bool operator<(EdgeCandidate const& a, EdgeCandidate const& b) { return a.lowerBound > b.lowerBound; }
};

/// The instances of the kinds in the mask, as a heap.
std::vector<EdgeCandidate> FindEdgeCandidates(ModelView const& model, std::vector<unsigned> const& ids,
                                              unsigned kindMask, ModelRay const& ray) {
    InstanceArrays const arrays(model);
    ContentBoundsCache bounds(*model.geometry);
    std::vector<EdgeCandidate> candidates;
    candidates.reserve(ids.size());
    for (std::size_t first = 0; first < ids.size(); first += kLaneCount) {
        std::size_t const end = std::min<std::size_t>(first + kLaneCount, ids.size());
        for (std::size_t i = end; i < std::min<std::size_t>(end + kLaneCount, ids.size()); ++i) {
            InstanceRays::Prefetch(arrays, arrays.GetInstance(ids[i]));
        }
        InstanceRays const rays(arrays, ids.data(), first, ids.size(), ray);
        for (std::size_t i = first; i < end; ++i) {
            std::uint32_t const definition = arrays.GetInstance(ids[i]).definitionIndex();
            if (!Contains(kindMask, model.geometry->definitions()->Get(definition)->kind())) continue;
            Ray3f const local = rays.Get(i - first);
            float const lowerBound = bounds.Get(definition).GetLowerBound(local);
            candidates.push_back({std::isnan(lowerBound) ? -std::numeric_limits<float>::infinity() : lowerBound,
                                  static_cast<std::uint32_t>(i), local});
        }
    }
    std::make_heap(candidates.begin(), candidates.end());
    return candidates;
}

}  // namespace

void ModelInstancesPicker::ResetResult() {
    geometryInstanceId_ = kInvalidIndex;
    geometryInstancePrimitiveId_ = kInvalidIndex;
    shortestDistance_ = std::numeric_limits<double>::max();
}

void ModelInstancesPicker::StoreResult(Hit const& hit, InstanceFrame const& frame, AffineTransform const& transform) {
    auto const& worldFromModel = transform.matrix;
    pickedPoint_ = TransformPoint(worldFromModel, frame.ToModelPoint(hit.position));
    pickedNormal_ = TransformDirection(worldFromModel, frame.ToModelDirection(hit.normal));
    shortestDistance_ = hit.t * Length(worldFromModel.GetColumn(0));
    geometryInstanceId_ = hit.instance;
    geometryInstancePrimitiveId_ = hit.primitive;
}

bool ModelInstancesPicker::PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform,
                                        std::vector<unsigned> const& instanceIds) {
    ResetResult();
    auto const model = ModelView::OpenTrusted(buffer);
    if (!model) return false;

    auto const ray = CreatePickRay(viewProjection_, pickPositionX_, pickPositionY_, transform);
    auto const pick = FindNearestSurface(*model, transform, ray, dynamicClippingPlanes_, instanceIds);
    if (!pick) return false;
    shortestDistance_ = pick->distance;
    pickedPoint_ = pick->point;
    pickedNormal_ = pick->normal;
    geometryInstanceId_ = pick->instance;
    geometryInstancePrimitiveId_ = pick->face;
    return true;
}

/// The nearest of all hits counts and of equal ones the first in the list, so that instances are measured from the
/// nearest on, and no more once one starts behind the best hit.
bool ModelInstancesPicker::PickEdges(std::vector<GeometryType> const& types, std::vector<char> const& buffer,
                                     AffineTransform const& transform, std::vector<unsigned> const& instanceIds,
                                     double tolerance) {
    ResetResult();
    auto const model = ModelView::OpenTrusted(buffer);
    if (!model || instanceIds.empty()) return false;

    ModelRay const ray = CreatePickRay(viewProjection_, pickPositionX_, pickPositionY_, transform);
    InstancePick pick(*model, ray, CarryPlanes(dynamicClippingPlanes_, transform));
    ScreenMeasure const screen(viewProjection_);
    float const tolerancePixels = static_cast<float>(tolerance);
    auto candidates = FindEdgeCandidates(*model, instanceIds, GetKindMask(types), ray);
    EdgeFinder finder;
    Hit best;
    std::uint32_t bestPlace = 0;
    while (!candidates.empty() && !(candidates.front().lowerBound > best.t)) {
        std::pop_heap(candidates.begin(), candidates.end());
        EdgeCandidate const candidate = candidates.back();
        candidates.pop_back();
        unsigned const id = instanceIds[candidate.place];
        Schema::Instance const& instance = *model->geometry->instances()->Get(id);
        auto const& definition = *model->geometry->definitions()->Get(instance.definitionIndex());
        EdgeHit edge;
        if (!finder.Find(edge, definition, candidate.ray, pick.GetClippingPlanesOf(instance), buffer)) continue;
        bool const isFirstOfEqual = edge.t == best.t && best.IsHit() && candidate.place < bestPlace;
        if (!(edge.t < best.t) && !isFirstOfEqual) continue;
        if (!(screen.GetDistance(candidate.ray, edge.point, edge.t) < tolerancePixels)) continue;
        best = {edge.t, ToVector3f(edge.point), Vector3f{1, 0, 0}, id, edge.primitive};
        bestPlace = candidate.place;
    }
    if (!best.IsHit()) return false;
    StoreResult(best, pick.GetFrameOf(*model->geometry->instances()->Get(best.instance)), transform);
    pickedNormal_ = transform.matrix.GetColumn(0);
    return true;
}

}  // namespace Quorlan::Tools::Picking
