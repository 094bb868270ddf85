#include "mesh/SymmetricEigen.h"

#include "mesh/LaneTools.h"

#include <limits>
#include <utility>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::VectorLanes;

constexpr int kMostSweeps = 30;  ///< per eigenvalue; two or three are usual

VectorLanes<Float4> Select(LaneMask mask, VectorLanes<Float4> const& a, VectorLanes<Float4> const& b) {
    return {Select(mask, a.x, b.x), Select(mask, a.y, b.y), Select(mask, a.z, b.z)};
}

/// Four symmetric matrices.
struct MatrixLanes {
    Float4 xx, yy, zz, xy, xz, yz;

    explicit MatrixLanes(std::array<SymmetricMatrix3, 4> const& m)
        : xx(m[0].xx, m[1].xx, m[2].xx, m[3].xx),
          yy(m[0].yy, m[1].yy, m[2].yy, m[3].yy),
          zz(m[0].zz, m[1].zz, m[2].zz, m[3].zz),
          xy(m[0].xy, m[1].xy, m[2].xy, m[3].xy),
          xz(m[0].xz, m[1].xz, m[2].xz, m[3].xz),
          yz(m[0].yz, m[1].yz, m[2].yz, m[3].yz) {}

    /// Divides by the largest element and returns it; a zero matrix stays as it is.
    Float4 Normalize() {
        Float4 scale = Max(Max(Abs(xx), Abs(yy)), Max(Abs(zz), Max(Abs(xy), Max(Abs(xz), Abs(yz)))));
        scale = Select(IsZero(scale), Float4(1.0F), scale);
        for (Float4* const element : {&xx, &yy, &zz, &xy, &xz, &yz}) *element = *element / scale;
        return scale;
    }
};

/// What a chase of the bulge carries from row to row.
struct Chase {
    Float4 bulge;
    Float4 sine{1.0F};
    Float4 cosine{1.0F};
    Float4 shift{0.0F};
};

/// Four tridiagonal matrices, and the orthogonal bases that lead to them. Rows i and i + 1 are split where the element
/// between them counts as zero.
class Tridiagonal {
public:
    /// Reflects y and z so that the element between x and z vanishes.
    explicit Tridiagonal(MatrixLanes const& m) {
        LaneMask const isDone = m.xz * m.xz < Float4(std::numeric_limits<float>::min());
        Float4 const length = Sqrt(m.xy * m.xy + m.xz * m.xz);
        Float4 const u = m.xy / length;
        Float4 const w = m.xz / length;
        Float4 const turn = Float4(2.0F) * u * m.yz + w * (m.zz - m.yy);
        Float4 const zero(0.0F);
        Float4 const one(1.0F);
        diagonal_ = {m.xx, Select(isDone, m.yy, m.yy + w * turn), Select(isDone, m.zz, m.zz - w * turn)};
        offDiagonal_ = {Select(isDone, m.xy, length), Select(isDone, m.yz, m.yz - u * turn)};
        basis_[0] = {one, zero, zero};
        basis_[1] = {zero, Select(isDone, one, u), Select(isDone, zero, w)};
        basis_[2] = {zero, Select(isDone, zero, w), Select(isDone, one, -u)};
    }

    void Diagonalize() {
        for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
            LaneMask const active = !IsSplit(0);
            if (!IsAny(active)) break;
            SweepFromTop(active);
        }
        for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
            LaneMask const active = !IsSplit(1);
            if (!IsAny(active)) break;
            SweepLastRows(active);
        }
    }

    std::array<Float4, 3> const& GetDiagonal() const { return diagonal_; }
    std::array<VectorLanes<Float4>, 3> const& GetBasis() const { return basis_; }

