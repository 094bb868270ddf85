#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>
#include <Tools/Picking/GeometryType.h>
#include <Tools/Picking/ViewProjection.h>

#include <vector>

namespace Quorlan::Tools::Picking {

struct InstanceFrame;

/// Picks the nearest surface, edge or line among listed instances of a model buffer.
///
///     ModelInstancesPicker picker;
///     picker.SetViewProjection(view);
///     picker.SetPickPositionX(mouse.x);
///     picker.SetPickPositionY(mouse.y);
///     if (picker.PickSurfaces(buffer, {}, {4, 8, 15})) Show(picker.GetPickedPoint());
///
/// `ModelPicker` finds the instances of a whole model for it. Each instance is tested in its own coordinates: the ray
/// is carried there in double precision and narrowed last, so that a pick is as exact a thousand kilometres from the
/// origin as close to it.
///
/// A pick resets both ids to 0xFFFFFFFF and the distance to 1.7976931348623157e308 before all else; a failed pick
/// leaves them so, and keeps the point and the normal of the pick before it.
///
/// REQUIRES of both picks: a trusted model buffer (its identifier is not tested) and instance ids that exist in it.
class QUORLAN_TOOLS_API ModelInstancesPicker {
public:
    /// The camera. DEFAULT: the default camera of `ViewProjection`.
    void SetViewProjection(ViewProjection const& viewProjection) { viewProjection_ = viewProjection; }

    /// The pixel to pick at. DEFAULT: (0, 0).
    void SetPickPositionX(double x) { pickPositionX_ = x; }
    void SetPickPositionY(double y) { pickPositionY_ = y; }

    /// Planes in world space. Points with Dot(normal, p) > distance for one of them cannot be picked. DEFAULT: none.
    void SetDynamicClippingPlanes(std::vector<Plane3f> const& planes) { dynamicClippingPlanes_ = planes; }

    /// Picks the nearest face. `transform` places the model in the world.
    ///
    /// Only faced sides are hit, both sides where the instance's material is two-sided. Of equal distances the instance
    /// first in the list wins. An instance whose definition is no BRep is passed over. An instance is not tested where
    /// the bounds of its definition lie beyond the best hit; that bound takes the ray for one of unit length, so that
    /// with a transform that makes the model smaller the order of the list can matter.
    /// RETURNS false for an empty buffer or where nothing is hit.
    bool PickSurfaces(std::vector<char> const& buffer, AffineTransform const& transform,
                      std::vector<unsigned> const& instanceIds);

    /// Picks the nearest edge of a BRep's faces or the nearest line or arc of a graphics container, of the types
    /// listed, that passes the pick position by less than `tolerance` pixels.
    ///
    /// From each definition one element is considered, the one closest to the ray in space; of those within the
    /// tolerance the one that comes first along the ray is picked. The normal is the image of the X axis.
    /// RETURNS false for an empty buffer or where nothing is hit.
    bool PickEdges(std::vector<GeometryType> const& types, std::vector<char> const& buffer,
                   AffineTransform const& transform, std::vector<unsigned> const& instanceIds, double tolerance);

    /// The picked point in world space.
    Vertex const& GetPickedPoint() const { return pickedPoint_; }
    /// The normal of the picked face in world space; its length is the scale of the transform.
    Vertex const& GetPickedNormal() const { return pickedNormal_; }
    /// The ray parameter of the picked point times the length of the first column of the transform: for a transform
    /// without scale and a direction of unit length, the distance. Before any pick 0.
    double GetShortestDistance() const { return shortestDistance_; }
    /// The picked instance, as it stands in the list.
    unsigned GetGeometryInstanceId() const { return geometryInstanceId_; }
    /// The picked face, or the face of the picked edge, or the number of the picked line or arc in its definition.
    unsigned GetGeometryInstancePrimitiveId() const { return geometryInstancePrimitiveId_; }

private:
    struct Hit;
    QUORLAN_TOOLS_LOCAL void ResetResult();
    QUORLAN_TOOLS_LOCAL void StoreResult(Hit const& hit, InstanceFrame const& frame, AffineTransform const& transform);

    std::vector<Plane3f> dynamicClippingPlanes_;
    ViewProjection viewProjection_;
    double pickPositionX_ = 0;
    double pickPositionY_ = 0;
    double shortestDistance_ = 0;
    Vertex pickedPoint_;
    Vertex pickedNormal_;
    unsigned geometryInstanceId_ = 0xFFFFFFFF;
    unsigned geometryInstancePrimitiveId_ = 0xFFFFFFFF;
};

}  // namespace Quorlan::Tools::Picking
