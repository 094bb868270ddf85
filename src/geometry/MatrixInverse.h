#pragma once

#include <GeometryObjectLib/Matrix4.h>

namespace GeometryObjectLib {

/// The determinant of the whole matrix, by 2 x 2 minors of the upper and the lower half.
double Determinant(Matrix4 const& matrix);

/// The general inverse (adjugate over determinant). A singular matrix gives values that are not finite.
Matrix4 Inverse(Matrix4 const& matrix);

/// The same. RETURNS false, with `out` unchanged, if the determinant is zero or the inverse is not finite.
bool TryInverse(Matrix4 const& matrix, Matrix4& out);

}  // namespace GeometryObjectLib
