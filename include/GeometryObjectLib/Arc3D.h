#pragma once

#include <GeometryObjectLib/Curve3D.h>

namespace GeometryObjectLib {

/// A circular arc, counter-clockwise about its axis. Both directions are kept at unit length.
class QUORLAN_TOOLS_API Arc3D : public Curve3D {
public:
    /// A point at the origin: radius and sweep 0, axis (0, 0, 1), start direction (1, 0, 0).
    Arc3D() = default;

    /// `axis` and `startDirection` of any length are normalised; a zero vector gives end points that are not numbers.
    /// A negative sweep runs clockwise.
    /// REQUIRES: `startDirection` is perpendicular to `axis`, else the arc is no circle.
    Arc3D(Vertex const& center, double radius, Vertex const& axis, Vertex const& startDirection, double sweepAngle);

    std::uint32_t GetKind() const override;
    Vertex const& GetStartPoint() const override;
    Vertex const& GetEndPoint() const override;

    Vertex const& GetCenter() const { return center_; }
    double GetRadius() const { return radius_; }
    Vertex const& GetAxis() const { return axis_; }
    Vertex const& GetStartDirection() const { return startDirection_; }  ///< from the centre to the start point
    double GetSweepAngle() const { return sweepAngle_; }                 ///< [rad]

private:
    Vertex center_;
    double radius_ = 0;
    Vertex axis_{0, 0, 1};
    Vertex startDirection_{1, 0, 0};
    double sweepAngle_ = 0;
    Vertex startPoint_;
    Vertex endPoint_;
};

}  // namespace GeometryObjectLib
