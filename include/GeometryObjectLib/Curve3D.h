#pragma once

#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>

#include <cstdint>

namespace GeometryObjectLib {

/// A curve in space. Callers ask for its kind and its end points; the concrete class has everything else.
///
/// The kinds are 0 `InvalidCurve3D`, 1 `Line3D`, 2 `Polyline3D`, 3 `Arc3D`. Curves never change once they are made, so
/// that any number of threads may read one.
class QUORLAN_TOOLS_API Curve3D {
public:
    virtual ~Curve3D();

    virtual std::uint32_t GetKind() const = 0;

    /// The references stay valid as long as the curve does.
    virtual Vertex const& GetStartPoint() const = 0;
    virtual Vertex const& GetEndPoint() const = 0;

protected:
    Curve3D() = default;
    Curve3D(Curve3D const&) = default;
    Curve3D& operator=(Curve3D const&) = default;
};

}  // namespace GeometryObjectLib
