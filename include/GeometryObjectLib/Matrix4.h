#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <array>
#include <cstddef>

namespace GeometryObjectLib {

/// A 4 x 4 matrix of doubles, stored row by row, that maps column vectors: p' = M * p.
///
/// Columns 0 to 2 of an affine matrix are the images of the X, Y and Z axes, column 3 (elements 3, 7, 11) is the
/// translation, and the last row is (0, 0, 0, 1). A default-constructed matrix is the identity.
class Matrix4 {
public:
    /// Element (row, column) stands at 4 * row + column.
    std::array<double, 16> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    Matrix4() = default;

    /// Takes 16 values column by column: values 4k to 4k + 3 are column k. A null pointer or another count gives the
    /// identity.
    Matrix4(double const* columnByColumn, std::size_t count) {
        if (columnByColumn == nullptr || count != 16) return;
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t row = 0; row < 4; ++row) m[4 * row + column] = columnByColumn[4 * column + row];
        }
    }

    double operator()(std::size_t row, std::size_t column) const { return m[4 * row + column]; }
    double& operator()(std::size_t row, std::size_t column) { return m[4 * row + column]; }

    /// The first three elements of a column: an axis (0 to 2) or the translation (3).
    Vertex GetColumn(std::size_t column) const { return {m[column], m[4 + column], m[8 + column]}; }
};

/// The product that applies `b` first, then `a`. Each element is summed in the order k = 0 to 3.
inline Matrix4 operator*(Matrix4 const& a, Matrix4 const& b) {
    Matrix4 product;
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            product(row, column) = a(row, 0) * b(0, column) + a(row, 1) * b(1, column) + a(row, 2) * b(2, column) +
                                   a(row, 3) * b(3, column);
        }
    }
    return product;
}

/// Maps a point (w = 1); the fourth result is dropped, not divided by.
inline Vertex TransformPoint(Matrix4 const& a, Vertex const& p) {
    return {a(0, 0) * p.x + a(0, 1) * p.y + a(0, 2) * p.z + a(0, 3),
            a(1, 0) * p.x + a(1, 1) * p.y + a(1, 2) * p.z + a(1, 3),
            a(2, 0) * p.x + a(2, 1) * p.y + a(2, 2) * p.z + a(2, 3)};
}

/// Maps a direction (w = 0): the linear part alone.
inline Vertex TransformDirection(Matrix4 const& a, Vertex const& d) {
    return {a(0, 0) * d.x + a(0, 1) * d.y + a(0, 2) * d.z, a(1, 0) * d.x + a(1, 1) * d.y + a(1, 2) * d.z,
            a(2, 0) * d.x + a(2, 1) * d.y + a(2, 2) * d.z};
}

}  // namespace GeometryObjectLib
