#pragma once

#include <GeometryObjectLib/Matrix4.h>
#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>

namespace GeometryObjectLib {

/// An affine map: the matrix that does the work, and its decomposition for callers that want to read or show it.
///
/// The tools read the matrix only. The members below it say the same as translation(offset) * rotation(axis, angle) *
/// scaling(scale); a default-constructed transform is the identity.
struct AffineTransform {
    Matrix4 matrix;
    Vertex scale{1, 1, 1};  ///< lengths of the axes; x is negative where the matrix mirrors
    Vertex axis{0, 0, 1};   ///< unit axis of the rotation
    double angle = 0;       ///< [rad] of the rotation, 0 to pi
    Vertex offset;          ///< the translation

    /// The transform of a matrix, with the decomposition computed from it. Shear, which the decomposition cannot
    /// express, and axes of zero length leave the rotation at its default.
    QUORLAN_TOOLS_API static AffineTransform FromMatrix(Matrix4 const& matrix);
};

}  // namespace GeometryObjectLib
