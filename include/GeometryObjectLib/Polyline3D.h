#pragma once

#include <GeometryObjectLib/Curve3D.h>

#include <vector>

namespace GeometryObjectLib {

/// The straight segments between consecutive points. The ends are the first and the last point; without points both are
/// (0, 0, 0).
class QUORLAN_TOOLS_API Polyline3D : public Curve3D {
public:
    explicit Polyline3D(std::vector<Vertex> points);

    std::uint32_t GetKind() const override;
    Vertex const& GetStartPoint() const override;
    Vertex const& GetEndPoint() const override;

    std::uint32_t GetPointCount() const { return static_cast<std::uint32_t>(points_.size()); }
    std::vector<Vertex> const& GetPoints() const { return points_; }

private:
    std::vector<Vertex> points_;
};

}  // namespace GeometryObjectLib
