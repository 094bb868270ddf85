#pragma once

#include "support/RawModel.h"

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

/// The analysis of a model in the plainest form: one instance after the other, one operation after the other, nothing
/// shared with the library but the value types. What the tools must reproduce to the last bit, and the yardstick of
/// their benchmarks.
namespace Quorlan::Testing {

using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

/// A frame of axes in `Real`: float for boxes, double for matrices.
template <class Real>
struct PlainFrame {
    std::array<double, 3> origin{};
    std::array<std::array<Real, 3>, 3> axes{};  ///< axes[k] is the image of the k-th unit vector
};

template <class Real>
std::array<Real, 3> PlainCross(std::array<Real, 3> const& a, std::array<Real, 3> const& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

template <class Real>
void PlainNormalize(std::array<Real, 3>& v) {
    Real const length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    for (Real& component : v) component = component / length;
}

inline PlainFrame<float> ToPlainFrame(PlacementRecord const& placement) {
    PlainFrame<float> frame{placement.origin, {placement.xAxis, placement.yAxis}};
    frame.axes[2] = PlainCross(placement.xAxis, placement.yAxis);
    for (auto& axis : frame.axes) PlainNormalize(axis);
    return frame;
}

inline PlainFrame<float> ToPlainFrame(AffineTransform const& transform) {
    auto const& m = transform.matrix.m;
    PlainFrame<float> frame{{m[3], m[7], m[11]}, {}};
    for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t r = 0; r < 3; ++r) frame.axes[k][r] = static_cast<float>(m[4 * r + k]);
    }
    return frame;
}

inline PlainFrame<double> ToPlainDoubleFrame(PlacementRecord const& placement) {
    PlainFrame<double> frame{placement.origin, {}};
    for (std::size_t r = 0; r < 3; ++r) {
        frame.axes[0][r] = placement.xAxis[r];
        frame.axes[1][r] = placement.yAxis[r];
    }
    frame.axes[2] = PlainCross(frame.axes[0], frame.axes[1]);
    frame.axes[1] = PlainCross(frame.axes[2], frame.axes[0]);
    for (auto& axis : frame.axes) PlainNormalize(axis);
    return frame;
}

/// Applies `b` first, then `a`.
template <class Real>
PlainFrame<Real> PlainCompose(PlainFrame<Real> const& a, PlainFrame<Real> const& b) {
    PlainFrame<Real> c;
    for (std::size_t r = 0; r < 3; ++r) {
        c.origin[r] = a.origin[r] + double{a.axes[0][r]} * b.origin[0] + double{a.axes[1][r]} * b.origin[1] +
                      double{a.axes[2][r]} * b.origin[2];
        for (std::size_t k = 0; k < 3; ++k) {
            c.axes[k][r] = a.axes[0][r] * b.axes[k][0] + a.axes[1][r] * b.axes[k][1] + a.axes[2][r] * b.axes[k][2];
        }
    }
    return c;
}

inline AxisAlignedBox3 PlainTransformBox(PlainFrame<float> const& frame, Vector3f const& lo, Vector3f const& hi) {
    std::array<float, 3> const l{lo.x, lo.y, lo.z};
    std::array<float, 3> const h{hi.x, hi.y, hi.z};
    std::array<double, 3> center{};
    std::array<double, 3> half{};
    for (std::size_t r = 0; r < 3; ++r) {
        float lower = 0;
        float upper = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            float const a = frame.axes[j][r] * l[j];
            float const b = frame.axes[j][r] * h[j];
            lower = j == 0 ? std::min(a, b) : lower + std::min(a, b);
            upper = j == 0 ? std::max(a, b) : upper + std::max(a, b);
        }
        double const lowerEnd = static_cast<double>(lower) + frame.origin[r];
        double const upperEnd = static_cast<double>(upper) + frame.origin[r];
        center[r] = (upperEnd + lowerEnd) / 2.0;
        half[r] = (upperEnd - lowerEnd) / 2.0;
    }
    return {{center[0], center[1], center[2]}, {half[0], half[1], half[2]}};
}

inline std::vector<AxisAlignedBox3> PlainBoxes(RawModel const& model, AffineTransform const& transform = {}) {
    std::vector<AxisAlignedBox3> boxes;
    boxes.reserve(model.instances->size());
    auto const caller = ToPlainFrame(transform);
    for (InstanceRecord const& instance : *model.instances) {
        auto const placement = ToPlainFrame((*model.placements)[instance.placementIndex]);
        auto const entity = ToPlainFrame((*model.entities)[instance.entityIndex]);
        RawDefinition const& definition = (*model.definitions)[instance.definitionIndex];
        auto const world = PlainCompose(caller, PlainCompose(entity, placement));
        boxes.push_back(PlainTransformBox(world, definition.lo, definition.hi));
    }
    return boxes;
}

/// The world matrices; with a transform, transform * matrix.
inline std::vector<Matrix4> PlainPlacements(RawModel const& model, Matrix4 const* transform = nullptr) {
    std::vector<Matrix4> matrices;
    matrices.reserve(model.instances->size());
    for (InstanceRecord const& instance : *model.instances) {
        auto const placement = ToPlainDoubleFrame((*model.placements)[instance.placementIndex]);
        auto const frame = PlainCompose(ToPlainDoubleFrame((*model.entities)[instance.entityIndex]), placement);
        Matrix4 matrix;
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t k = 0; k < 3; ++k) matrix.m[4 * r + k] = frame.axes[k][r];
            matrix.m[4 * r + 3] = frame.origin[r];
        }
        if (transform != nullptr) {
            Matrix4 product;
            for (std::size_t r = 0; r < 4; ++r) {
                for (std::size_t c = 0; c < 4; ++c) {
                    double sum = transform->m[4 * r] * matrix.m[c];
                    for (std::size_t k = 1; k < 4; ++k) sum += transform->m[4 * r + k] * matrix.m[4 * k + c];
                    product.m[4 * r + c] = sum;
                }
            }
            matrix = product;
        }
        matrices.push_back(matrix);
    }
    return matrices;
}

