#pragma once

#include "picking/TreeQuery.h"

#include <GeometryObjectLib/Plane3f.h>

#include <cmath>
#include <vector>

/// The walk through a box tree as its rules are written, node by node in scalars.
namespace Quorlan::Testing {

using namespace Quorlan::Tools::Picking;

/// A node's box and the tests on it in scalars, one axis and one plane after the other.
struct ScalarBox {
    float c[3];
    float e[3];

    ScalarBox(QuantizedAxisAlignedBoxTree const& tree, GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s const& n) {
        Vertex const& q = tree.getBvhQuantization();
        double const quantization[] = {q.x, q.y, q.z};
        int const lo[] = {n.minX, n.minY, n.minZ};
        int const hi[] = {n.maxX, n.maxY, n.maxZ};
        for (int k = 0; k < 3; ++k) {
            float const halfCell = static_cast<float>(0.5 / quantization[k]);
            c[k] = static_cast<float>(hi[k] + lo[k]) * halfCell;
            e[k] = static_cast<float>(hi[k] - lo[k]) * halfCell;
        }
    }

    bool IsMetBy(float const (&o)[3], float const (&d)[3]) const {
        float const w[] = {o[0] - c[0], o[1] - c[1], o[2] - c[2]};
        for (int k = 0; k < 3; ++k) {
            if (std::abs(w[k]) > e[k] && w[k] * d[k] >= 0) return false;
        }
        float const a[] = {std::abs(d[0]), std::abs(d[1]), std::abs(d[2])};
        if (std::abs(d[1] * w[2] - d[2] * w[1]) > e[1] * a[2] + e[2] * a[1]) return false;
        if (std::abs(d[2] * w[0] - d[0] * w[2]) > e[0] * a[2] + e[2] * a[0]) return false;
        return !(std::abs(d[0] * w[1] - d[1] * w[0]) > e[0] * a[1] + e[1] * a[0]);
    }

    bool IsWithin(std::vector<Plane3f> const& planes) const {
        for (Plane3f const& p : planes) {
            float const height = p.normal.x * c[0] + p.normal.y * c[1] + p.normal.z * c[2];
            float const reach = std::abs(p.normal.x) * e[0] + std::abs(p.normal.y) * e[1] + std::abs(p.normal.z) * e[2];
            if (!(height - reach - p.distance <= 0)) return false;
        }
        return true;
    }
};

template <class IsMet>
std::vector<unsigned> WalkInScalars(QuantizedAxisAlignedBoxTree const& tree, IsMet const& isMet) {
    std::vector<unsigned> items;
    for (std::size_t i = 0; i < tree.getNodes().size();) {
        auto const& node = tree.getNodes()[i];
        bool const met = isMet(ScalarBox(tree, node));
        if (node.escapeOrItem >= 0 && met) items.push_back(static_cast<unsigned>(node.escapeOrItem));
        i += node.escapeOrItem >= 0 || met ? 1 : static_cast<std::size_t>(-node.escapeOrItem);
    }
    return items;
}

/// The items along a ray as found in scalars.
inline std::vector<unsigned> FindInScalars(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray) {
    Vertex const relative = ray.origin - tree.getOrigin();
    float const o[] = {static_cast<float>(relative.x), static_cast<float>(relative.y), static_cast<float>(relative.z)};
    float const d[] = {static_cast<float>(ray.direction.x), static_cast<float>(ray.direction.y),
                       static_cast<float>(ray.direction.z)};
    return WalkInScalars(tree, [&](ScalarBox const& box) { return box.IsMetBy(o, d); });
}

}  // namespace Quorlan::Testing
