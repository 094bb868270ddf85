#pragma once

#include <GeometryObjectLib/Curve3D.h>

namespace GeometryObjectLib {

/// Stands where a curve could not be formed; both ends are (0, 0, 0).
class QUORLAN_TOOLS_API InvalidCurve3D : public Curve3D {
public:
    std::uint32_t GetKind() const override;
    Vertex const& GetStartPoint() const override;
    Vertex const& GetEndPoint() const override;
};

}  // namespace GeometryObjectLib
