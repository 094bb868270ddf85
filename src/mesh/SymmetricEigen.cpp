#include "mesh/SymmetricEigen.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Quorlan::Tools {
namespace {

constexpr int kMostSweeps = 30;  ///< per eigenvalue; two or three are usual

/// A tridiagonal matrix and the orthogonal basis that leads to it.
struct Tridiagonal {
    std::array<float, 3> diagonal;
    std::array<float, 3> offDiagonal;  ///< between i and i + 1; the third is working space
    std::array<Vector3f, 3> basis{Vector3f{1, 0, 0}, Vector3f{0, 1, 0}, Vector3f{0, 0, 1}};
};

/// Reflects y and z so that the element between x and z vanishes.
Tridiagonal Tridiagonalize(SymmetricMatrix3 const& m) {
    Tridiagonal t;
    if (m.xz * m.xz < std::numeric_limits<float>::min()) {
        t.diagonal = {m.xx, m.yy, m.zz};
        t.offDiagonal = {m.xy, m.yz, 0};
        return t;
    }
    float const length = std::sqrt(m.xy * m.xy + m.xz * m.xz);
    float const u = m.xy / length;
    float const w = m.xz / length;
    float const turn = 2 * u * m.yz + w * (m.zz - m.yy);
    t.diagonal = {m.xx, m.yy + w * turn, m.zz - w * turn};
    t.offDiagonal = {length, m.yz - u * turn, 0};
    t.basis[1] = {0, u, w};
    t.basis[2] = {0, w, -u};
    return t;
}

/// The first index from `first` on at which the matrix falls apart; 2 if it does not.
int FindSplit(Tridiagonal const& t, int first) {
    for (int m = first; m < 2; ++m) {
        float const size = std::fabs(t.diagonal[m]) + std::fabs(t.diagonal[m + 1]);
        if (std::fabs(t.offDiagonal[m]) <= std::numeric_limits<float>::epsilon() * size) return m;
    }
    return 2;
}

/// One QL sweep over rows `first` to `last`, shifted by the eigenvalue of the leading 2 x 2 block that is closer to
/// its corner. The bulge is chased upwards by plane rotations.
void Sweep(Tridiagonal& t, int first, int last) {
    auto& d = t.diagonal;
    auto& f = t.offDiagonal;
    float const ratio = (d[first + 1] - d[first]) / (2 * f[first]);
    float const root = std::copysign(std::sqrt(ratio * ratio + 1), ratio);
    float bulge = d[last] - d[first] + f[first] / (ratio + root);
    float sine = 1;
    float cosine = 1;
    float shift = 0;
    for (int i = last - 1; i >= first; --i) {
        float const opposite = sine * f[i];
        float const adjacent = cosine * f[i];
        float const length = std::sqrt(opposite * opposite + bulge * bulge);
        f[i + 1] = length;
        if (length == 0) {  // the rows fall apart here
            d[i + 1] -= shift;
            f[last] = 0;
            return;
        }
        sine = opposite / length;
        cosine = bulge / length;
        float const corner = d[i + 1] - shift;
        float const gain = (d[i] - corner) * sine + 2 * cosine * adjacent;
        shift = sine * gain;
        d[i + 1] = corner + shift;
        bulge = cosine * gain - adjacent;
        Vector3f const lower = t.basis[i];
        Vector3f const upper = t.basis[i + 1];
        t.basis[i + 1] = lower * sine + upper * cosine;
        t.basis[i] = lower * cosine - upper * sine;
    }
    d[first] -= shift;
    f[first] = bulge;
    f[last] = 0;
}

void SwapIfAscending(SymmetricEigen3& e, std::size_t a, std::size_t b) {
    if (e.values[a] < e.values[b]) {
        std::swap(e.values[a], e.values[b]);
        std::swap(e.vectors[a], e.vectors[b]);
    }
}

}  // namespace

SymmetricEigen3 Decompose(SymmetricMatrix3 const& m) {
    float const scale = std::max(
        {std::fabs(m.xx), std::fabs(m.yy), std::fabs(m.zz), std::fabs(m.xy), std::fabs(m.xz), std::fabs(m.yz)});
    if (scale == 0) return {{0, 0, 0}, {Vector3f{1, 0, 0}, Vector3f{0, 1, 0}, Vector3f{0, 0, 1}}};

    Tridiagonal t =
        Tridiagonalize({m.xx / scale, m.yy / scale, m.zz / scale, m.xy / scale, m.xz / scale, m.yz / scale});
    for (int first = 0; first < 2; ++first) {
        for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
            int const last = FindSplit(t, first);
            if (last == first) break;
            Sweep(t, first, last);
        }
    }

    SymmetricEigen3 result{{t.diagonal[0] * scale, t.diagonal[1] * scale, t.diagonal[2] * scale}, t.basis};
    SwapIfAscending(result, 0, 1);
    SwapIfAscending(result, 1, 2);
    SwapIfAscending(result, 0, 1);
    // The last axis keeps its sign: it is the one that is used.
    if (Dot(Cross(result.vectors[0], result.vectors[1]), result.vectors[2]) < 0) {
        result.vectors[0] = result.vectors[0] * -1.0F;
    }
    return result;
}

}  // namespace Quorlan::Tools
