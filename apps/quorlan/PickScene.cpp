#include "PickScene.h"

#include "Command.h"
#include "EntityLabel.h"
#include "MovedModel.h"
#include "Options.h"

#include <Tools/QaabBuilder.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Vertex;
using Quorlan::Tools::Picking::ModelPicker;
using Quorlan::Tools::Picking::ViewProjection;

/// [m] from the origin at which the last bit of single precision is half a millimetre.
constexpr double kFarOut = 8192;

bool IsFarOut(Vertex const& v) { return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}) > kFarOut; }

Plane3f ToPlane(std::array<double, 4> const& plane, Vertex const& shift) {
    Vertex const normal{plane[0], plane[1], plane[2]};
    auto const narrow = [](double v) { return static_cast<float>(v); };
    return {{narrow(normal.x), narrow(normal.y), narrow(normal.z)}, narrow(plane[3] - Dot(normal, shift))};
}

/// The same camera, `shift` closer to the origin.
ViewProjection MoveView(ViewProjection view, Vertex const& shift) {
    auto const direction = view.GetDirection(), up = view.GetUpVector();
    view.SetPlacement(view.GetLocation() - shift, direction, up);
    return view;
}

}  // namespace

void VisibilityOptions::Declare(CLI::App& app) {
    std::string const group = "Looked through";
    app.add_option("--hide", hiddenGuids, "An entity; may be repeated")
        ->type_name("GUID")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--disable-layer", disabledLayers, "A layer, by its exact name; may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false)
        ->group(group);
    AddNumberLists(app, "--clip", clippingPlanes, "NX,NY,NZ,D", "Cut away the points p with N * p > D; may be repeated")
        ->group(group);
}

PickScene::PickScene(ModelFile const& model, VisibilityOptions const& visibility)
    : model_(model), boxes_(ComputeWorldBoxes(model.GetBytes())), bounds_(Unite(boxes_)) {
    HideEntities(visibility);
    DisableLayers(visibility);
    if (bounds_ && (IsFarOut(bounds_->GetMin()) || IsFarOut(bounds_->GetMax()))) MoveToOrigin();

    std::vector<Plane3f> planes;
    for (auto const& plane : visibility.clippingPlanes) planes.push_back(ToPlane(plane, shift_));
    prototype_.SetDynamicClippingPlanes(planes);
    Quorlan::Tools::QaabBuilder builder;
    if (builder.Build((moved_.empty() ? model.GetBytes() : moved_).data())) {
        tree_ = {builder.getOrigin(), builder.getBvhQuantization(), builder.getNodes()};
    }
}

void PickScene::HideEntities(VisibilityOptions const& visibility) {
    if (visibility.hiddenGuids.empty()) return;
    auto const labels = LabelsOf(model_.GetReader().GetEntities());
    std::unordered_map<std::string, std::uint32_t> byGuid;
    for (std::uint32_t i = 0; i < labels.size(); ++i) byGuid.emplace(labels[i].guid, i);
    for (auto const& guid : visibility.hiddenGuids) {
        auto const found = byGuid.find(guid);
        if (guid.empty() || found == byGuid.end()) {
            throw Failure(fmt::format("{}: has no entity with the GUID '{}'", model_.GetPath(), guid));
        }
        hidden_.insert(Quorlan::EntityIndex_t{found->second});
    }
}

void PickScene::DisableLayers(VisibilityOptions const& visibility) {
    auto const& geometry = model_.GetReader().GetGeometry();
    std::vector<std::string> names(geometry.GetExtraContentCount());
    for (std::uint32_t i = 0; i < names.size(); ++i) geometry.GetLayerName(names[i], i);
    std::vector<std::wstring> disabled;
    for (auto const& name : visibility.disabledLayers) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            throw Failure(fmt::format("{}: has no layer '{}'", model_.GetPath(), name));
        }
        disabled.push_back(FromUtf8(name));
        for (std::uint32_t i = 0; i < names.size(); ++i) {
            if (names[i] == name) disabledLayers_.insert(i);
        }
    }
    prototype_.SetDisabledLayers(disabled);
}