private:
    LaneMask IsSplit(std::size_t i) const {
        Float4 const size = Abs(diagonal_[i]) + Abs(diagonal_[i + 1]);
        return Abs(offDiagonal_[i]) <= Float4(std::numeric_limits<float>::epsilon()) * size;
    }

    /// The last row's diagonal, shifted by the eigenvalue of the 2 x 2 block at `i` that is closer to its corner.
    Float4 StartBulge(std::size_t i, Float4 const& lastDiagonal) const {
        Float4 const half = (diagonal_[i + 1] - diagonal_[i]) * Float4(0.5F);
        Float4 const square = offDiagonal_[i] * offDiagonal_[i];
        Float4 const root = Sqrt(half * half + square);
        Float4 const away = half + Select(half < Float4(0.0F), -root, root);
        Float4 const shift = Select(IsZero(away), Float4(0.0F), square / away);  // zero only if the squares underflow
        return lastDiagonal - diagonal_[i] + shift;
    }

    /// One QL sweep over all rows, or over the first two where the third is split off.
    void SweepFromTop(LaneMask active) {
        LaneMask const isShort = active & IsSplit(1);
        Chase chase{StartBulge(0, Select(isShort, diagonal_[1], diagonal_[2]))};
        LaneMask running = Rotate(1, active & !isShort, chase);
        running = Rotate(0, running | isShort, chase);
        diagonal_[0] = Select(running, diagonal_[0] - chase.shift, diagonal_[0]);
        offDiagonal_[0] = Select(running, chase.bulge, offDiagonal_[0]);
        offDiagonal_[1] = Select(isShort, Float4(0.0F), offDiagonal_[1]);
    }

    void SweepLastRows(LaneMask active) {
        Chase chase{StartBulge(1, diagonal_[2])};
        LaneMask const running = Rotate(1, active, chase);
        diagonal_[1] = Select(running, diagonal_[1] - chase.shift, diagonal_[1]);
        offDiagonal_[1] = Select(running, chase.bulge, offDiagonal_[1]);
    }

    /// Rotates rows i and i + 1 so that the bulge moves up. Returns the lanes that go on: where there is nothing to
    /// rotate, the rows fall apart here.
    LaneMask Rotate(std::size_t i, LaneMask active, Chase& chase) {
        Float4 const opposite = chase.sine * offDiagonal_[i];
        Float4 const adjacent = chase.cosine * offDiagonal_[i];
        Float4 const length = Sqrt(opposite * opposite + chase.bulge * chase.bulge);
        if (i == 0) offDiagonal_[1] = Select(active, length, offDiagonal_[1]);
        Float4 const corner = diagonal_[i + 1] - chase.shift;
        LaneMask const isVanished = active & IsZero(length);
        diagonal_[i + 1] = Select(isVanished, corner, diagonal_[i + 1]);

        LaneMask const running = active & !isVanished;
        Float4 const sine = opposite / length;
        Float4 const cosine = chase.bulge / length;
        Float4 const gain = (diagonal_[i] - corner) * sine + Float4(2.0F) * cosine * adjacent;
        Float4 const shift = sine * gain;
        diagonal_[i + 1] = Select(running, corner + shift, diagonal_[i + 1]);
        chase.sine = Select(running, sine, chase.sine);
        chase.cosine = Select(running, cosine, chase.cosine);
        chase.shift = Select(running, shift, chase.shift);
        chase.bulge = Select(running, cosine * gain - adjacent, chase.bulge);

        auto const lower = basis_[i];
        auto const upper = basis_[i + 1];
        basis_[i + 1] = Select(running, lower * sine + upper * cosine, upper);
        basis_[i] = Select(running, lower * cosine - upper * sine, lower);
        return running;
    }

    std::array<Float4, 3> diagonal_;
    std::array<Float4, 2> offDiagonal_;
    std::array<VectorLanes<Float4>, 3> basis_;
};

void SwapIfAscending(SymmetricEigen3& e, std::size_t a, std::size_t b) {
    if (e.values[a] < e.values[b]) {
        std::swap(e.values[a], e.values[b]);
        std::swap(e.vectors[a], e.vectors[b]);
    }
}

void Sort(SymmetricEigen3& e) {
    SwapIfAscending(e, 0, 1);
    SwapIfAscending(e, 1, 2);
    SwapIfAscending(e, 0, 1);
    // The last axis keeps its sign: it is the one that is used.
    if (Dot(Cross(e.vectors[0], e.vectors[1]), e.vectors[2]) < 0) e.vectors[0] = e.vectors[0] * -1.0F;
}

}  // namespace

std::array<SymmetricEigen3, 4> DecomposeFour(std::array<SymmetricMatrix3, 4> const& matrices) {
    MatrixLanes lanes(matrices);
    Float4 const scale = lanes.Normalize();
    Tridiagonal tridiagonal(lanes);
    tridiagonal.Diagonalize();

    std::array<SymmetricEigen3, 4> results;
    for (std::size_t k = 0; k < 3; ++k) {
        auto const values = ToArray(tridiagonal.GetDiagonal()[k] * scale);
        auto const x = ToArray(tridiagonal.GetBasis()[k].x);
        auto const y = ToArray(tridiagonal.GetBasis()[k].y);
        auto const z = ToArray(tridiagonal.GetBasis()[k].z);
        for (std::size_t i = 0; i < 4; ++i) {
            results[i].values[k] = values[i];
            results[i].vectors[k] = {x[i], y[i], z[i]};
        }
    }
    for (auto& result : results) Sort(result);
    return results;
}

}  // namespace Quorlan::Tools
