#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>

#include <vector>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Vertex;

/// The camera through which a user looks at a model, and the size of the viewport.
///
///     auto const view = ViewProjection::FromPerspective({0, -10, 2}, {0, 1, 0}, {0, 0, 1}, 1.0, 1280, 720);
///     Vertex origin, direction;
///     ViewToWorld(view, 640, 360, origin, direction);  // the ray through the viewport's centre
///
/// Pixels: x grows to the right, y grows downward, the centre is (sizeX / 2, sizeY / 2). World space is right-handed
/// and in the model's unit. Nothing is checked: a direction of zero length or parallel to `up` gives vectors that are
/// not finite.
class QUORLAN_TOOLS_API ViewProjection {
public:
    /// A perspective camera of 60 degrees on 640 x 480 pixels, without a placement: all four vectors are zero.
    ViewProjection() = default;

    /// A parallel camera. `scale` is in model units per pixel. The angle, which it does not use, becomes 0.
    static ViewProjection FromOrthogonal(Vertex const& location, Vertex const& direction, Vertex const& up,
                                         double scale, double sizeX, double sizeY);

    /// A perspective camera. `angle` [rad] spans the larger of the two sizes. The scale, which it does not use,
    /// becomes 0.
    static ViewProjection FromPerspective(Vertex const& location, Vertex const& direction, Vertex const& up,
                                          double angle, double sizeX, double sizeY);

    /// Places the camera and leaves all else. `direction` is stored as given; pass a unit vector. `up` need not be
    /// perpendicular to it: the stored up and right vectors are made so, and of unit length.
    void SetPlacement(Vertex const& location, Vertex const& direction, Vertex const& up);

    /// These store the value as given and compute nothing anew.
    void SetIsPerspective(bool isPerspective) { isPerspective_ = isPerspective; }
    void SetAngle(double angle) { angle_ = angle; }
    void SetScale(double scale) { scale_ = scale; }
    void SetSizeX(double sizeX) { sizeX_ = sizeX; }
    void SetSizeY(double sizeY) { sizeY_ = sizeY; }

    Vertex const& GetLocation() const { return location_; }
    Vertex const& GetDirection() const { return direction_; }
    Vertex const& GetUpVector() const { return up_; }
    Vertex const& GetRightVector() const { return right_; }
    bool IsPerspective() const { return isPerspective_; }
    double GetAngle() const { return angle_; }
    double GetScale() const { return scale_; }
    double GetSizeX() const { return sizeX_; }
    double GetSizeY() const { return sizeY_; }

private:
    Vertex location_;
    Vertex direction_;
    Vertex up_;
    Vertex right_;
    bool isPerspective_ = true;
    double angle_ = 1.0471975511965976;  // [rad], 60 degrees
    double scale_ = 1.0;                 // [model units per pixel]
    double sizeX_ = 640.0;               // [pixels]
    double sizeY_ = 480.0;
};

/// The world ray through pixel (x, y). A perspective ray starts at the camera and its direction is of unit length; the
/// rays of a parallel camera start on the plane through its location and all have the stored direction, bit for bit.
QUORLAN_TOOLS_API void ViewToWorld(ViewProjection const& view, double x, double y, Vertex& origin, Vertex& direction);

/// The pixel at which a world point is seen. A perspective camera sees no point less than 1e-7 in front of it: both
/// coordinates are then 1.7976931348623157e308, the largest double. A parallel camera also shows what is behind it.
QUORLAN_TOOLS_API void WorldToView(ViewProjection const& view, Vertex const& point, double& x, double& y);

/// The four sides of the pick box, `halfSize` pixels each way around pixel (x, y), in the space of a model that
/// `transform` places in the world. RETURNS left, top, right, bottom; their normals point out of the box, a point is
/// inside where Dot(normal, point) <= distance for all four. A transform that cannot be inverted counts as identity.
QUORLAN_TOOLS_API std::vector<Plane3f> CreateClippingPlanes(ViewProjection const& view,
                                                            AffineTransform const& transform, double x, double y,
                                                            double halfSize);

}  // namespace Quorlan::Tools::Picking
