#pragma once

#include <GeometryObjectLib/Curve3D.h>

namespace GeometryObjectLib {

/// The straight segment between two points.
class QUORLAN_TOOLS_API Line3D : public Curve3D {
public:
    Line3D(Vertex const& start, Vertex const& end);

    std::uint32_t GetKind() const override;
    Vertex const& GetStartPoint() const override;
    Vertex const& GetEndPoint() const override;

private:
    Vertex start_;
    Vertex end_;
};

}  // namespace GeometryObjectLib
