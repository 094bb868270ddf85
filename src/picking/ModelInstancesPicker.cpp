#include "picking/InstancePick.h"

#include <Quorlan/ModelTypes.h>
#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/RayToBRepEdgesBuilder.h>
#include <Tools/Picking/RayToBRepSurfaceIntersectionBuilder.h>
#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <glm/geometric.hpp>

#include <cmath>
#include <limits>
#include <optional>

namespace Quorlan::Tools::Picking {

/// The best hit so far, in the coordinates of its definition.
struct ModelInstancesPicker::Hit {
    float t = std::numeric_limits<float>::max();  // unchanged: no hit
    glm::vec3 position{0, 0, 0};
    glm::vec3 normal{1, 0, 0};
    InstanceFrame frame;
    unsigned instance = kInvalidIndex;
    unsigned primitive = kInvalidIndex;

    bool IsHit() const { return t != std::numeric_limits<float>::max(); }
};

namespace {

/// The model of a buffer that is trusted and not asked for its identifier. Empty where there can be no instances.
std::optional<ModelView> OpenTrusted(std::vector<char> const& buffer) {
    auto const* const geometry = FindGeometry(buffer);
    if (geometry == nullptr || geometry->instances() == nullptr) return std::nullopt;
    auto const* const entities = Schema::GetModel(buffer.data())->entities();
    if (entities == nullptr || entities->records() == nullptr) return std::nullopt;
    return ModelView{entities->records(), geometry};
}

/// The least t at which a ray of unit length can be as deep as the nearest point of the definition's bounds.
float GetLeastParameter(Schema::GeometryDefinitionInfo const& definition, InstancePick const& pick) {
    Vector3f const lo = ToVector3f(definition.boundsMin());
    Vector3f const hi = ToVector3f(definition.boundsMax());
    Vector3f const center = (lo + hi) / 2;
    Vector3f const halfExtent = (hi - lo) / 2;
    glm::vec3 const& o = pick.GetOrigin();
    glm::vec3 const& d = pick.GetDirection();
    return ((center.x - o.x) * d.x + (center.y - o.y) * d.y + (center.z - o.z) * d.z) -
           (std::abs(d.x) * halfExtent.x + std::abs(d.y) * halfExtent.y + std::abs(d.z) * halfExtent.z);
}

bool IsTwoSided(Schema::Geometry const& geometry, std::uint32_t material) {
    return material < CountOf(geometry.materials()) && geometry.materials()->Get(material)->twoSided() == 1;
}

/// RETURNS false also for a definition that is no BRep.
template <class Builder>
bool BuildBRepOfKind(Builder& builder, Schema::GeometryDefinitionInfo const& definition, InstancePick const& pick,
                     std::vector<char> const& buffer) {
    auto const build = [&](auto operation) {
        return (builder.*operation)(pick.GetOrigin(), pick.GetDirection(), pick.GetClippingPlanes(), buffer,
                                    definition.kindIndex());
    };
    switch (definition.kind()) {
        case kFacetedBRep: return build(&Builder::BuildBRep);
        case kBRepWithUV: return build(&Builder::BuildBRepWithUV);
        case kBRepWithNormal: return build(&Builder::BuildBRepWithNormal);
        default: return false;
    }
}

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
    float GetDistance(InstancePick const& pick, glm::vec3 const& point, float t) const {
        glm::vec3 const toPoint = point - pick.GetOrigin();
        float const along = glm::dot(pick.GetDirection(), toPoint);
        float const distance = glm::length(toPoint - along * pick.GetDirection());
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
    bool Find(EdgeHit& hit, Schema::GeometryDefinitionInfo const& definition, InstancePick const& pick,
              std::vector<char> const& buffer) {
        if (definition.kind() == kGraphicsContainer) {
            if (!lines_.Build(pick.GetOrigin(), pick.GetDirection(), pick.GetClippingPlanes(), buffer,
                              definition.kindIndex())) {
                return false;
            }
            hit = {lines_.GetNearestPoint(), lines_.GetRayParameter(), lines_.HitSegmentNumber()};
            return true;
        }
        if (!BuildBRepOfKind(edges_, definition, pick, buffer)) return false;
        hit = {edges_.GetEdgePoint(), edges_.GetRayParameter(), static_cast<unsigned>(edges_.GetWireIndex())};
        return true;
    }

private:
    RayToBRepEdgesBuilder edges_;
    RayToGraphicsContainerBuilder lines_;
};

}  // namespace

void ModelInstancesPicker::ResetResult() {
    geometryInstanceId_ = kInvalidIndex;
    geometryInstancePrimitiveId_ = kInvalidIndex;
    shortestDistance_ = std::numeric_limits<double>::max();
}

void ModelInstancesPicker::StoreResult(Hit const& hit, AffineTransform const& transform) {
    auto const& worldFromModel = transform.matrix;
    pickedPoint_ = TransformPoint(worldFromModel, hit.frame.ToModelPoint(ToVector3f(hit.position)));
    pickedNormal_ = TransformDirection(worldFromModel, hit.frame.ToModelDirection(ToVector3f(hit.normal)));
    shortestDistance_ = hit.t * Length(worldFromModel.GetColumn(0));
    geometryInstanceId_ = hit.instance;
    geometryInstancePrimitiveId_ = hit.primitive;
}

bool ModelInstancesPicker::PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform,
                                        std::vector<unsigned> const& instanceIds) {
    ResetResult();
    auto const model = OpenTrusted(buffer);
    if (!model || instanceIds.empty()) return false;

    InstancePick pick(*model, CreatePickRay(viewProjection_, pickPositionX_, pickPositionY_, transform),
                      CarryPlanes(dynamicClippingPlanes_, transform));
    RayToBRepSurfaceIntersectionBuilder surface;
    Hit best;
    for (unsigned const id : instanceIds) {
        Schema::Instance const& instance = *model->geometry->instances()->Get(id);
        auto const& definition = *model->geometry->definitions()->Get(instance.definitionIndex());
        pick.MoveTo(instance);
        if (GetLeastParameter(definition, pick) > best.t) continue;
        surface.SetSingleSided(!IsTwoSided(*model->geometry, instance.materialIndex()));
        if (!BuildBRepOfKind(surface, definition, pick, buffer) || !(surface.GetRayParameter() < best.t)) continue;
        best = {surface.GetRayParameter(), surface.GetPosition(), surface.GetNormal(), pick.GetFrame(), id,
                surface.GetWireIndex()};
    }
    if (!best.IsHit()) return false;
    StoreResult(best, transform);
    return true;
}

