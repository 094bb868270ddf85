#pragma once

#include <GeometryObjectLib/Vector3f.h>
#include <Tools/LodLineBRepBuilder.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace Quorlan::Testing {

using GeometryObjectLib::Vector3f;

/// The sums of `LodLineBRepBuilder` in plain scalars. `findAxis(xx, yy, zz, xy, xz, yz)` takes the inertia tensor and
/// returns the eigenvector of its smallest eigenvalue.
template <class FindAxis>
Tools::LodLineBRepBuilder::line_s PlainLodLine(std::vector<Vector3f> const& vertices, FindAxis const& findAxis) {
    if (vertices.empty()) return {};
    auto const n = static_cast<float>(vertices.size());
    Vector3f m;
    for (auto const& p : vertices) m = m + p;
    m = m / n;

    float xx = 0, yy = 0, zz = 0, xy = 0, xz = 0, yz = 0;
    for (auto const& p : vertices) {
        Vector3f const d = p - m;
        xx += d.x * d.x;
        yy += d.y * d.y;
        zz += d.z * d.z;
        xy += d.x * d.y;
        xz += d.x * d.z;
        yz += d.y * d.z;
    }
    xx /= n, yy /= n, zz /= n, xy /= n, xz /= n, yz /= n;
    Vector3f const a = findAxis(yy + zz, xx + zz, xx + yy, -xy, -xz, -yz);

    float lowest = 3.4028235e38F, highest = -3.4028235e38F, distanceSquared = 0;
    for (auto const& p : vertices) {
        float const t = Dot(p - m, a);
        if (t < lowest) lowest = t;
        if (t > highest) highest = t;
        Vector3f const off = p - (m + t * a);
        if (Dot(off, off) > distanceSquared) distanceSquared = Dot(off, off);
    }
    Vector3f const start = m + lowest * a;
    Vector3f const end = m + highest * a;
    return {start.x, start.y, start.z, end.x, end.y, end.z, std::sqrt(distanceSquared)};
}

}  // namespace Quorlan::Testing