/// The quantized tree, by the recursion that defines it. REQUIRES: at least one box.
class PlainTree {
public:
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes;
    std::array<double, 3> origin{};
    std::array<double, 3> quantization{};

    explicit PlainTree(std::vector<AxisAlignedBox3> const& boxes);

private:
    struct Item {
        std::array<float, 3> center;
        std::array<float, 3> half;
        std::uint32_t instance;
    };

    std::size_t Write(std::size_t begin, std::size_t end, std::size_t node);
    std::size_t Split(std::size_t begin, std::size_t end);
    void WriteLeaf(Item const& item, std::size_t node);
    void WriteUnion(std::size_t node, std::size_t left, std::size_t right, std::size_t count);

    std::vector<Item> items_;
};

inline PlainTree::PlainTree(std::vector<AxisAlignedBox3> const& boxes) {
    std::array<double, 3> top{};
    auto const toArray = [](Vertex const& v) { return std::array<double, 3>{v.x, v.y, v.z}; };
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        auto const center = toArray(boxes[i].center);
        auto const half = toArray(boxes[i].halfExtent);
        for (std::size_t a = 0; a < 3; ++a) {
            origin[a] = i == 0 ? center[a] - half[a] : std::min(origin[a], center[a] - half[a]);
            top[a] = i == 0 ? center[a] + half[a] : std::max(top[a], center[a] + half[a]);
        }
    }
    for (std::size_t a = 0; a < 3; ++a) quantization[a] = 65535.0f / static_cast<float>(top[a] - origin[a]);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        auto const center = toArray(boxes[i].center);
        auto const half = toArray(boxes[i].halfExtent);
        Item item{{}, {}, static_cast<std::uint32_t>(i)};
        for (std::size_t a = 0; a < 3; ++a) {
            item.center[a] = static_cast<float>(center[a] - origin[a]);
            item.half[a] = static_cast<float>(half[a]);
        }
        items_.push_back(item);
    }
    nodes.resize(2 * boxes.size() - 1);
    Write(0, boxes.size(), 0);
}

inline std::size_t PlainTree::Write(std::size_t begin, std::size_t end, std::size_t node) {
    if (end - begin == 1) {
        WriteLeaf(items_[begin], node);
        return 1;
    }
    if (end - begin == 2) {
        WriteLeaf(items_[begin], node + 1);
        WriteLeaf(items_[begin + 1], node + 2);
        WriteUnion(node, node + 1, node + 2, 3);
        return 3;
    }
    std::size_t const split = Split(begin, end);
    std::size_t const left = Write(begin, split, node + 1);
    std::size_t const right = Write(split, end, node + 1 + left);
    WriteUnion(node, node + 1, node + 1 + left, left + right + 1);
    return left + right + 1;
}

inline std::size_t PlainTree::Split(std::size_t begin, std::size_t end) {
    auto const count = static_cast<float>(end - begin);
    std::array<float, 3> mean{};
    std::array<float, 3> variance{};
    for (std::size_t a = 0; a < 3; ++a) {
        for (std::size_t i = begin; i < end; ++i) mean[a] += items_[i].center[a];
        mean[a] = mean[a] / count;
        for (std::size_t i = begin; i < end; ++i) {
            float const difference = items_[i].center[a] - mean[a];
            variance[a] += difference * difference;
        }
    }
    std::size_t axis = 0;
    if (variance[0] > variance[1]) {
        axis = variance[0] > variance[2] ? 0 : 2;
    } else {
        axis = variance[1] > variance[2] ? 1 : 2;
    }
    std::size_t split = begin;
    for (std::size_t i = begin; i < end; ++i) {
        if (items_[i].center[axis] > mean[axis]) std::swap(items_[i], items_[split++]);
    }
    std::size_t const third = (end - begin) / 3;
    if (split <= begin + third || split >= end - third - 1) split = (begin + end) / 2;
    return split;
}

inline void PlainTree::WriteLeaf(Item const& item, std::size_t node) {
    std::array<std::uint16_t, 3> lower{};
    std::array<std::uint16_t, 3> upper{};
    for (std::size_t a = 0; a < 3; ++a) {
        auto const scale = static_cast<float>(quantization[a]);
        float const lo = std::floor(std::max(0.0f, (item.center[a] - item.half[a]) * scale));
        float const hi = std::ceil(std::min(65535.0f, (item.center[a] + item.half[a]) * scale));
        lower[a] = static_cast<std::uint16_t>(static_cast<std::int64_t>(lo));
        upper[a] = static_cast<std::uint16_t>(static_cast<std::int64_t>(hi));
    }
    nodes[node] = {
        lower[0], upper[0], lower[1], upper[1], lower[2], upper[2], static_cast<std::int32_t>(item.instance)};
}

inline void PlainTree::WriteUnion(std::size_t node, std::size_t left, std::size_t right, std::size_t count) {
    auto const& l = nodes[left];
    auto const& r = nodes[right];
    nodes[node] = {std::min(l.minX, r.minX),         std::max(l.maxX, r.maxX), std::min(l.minY, r.minY),
                   std::max(l.maxY, r.maxY),         std::min(l.minZ, r.minZ), std::max(l.maxZ, r.maxZ),
                   -static_cast<std::int32_t>(count)};
}

}  // namespace Quorlan::Testing
