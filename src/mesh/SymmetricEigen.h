#pragma once

#include <GeometryObjectLib/Vector3f.h>

#include <array>

namespace Quorlan::Tools {

using GeometryObjectLib::Vector3f;

/// A symmetric 3 x 3 matrix.
struct SymmetricMatrix3 {
    float xx = 0, yy = 0, zz = 0;
    float xy = 0, xz = 0, yz = 0;
};

/// Eigenvalues in descending order, and the eigenvector of each: a right-handed orthonormal basis.
struct SymmetricEigen3 {
    std::array<float, 3> values;
    std::array<Vector3f, 3> vectors;
};

/// Decomposes in single precision, to within 5e-7 of the largest value's size. A diagonal matrix gives the coordinate
/// axes exactly; among equal values the axes keep their order.
///
/// Householder reduction to tridiagonal form and QL iterations with implicit shifts (Martin, Reinsch, Wilkinson,
/// "Householder's Tridiagonalization of a Symmetric Matrix", 1968; Dubrulle, Martin, Wilkinson, "The Implicit QL
/// Algorithm", 1968).
///
/// Four matrices are decomposed side by side in vector lanes, which takes little longer than one: an iteration is one
/// long chain of roots and quotients. Each gets the bits that it gets alone.
std::array<SymmetricEigen3, 4> DecomposeFour(std::array<SymmetricMatrix3, 4> const& matrices);

inline SymmetricEigen3 Decompose(SymmetricMatrix3 const& matrix) { return DecomposeFour({matrix})[0]; }

}  // namespace Quorlan::Tools
