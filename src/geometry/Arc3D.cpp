#include <GeometryObjectLib/Arc3D.h>

#include <cmath>

namespace GeometryObjectLib {
namespace {

constexpr std::uint32_t kArc = 3;

}  // namespace

Arc3D::Arc3D(Vertex const& center, double radius, Vertex const& axis, Vertex const& startDirection, double sweepAngle)
    : center_(center),
      radius_(radius),
      axis_(axis / Length(axis)),
      startDirection_(startDirection / Length(startDirection)),
      sweepAngle_(sweepAngle) {
    Vertex const yDirection = Cross(axis_, startDirection_);
    startPoint_ = center_ + radius_ * startDirection_;
    endPoint_ = center_ + radius_ * (std::cos(sweepAngle_) * startDirection_ + std::sin(sweepAngle_) * yDirection);
}

std::uint32_t Arc3D::GetKind() const { return kArc; }
Vertex const& Arc3D::GetStartPoint() const { return startPoint_; }
Vertex const& Arc3D::GetEndPoint() const { return endPoint_; }

}  // namespace GeometryObjectLib
