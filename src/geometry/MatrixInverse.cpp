#include "geometry/MatrixInverse.h"

#include <algorithm>
#include <cmath>

namespace GeometryObjectLib {
namespace {

/// The 2 x 2 minors of rows 0 and 1 (`upper`) and of rows 2 and 3 (`lower`) for the column pairs
/// 01, 02, 03, 12, 13, 23: Laplace's expansion by two rows.
struct Minors {
    double upper[6];
    double lower[6];

    explicit Minors(Matrix4 const& a) {
        int pair = 0;
        for (std::size_t c = 0; c < 4; ++c) {
            for (std::size_t d = c + 1; d < 4; ++d, ++pair) {
                upper[pair] = a(0, c) * a(1, d) - a(1, c) * a(0, d);
                lower[pair] = a(2, c) * a(3, d) - a(3, c) * a(2, d);
            }
        }
    }

    double GetDeterminant() const {
        return upper[0] * lower[5] - upper[1] * lower[4] + upper[2] * lower[3] + upper[3] * lower[2] -
               upper[4] * lower[1] + upper[5] * lower[0];
    }
};

}  // namespace

double Determinant(Matrix4 const& matrix) { return Minors(matrix).GetDeterminant(); }

Matrix4 Inverse(Matrix4 const& a) {
    Minors const minors(a);
    double const* const s = minors.upper;
    double const* const c = minors.lower;

    Matrix4 adjugate;
    adjugate.m = {+a(1, 1) * c[5] - a(1, 2) * c[4] + a(1, 3) * c[3], -a(0, 1) * c[5] + a(0, 2) * c[4] - a(0, 3) * c[3],
                  +a(3, 1) * s[5] - a(3, 2) * s[4] + a(3, 3) * s[3], -a(2, 1) * s[5] + a(2, 2) * s[4] - a(2, 3) * s[3],
                  -a(1, 0) * c[5] + a(1, 2) * c[2] - a(1, 3) * c[1], +a(0, 0) * c[5] - a(0, 2) * c[2] + a(0, 3) * c[1],
                  -a(3, 0) * s[5] + a(3, 2) * s[2] - a(3, 3) * s[1], +a(2, 0) * s[5] - a(2, 2) * s[2] + a(2, 3) * s[1],
                  +a(1, 0) * c[4] - a(1, 1) * c[2] + a(1, 3) * c[0], -a(0, 0) * c[4] + a(0, 1) * c[2] - a(0, 3) * c[0],
                  +a(3, 0) * s[4] - a(3, 1) * s[2] + a(3, 3) * s[0], -a(2, 0) * s[4] + a(2, 1) * s[2] - a(2, 3) * s[0],
                  -a(1, 0) * c[3] + a(1, 1) * c[1] - a(1, 2) * c[0], +a(0, 0) * c[3] - a(0, 1) * c[1] + a(0, 2) * c[0],
                  -a(3, 0) * s[3] + a(3, 1) * s[1] - a(3, 2) * s[0], +a(2, 0) * s[3] - a(2, 1) * s[1] + a(2, 2) * s[0]};

    double const determinant = minors.GetDeterminant();
    for (double& element : adjugate.m) element /= determinant;
    return adjugate;
}

bool TryInverse(Matrix4 const& matrix, Matrix4& out) {
    Matrix4 const inverse = Inverse(matrix);
    if (!std::all_of(inverse.m.begin(), inverse.m.end(), [](double element) { return std::isfinite(element); })) {
        return false;
    }
    out = inverse;
    return true;
}

}  // namespace GeometryObjectLib
