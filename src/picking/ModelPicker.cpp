#include "geometry/Lanes.h"
#include "geometry/MatrixInverse.h"
#include "model/ModelView.h"
#include "picking/InstanceRays.h"
#include "picking/LayerNames.h"
#include "picking/ModelRay.h"
#include "picking/SurfacePick.h"
#include "picking/TreeQuery.h"

#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/ModelPicker.h>

#include <algorithm>
#include <utility>

namespace Quorlan::Tools::Picking {
namespace {

constexpr std::size_t kMostCandidates = 1000;       // of an edge or line pick; more are narrowed down
constexpr std::size_t kMostNarrowCandidates = 100;  // to this many

std::vector<GeometryType> const& GetEdgeTypes() {
    static std::vector<GeometryType> const types{GeometryType::FACETED_BREP, GeometryType::BREP_WITH_NORMAL,
                                                 GeometryType::BREP_WITH_UV, GeometryType::GRAPHICS_CONTAINER};
    return types;
}

std::vector<GeometryType> const& GetLineTypes() {
    static std::vector<GeometryType> const types{GeometryType::GRAPHICS_CONTAINER};
    return types;
}

/// Null for what is no model buffer and where it has no instances.
Schema::Geometry const* FindInstances(std::vector<char> const& buffer) {
    if (!HasModelIdentifier(buffer)) return nullptr;
    auto const* const geometry = FindGeometry(buffer);
    return geometry == nullptr || geometry->instances() == nullptr ? nullptr : geometry;
}

/// Drops the candidates on disabled layers and those whose entity the filter rejects. Calls visit(instance) for each,
/// before the filter sees it.
template <class Visit>
void FilterCandidates(std::vector<unsigned>& candidates, Schema::Geometry const& geometry,
                      std::vector<std::wstring> const& disabledNames, ModelPicker::EntityFilter const& filter,
                      Visit const& visit) {
    auto const& instances = *geometry.instances();
    DisabledLayers const disabled(geometry, disabledNames);
    auto const isDropped = [&](unsigned id) {
        Schema::Instance const& instance = *instances.Get(id);
        visit(instance);
        return disabled.Contains(instance.layerIndex()) || filter(EntityIndex_t{instance.entityIndex()});
    };
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(), isDropped), candidates.end());
}

/// The filter of a set, which must outlive it.
ModelPicker::EntityFilter ExcludeAll(ModelPicker::EntitySet const& excluded) {
    return [&excluded](EntityIndex_t entity) { return excluded.count(entity) != 0; };
}

/// The transform of the same model with the tree's origin as its own, so that planes in single precision are as exact
/// far from the origin as close to it. As for the planes, a transform that cannot be inverted counts as identity.
AffineTransform MoveToTree(AffineTransform const& transform, QuantizedAxisAlignedBoxTree const& tree) {
    GeometryObjectLib::Matrix4 inverse;
    AffineTransform moved;
    if (TryInverse(transform.matrix, inverse)) moved.matrix = transform.matrix;
    Vertex const origin = TransformPoint(moved.matrix, tree.getOrigin());
    moved.matrix(0, 3) = origin.x;
    moved.matrix(1, 3) = origin.y;
    moved.matrix(2, 3) = origin.z;
    return moved;
}

}  // namespace

void ModelPicker::ResetResult() {
    geometryInstanceId_ = kInvalidIndex;
    geometryInstancePrimitiveId_ = kInvalidIndex;
    shortestDistance_ = std::numeric_limits<double>::max();
}

ModelInstancesPicker ModelPicker::MakeInstancesPicker() const {
    ModelInstancesPicker picker;
    picker.SetViewProjection(viewProjection_);
    picker.SetDynamicClippingPlanes(dynamicClippingPlanes_);
    picker.SetPickPositionX(pickPositionX_);
    picker.SetPickPositionY(pickPositionY_);
    return picker;
}

void ModelPicker::TakeResult(ModelInstancesPicker const& picker) {
    shortestDistance_ = picker.GetShortestDistance();
    pickedPoint_ = picker.GetPickedPoint();
    pickedNormal_ = picker.GetPickedNormal();
    geometryInstanceId_ = picker.GetGeometryInstanceId();
    geometryInstancePrimitiveId_ = picker.GetGeometryInstancePrimitiveId();
}