bool ModelInstancesPicker::PickEdges(std::vector<GeometryType> const& types, std::vector<char> const& buffer,
                                     AffineTransform const& transform, std::vector<unsigned> const& instanceIds,
                                     double tolerance) {
    ResetResult();
    auto const model = OpenTrusted(buffer);
    if (!model || instanceIds.empty()) return false;

    InstancePick pick(*model, CreatePickRay(viewProjection_, pickPositionX_, pickPositionY_, transform),
                      CarryPlanes(dynamicClippingPlanes_, transform));
    ScreenMeasure const screen(viewProjection_);
    float const tolerancePixels = static_cast<float>(tolerance);
    unsigned const kindMask = GetKindMask(types);
    EdgeFinder finder;
    Hit best;
    for (unsigned const id : instanceIds) {
        Schema::Instance const& instance = *model->geometry->instances()->Get(id);
        auto const& definition = *model->geometry->definitions()->Get(instance.definitionIndex());
        if (!Contains(kindMask, definition.kind())) continue;
        pick.MoveTo(instance);
        EdgeHit edge;
        if (!finder.Find(edge, definition, pick, buffer) || !(edge.t < best.t)) continue;
        if (!(screen.GetDistance(pick, edge.point, edge.t) < tolerancePixels)) continue;
        best.t = edge.t;
        best.position = edge.point;
        best.frame = pick.GetFrame();
        best.instance = id;
        best.primitive = edge.primitive;
    }
    if (!best.IsHit()) return false;
    StoreResult(best, transform);
    pickedNormal_ = transform.matrix.GetColumn(0);
    return true;
}

}  // namespace Quorlan::Tools::Picking