void PickScene::MoveToOrigin() {
    auto const& c = bounds_->center;
    shift_ = {std::round(c.x), std::round(c.y), std::round(c.z)};
    moved_ = MoveModel(model_.GetReader(), Vertex{} - shift_);
}

std::vector<bool> PickScene::FindVisibleInstances() const {
    auto const& geometry = model_.GetReader().GetGeometry();
    std::vector<bool> visible(geometry.GetInstanceCount());
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < visible.size(); ++i) {
        geometry.GetInstance(instance, i);
        visible[i] = hidden_.count(Quorlan::EntityIndex_t{instance.entityIndex}) == 0 &&
                     disabledLayers_.count(instance.layerIndex) == 0;
    }
    return visible;
}

PickScene::Picker::Picker(PickScene const& scene, ViewProjection const& view)
    : scene_(&scene), view_(view), viewPicker_(scene.prototype_), rayPicker_(scene.prototype_) {
    viewPicker_.SetViewProjection(MoveView(view, scene.shift_));
}

std::optional<SurfaceHit> PickScene::Picker::Pick(double x, double y) {
    viewPicker_.SetPickPositionX(x);
    viewPicker_.SetPickPositionY(y);
    return PickWith(viewPicker_);
}

std::optional<EdgeHit> PickScene::Picker::PickEdge(double x, double y, EdgeKind kind, double tolerance) {
    viewPicker_.SetPickPositionX(x);
    viewPicker_.SetPickPositionY(y);
    auto const& hidden = scene_->hidden_;
    auto const found = kind == EdgeKind::Lines
                           ? viewPicker_.PickLines(GetBuffer(), {}, hidden, scene_->tree_, tolerance)
                           : viewPicker_.PickEdges(GetBuffer(), {}, hidden, scene_->tree_, tolerance);
    if (!found) return std::nullopt;
    EdgeHit hit{viewPicker_.GetGeometryInstanceId(), viewPicker_.GetGeometryInstancePrimitiveId(),
                viewPicker_.GetShortestDistance(), viewPicker_.GetPickedPoint() + scene_->shift_};
    double seenX = 0, seenY = 0;
    Quorlan::Tools::Picking::WorldToView(view_, hit.point, seenX, seenY);
    hit.pixels = std::hypot(seenX - x, seenY - y);
    return hit;
}

std::vector<char> const& PickScene::Picker::GetBuffer() const {
    return scene_->moved_.empty() ? scene_->model_.GetBytes() : scene_->moved_;
}

std::optional<SurfaceHit> PickScene::Picker::Cast(Vertex const& origin, Vertex const& direction) {
    auto const up = std::abs(direction.z) < 0.9 ? Vertex{0, 0, 1} : Vertex{1, 0, 0};
    rayPicker_.SetViewProjection(ViewProjection::FromOrthogonal(origin - scene_->shift_, direction, up, 1, 2, 2));
    rayPicker_.SetPickPositionX(1);
    rayPicker_.SetPickPositionY(1);
    return PickWith(rayPicker_);
}

std::optional<SurfaceHit> PickScene::Picker::PickWith(ModelPicker& picker) const {
    auto const& hidden = scene_->hidden_;
    auto const isHidden = [&hidden](Quorlan::EntityIndex_t entity) { return hidden.count(entity) != 0; };
    if (!picker.PickSurfaces(GetBuffer(), {}, isHidden, scene_->tree_)) return std::nullopt;
    return SurfaceHit{picker.GetGeometryInstanceId(), picker.GetGeometryInstancePrimitiveId(),
                      picker.GetShortestDistance(), picker.GetPickedPoint() + scene_->shift_, picker.GetPickedNormal()};
}

}  // namespace QuorlanProgram