bool ModelPicker::PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform, EntityFilter filter,
                               QuantizedAxisAlignedBoxTree const& tree) {
    ResetResult();
    auto const* const geometry = FindInstances(buffer);
    if (geometry == nullptr) return false;

    auto const ray = CreatePickRay(viewProjection_, pickPositionX_, pickPositionY_, transform);
    auto candidates = FindItemsAlongRay(tree, ray, {geometry->instances()->Data(), sizeof(Schema::Instance)});
    if (candidates.empty()) return false;
    auto const model = ModelView::OpenTrusted(buffer);
    FilterCandidates(candidates, *geometry, disabledLayers_, filter, [&](Schema::Instance const& instance) {
        if (model) InstanceRays::Prefetch(InstanceArrays(*model), instance);
    });
    if (!model) return false;

    auto const pick = FindNearestSurface(*model, transform, ray, dynamicClippingPlanes_, candidates);
    if (!pick) return false;
    shortestDistance_ = pick->distance;
    pickedPoint_ = pick->point;
    pickedNormal_ = pick->normal;
    geometryInstanceId_ = pick->instance;
    geometryInstancePrimitiveId_ = pick->face;
    return true;
}

bool ModelPicker::PickInBox(std::vector<GeometryType> const& types, std::vector<char> const& buffer,
                            AffineTransform const& transform, EntityFilter const& filter,
                            QuantizedAxisAlignedBoxTree const& tree, double tolerance) {
    ResetResult();
    auto const* const geometry = FindInstances(buffer);
    if (geometry == nullptr) return false;

    auto const planes =
        CreateClippingPlanes(viewProjection_, MoveToTree(transform, tree), pickPositionX_, pickPositionY_, tolerance);
    auto const ray = CreatePickRay(viewProjection_, pickPositionX_, pickPositionY_, transform);
    auto candidates = FindItemsInPlanes(tree, planes, {ray, kMostCandidates, kMostNarrowCandidates});
    if (candidates.empty()) return false;
    for (unsigned const id : candidates) QUORLAN_PREFETCH(geometry->instances()->Get(id));  // they lie far apart
    FilterCandidates(candidates, *geometry, disabledLayers_, filter, [](Schema::Instance const&) {});
    if (candidates.empty()) return false;

    ModelInstancesPicker picker = MakeInstancesPicker();
    if (!picker.PickEdges(types, buffer, transform, candidates, tolerance)) return false;
    TakeResult(picker);
    return true;
}

bool ModelPicker::PickEdges(std::vector<char> const& buffer, AffineTransform const& transform, EntityFilter filter,
                            QuantizedAxisAlignedBoxTree const& tree, double tolerance) {
    return PickInBox(GetEdgeTypes(), buffer, transform, filter, tree, tolerance);
}

bool ModelPicker::PickLines(std::vector<char> const& buffer, AffineTransform const& transform, EntityFilter filter,
                            QuantizedAxisAlignedBoxTree const& tree, double tolerance) {
    return PickInBox(GetLineTypes(), buffer, transform, filter, tree, tolerance);
}

bool ModelPicker::PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform,
                               EntitySet const& excluded, QuantizedAxisAlignedBoxTree const& tree) {
    return PickSurfaces(buffer, transform, ExcludeAll(excluded), tree);
}

bool ModelPicker::PickEdges(std::vector<char> const& buffer, AffineTransform const& transform,
                            EntitySet const& excluded, QuantizedAxisAlignedBoxTree const& tree, double tolerance) {
    return PickEdges(buffer, transform, ExcludeAll(excluded), tree, tolerance);
}

bool ModelPicker::PickLines(std::vector<char> const& buffer, AffineTransform const& transform,
                            EntitySet const& excluded, QuantizedAxisAlignedBoxTree const& tree, double tolerance) {
    return PickLines(buffer, transform, ExcludeAll(excluded), tree, tolerance);
}

}  // namespace Quorlan::Tools::Picking
