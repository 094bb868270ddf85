#include "mesh/ConvexEars.h"

namespace Quorlan::Tools {
namespace {

/// Twice the area of p, q, r by the formula and in the sign of earcut: negative where they turn left.
double Area(PlanePoint const& p, PlanePoint const& q, PlanePoint const& r) {
    double const px = p[0], py = p[1], qx = q[0], qy = q[1], rx = r[0], ry = r[1];
    return (qy - py) * (rx - qx) - (qx - px) * (ry - qy);
}

/// Earcut keeps the order of a ring for which this sum is positive and reverses others.
bool KeepsOrder(PlanePoint const* points, std::uint32_t count) {
    double sum = 0;
    for (std::uint32_t i = 0, j = count - 1; i < count; j = i++) {
        double const ix = points[i][0], iy = points[i][1], jx = points[j][0], jy = points[j][1];
        sum += (jx - ix) * (iy + jy);
    }
    return sum > 0;
}

}  // namespace

bool ConvexEars::TurnsLeft(PlanePoint const* points, std::uint16_t corner) const {
    return Area(points[previous_[corner]], points[corner], points[next_[corner]]) < 0;
}

bool ConvexEars::Cut(PlanePoint const* points, std::uint32_t count, std::vector<std::uint16_t>& triangles) {
    if (count < 3 || count > 65535) return false;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!(Area(points[i == 0 ? count - 1 : i - 1], points[i], points[i + 1 == count ? 0 : i + 1]) < 0))
            return false;
    }
    if (!KeepsOrder(points, count)) return false;

    previous_.resize(count);
    next_.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        previous_[i] = static_cast<std::uint16_t>(i == 0 ? count - 1 : i - 1);
        next_[i] = static_cast<std::uint16_t>(i + 1 == count ? 0 : i + 1);
    }

    std::size_t const sizeBefore = triangles.size();
    triangles.resize(sizeBefore + 3 * (count - 2));
    std::uint16_t* triangle = triangles.data() + sizeBefore;
    auto ear = static_cast<std::uint16_t>(count - 1);
    for (std::uint32_t left = count; left >= 3; --left, triangle += 3) {
        std::uint16_t const before = previous_[ear];
        std::uint16_t const after = next_[ear];
        triangle[0] = before;
        triangle[1] = ear;
        triangle[2] = after;
        next_[before] = after;
        previous_[after] = before;
        if (left > 3 && !(TurnsLeft(points, before) && TurnsLeft(points, after))) {
            triangles.resize(sizeBefore);
            return false;
        }
        ear = next_[after];
    }
    return true;
}

}  // namespace Quorlan::Tools
