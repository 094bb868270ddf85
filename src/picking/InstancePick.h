#pragma once

#include "model/ModelView.h"
#include "picking/ClippingPlanes.h"
#include "picking/ModelRay.h"

#include <GeometryObjectLib/Ray3f.h>

#include <glm/vec4.hpp>

#include <cmath>
#include <utility>
#include <vector>

namespace Quorlan::Tools::Picking {

using Quorlan::ToVector3f;

/// The frame of an instance in model space and its inverse, in double precision. Axes are normalised as in `Frame`,
/// each by itself, and need not be perpendicular: the inverse is that of the matrix.
struct InstanceFrame {
    DoubleFrame modelFromLocal;
    Vertex inverseX;  // the rows of the inverse
    Vertex inverseY;
    Vertex inverseZ;

    InstanceFrame() = default;

    explicit InstanceFrame(DoubleFrame const& frame) : modelFromLocal(frame) {
        Vertex const yz = Cross(frame.y, frame.z);
        double const perDeterminant = 1 / Dot(frame.x, yz);
        inverseX = yz * perDeterminant;
        inverseY = Cross(frame.z, frame.x) * perDeterminant;
        inverseZ = Cross(frame.x, frame.y) * perDeterminant;
    }

    Vertex ToLocalDirection(Vertex const& v) const { return {Dot(inverseX, v), Dot(inverseY, v), Dot(inverseZ, v)}; }
    Vertex ToLocalPoint(Vertex const& p) const { return ToLocalDirection(p - modelFromLocal.origin); }

    Vertex ToModelDirection(Vector3f const& v) const {
        return modelFromLocal.x * v.x + modelFromLocal.y * v.y + modelFromLocal.z * v.z;
    }
    Vertex ToModelPoint(Vector3f const& p) const { return modelFromLocal.origin + ToModelDirection(p); }
};

/// A vector of exactly unit length, as most placements have, is already the result.
inline Vertex Normalize(Vertex const& v) {
    double const squared = Dot(v, v);
    return squared == 1 ? v : v * (1 / std::sqrt(squared));
}

inline DoubleFrame ToWideFrame(Schema::Placement const& placement) {
    Vertex const x = GeometryObjectLib::ToVertex(ToVector3f(placement.xAxis()));
    Vertex const y = GeometryObjectLib::ToVertex(ToVector3f(placement.yAxis()));
    return {{placement.x(), placement.y(), placement.z()}, Normalize(x), Normalize(y), Normalize(Cross(x, y))};
}

/// A pick in the coordinates of the definitions that instances place, narrowed last: the parts of it that are not asked
/// for every instance. Nothing is allocated after construction.
class InstancePick {
public:
    InstancePick(ModelView const& model, ModelRay const& ray, std::vector<WidePlane> planes)
        : model_(model), ray_(ray), planes_(std::move(planes)), localPlanes_(planes_.size()) {}

    /// REQUIRES of all: the model has the placement and the entity of `instance`.
    InstanceFrame GetFrameOf(Schema::Instance const& instance) const {
        return InstanceFrame(ToWideFrame(model_.records->Get(instance.entityIndex())->placement()) *
                             ToWideFrame(*model_.geometry->placements()->Get(instance.placementIndex())));
    }

    GeometryObjectLib::Ray3f GetRayOf(Schema::Instance const& instance) const {
        InstanceFrame const frame = GetFrameOf(instance);
        return {GeometryObjectLib::ToVector3f(frame.ToLocalPoint(ray_.origin)),
                GeometryObjectLib::ToVector3f(frame.ToLocalDirection(ray_.direction))};
    }

    /// The clipping planes, valid until the next call.
    std::vector<glm::vec4> const& GetClippingPlanesOf(Schema::Instance const& instance) {
        if (planes_.empty()) return localPlanes_;
        DoubleFrame const frame = GetFrameOf(instance).modelFromLocal;
        for (std::size_t i = 0; i < planes_.size(); ++i) {
            WidePlane const plane = CarryPlane(planes_[i], frame.x, frame.y, frame.z, frame.origin);
            localPlanes_[i] = {static_cast<float>(plane.normal.x), static_cast<float>(plane.normal.y),
                               static_cast<float>(plane.normal.z), static_cast<float>(plane.distance)};
        }
        return localPlanes_;
    }

private:
    ModelView model_;
    ModelRay ray_;
    std::vector<WidePlane> planes_;
    std::vector<glm::vec4> localPlanes_;
};

}  // namespace Quorlan::Tools::Picking
