#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>
#include <GeometryObjectLib/Vertex.h>
#include <Quorlan/ModelTypes.h>
#include <Tools/Export.h>
#include <Tools/Picking/GeometryType.h>
#include <Tools/Picking/ViewProjection.h>

#include <functional>
#include <limits>
#include <string>
#include <unordered_set>
#include <vector>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::QuantizedAxisAlignedBoxTree;

class ModelInstancesPicker;

/// Finds what the user points at in a whole model: the nearest surface, edge or line at a pixel.
///
///     QaabBuilder boxes;  // once per model
///     boxes.Build(buffer.data());
///     QuantizedAxisAlignedBoxTree const tree(boxes.getOrigin(), boxes.getBvhQuantization(), boxes.getNodes());
///
///     ModelPicker picker;  // per mouse event
///     picker.SetViewProjection(view);
///     picker.SetPickPositionX(mouse.x);
///     picker.SetPickPositionY(mouse.y);
///     if (picker.PickSurfaces(buffer, {}, hiddenEntities, tree)) Select(picker.GetGeometryInstanceId());
///
/// The tree gives the candidate instances, in its depth-first order; those on disabled layers and those whose entity
/// the filter rejects are dropped; the rest is picked by the rules of `ModelInstancesPicker`.
///
/// A pick resets both ids to 0xFFFFFFFF and the distance to 1.7976931348623157e308 before all else; a failed pick
/// leaves them so, and keeps the point and the normal of the pick before it.
///
/// Of all picks: `transform` places the model in the world. The filter returns true for an entity that must NOT be
/// picked; an empty one throws std::bad_function_call at the first candidate that is on no disabled layer. A set is the
/// set of entities that must not be picked. `tree` must be the tree of this buffer.
/// RETURNS false for a buffer that is no model buffer or has no instances, and where nothing is hit.
/// COST: a walk over the tree, O(log n) nodes for a model that is spread out, and an exact test per candidate.
class QUORLAN_TOOLS_API ModelPicker {
public:
    using EntityFilter = std::function<bool(EntityIndex_t)>;
    using EntitySet = std::unordered_set<EntityIndex_t>;

    /// The camera. DEFAULT: the default camera of `ViewProjection`.
    void SetViewProjection(ViewProjection const& viewProjection) { viewProjection_ = viewProjection; }

    /// The pixel to pick at. DEFAULT: (320, 240), the centre of the default viewport.
    void SetPickPositionX(double x) { pickPositionX_ = x; }
    void SetPickPositionY(double y) { pickPositionY_ = y; }

    /// Planes in world space. Points with Dot(normal, p) > distance for one of them cannot be picked. DEFAULT: none.
    void SetDynamicClippingPlanes(std::vector<Plane3f> const& planes) { dynamicClippingPlanes_ = planes; }

    /// The names of layers whose instances are never picked, compared letter by letter. DEFAULT: none.
    ///
    /// A layer's name is compared as decoded from UTF-8 up to three bytes per character; a name with a longer sequence
    /// reads as empty and can be disabled by an empty name only.
    void SetDisabledLayers(std::vector<std::wstring> const& names) { disabledLayers_ = names; }

    /// Picks the nearest face.
    bool PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform, EntityFilter filter,
                      QuantizedAxisAlignedBoxTree const& tree);
    bool PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform, EntitySet const& excluded,
                      QuantizedAxisAlignedBoxTree const& tree);

    /// Picks the nearest edge, line or arc within `tolerance` pixels of the pick position. Where more than 1000
    /// instances reach into the pick box, only the 100 whose boxes' centres lie nearest to the pick ray are tested,
    /// nearest first.
    bool PickEdges(std::vector<char> const& buffer, AffineTransform const& transform, EntityFilter filter,
                   QuantizedAxisAlignedBoxTree const& tree, double tolerance);
    bool PickEdges(std::vector<char> const& buffer, AffineTransform const& transform, EntitySet const& excluded,
                   QuantizedAxisAlignedBoxTree const& tree, double tolerance);

    /// The same for the lines and arcs of graphics containers alone.
    bool PickLines(std::vector<char> const& buffer, AffineTransform const& transform, EntityFilter filter,
                   QuantizedAxisAlignedBoxTree const& tree, double tolerance);
    bool PickLines(std::vector<char> const& buffer, AffineTransform const& transform, EntitySet const& excluded,
                   QuantizedAxisAlignedBoxTree const& tree, double tolerance);

    /// As in `ModelInstancesPicker`; before any pick the distance is 1.7976931348623157e308.
    Vertex const& GetPickedPoint() const { return pickedPoint_; }
    Vertex const& GetPickedNormal() const { return pickedNormal_; }
    double GetShortestDistance() const { return shortestDistance_; }
    unsigned GetGeometryInstanceId() const { return geometryInstanceId_; }
    unsigned GetGeometryInstancePrimitiveId() const { return geometryInstancePrimitiveId_; }

private:
    QUORLAN_TOOLS_LOCAL void ResetResult();
    QUORLAN_TOOLS_LOCAL ModelInstancesPicker MakeInstancesPicker() const;
    QUORLAN_TOOLS_LOCAL void TakeResult(ModelInstancesPicker const& picker);
    QUORLAN_TOOLS_LOCAL bool PickInBox(std::vector<GeometryType> const& types, std::vector<char> const& buffer,
                                       AffineTransform const& transform, EntityFilter const& filter,
                                       QuantizedAxisAlignedBoxTree const& tree, double tolerance);

    std::vector<std::wstring> disabledLayers_;
    std::vector<Plane3f> dynamicClippingPlanes_;
    ViewProjection viewProjection_;
    double pickPositionX_ = 320;
    double pickPositionY_ = 240;
    double shortestDistance_ = std::numeric_limits<double>::max();
    Vertex pickedPoint_;
    Vertex pickedNormal_;
    unsigned geometryInstanceId_ = 0xFFFFFFFF;
    unsigned geometryInstancePrimitiveId_ = 0xFFFFFFFF;
};

}  // namespace Quorlan::Tools::Picking
