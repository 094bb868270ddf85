#pragma once

#include "model/ModelView.h"

#include <algorithm>
#include <limits>

namespace Quorlan {

/// The bounds of what has been stored, in single precision; all zero where nothing was.
class StoredBounds {
public:
    void Add(float x, float y, float z) {
        isEmpty_ = false;
        min_ = {std::min(min_.x, x), std::min(min_.y, y), std::min(min_.z, z)};
        max_ = {std::max(max_.x, x), std::max(max_.y, y), std::max(max_.z, z)};
    }

    Schema::Vector3 GetMin() const { return isEmpty_ ? Schema::Vector3{0, 0, 0} : Store(min_); }
    Schema::Vector3 GetMax() const { return isEmpty_ ? Schema::Vector3{0, 0, 0} : Store(max_); }

private:
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    static Schema::Vector3 Store(Vector3f const& v) { return {v.x, v.y, v.z}; }

    bool isEmpty_ = true;
    Vector3f min_{kInfinity, kInfinity, kInfinity};
    Vector3f max_{-kInfinity, -kInfinity, -kInfinity};
};

}  // namespace Quorlan
