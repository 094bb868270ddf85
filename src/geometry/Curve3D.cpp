#include <GeometryObjectLib/Curve3D.h>
#include <GeometryObjectLib/InvalidCurve3D.h>
#include <GeometryObjectLib/Line3D.h>
#include <GeometryObjectLib/Polyline3D.h>

#include <utility>

namespace GeometryObjectLib {
namespace {

enum CurveKind : std::uint32_t { kInvalidCurve = 0, kLine = 1, kPolyline = 2 };

}  // namespace

Curve3D::~Curve3D() = default;

std::uint32_t InvalidCurve3D::GetKind() const { return kInvalidCurve; }

Vertex const& InvalidCurve3D::GetStartPoint() const {
    static Vertex const zero;
    return zero;
}

Vertex const& InvalidCurve3D::GetEndPoint() const {
    static Vertex const zero;
    return zero;
}

Line3D::Line3D(Vertex const& start, Vertex const& end) : start_(start), end_(end) {}

std::uint32_t Line3D::GetKind() const { return kLine; }
Vertex const& Line3D::GetStartPoint() const { return start_; }
Vertex const& Line3D::GetEndPoint() const { return end_; }

Polyline3D::Polyline3D(std::vector<Vertex> points) : points_(std::move(points)) {}

std::uint32_t Polyline3D::GetKind() const { return kPolyline; }

Vertex const& Polyline3D::GetStartPoint() const {
    static Vertex const zero;
    return points_.empty() ? zero : points_.front();
}

Vertex const& Polyline3D::GetEndPoint() const { return points_.empty() ? GetStartPoint() : points_.back(); }

}  // namespace GeometryObjectLib
