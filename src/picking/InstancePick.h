#pragma once

#include "model/ModelView.h"
#include "picking/ClippingPlanes.h"
#include "picking/ModelRay.h"

#include <glm/vec3.hpp>
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

/// A pick that moves from instance to instance: the ray and the clipping planes in the coordinates of the definition
/// that the instance places, narrowed last. Nothing is allocated after construction.
class InstancePick {
public:
    InstancePick(ModelView const& model, ModelRay const& ray, std::vector<WidePlane> planes)
        : model_(model), ray_(ray), planes_(std::move(planes)), localPlanes_(planes_.size()) {}

    /// REQUIRES: the model has the placement and the entity of `instance`.
    void MoveTo(Schema::Instance const& instance) {
        frame_ = InstanceFrame(ToWideFrame(model_.records->Get(instance.entityIndex())->placement()) *
                               ToWideFrame(*model_.geometry->placements()->Get(instance.placementIndex())));
        origin_ = Narrow(frame_.ToLocalPoint(ray_.origin));
        direction_ = Narrow(frame_.ToLocalDirection(ray_.direction));
        DoubleFrame const& f = frame_.modelFromLocal;
        for (std::size_t i = 0; i < planes_.size(); ++i) {
            WidePlane const plane = CarryPlane(planes_[i], f.x, f.y, f.z, f.origin);
            localPlanes_[i] = glm::vec4(Narrow(plane.normal), static_cast<float>(plane.distance));
        }
    }

    glm::vec3 const& GetOrigin() const { return origin_; }
    glm::vec3 const& GetDirection() const { return direction_; }
    std::vector<glm::vec4> const& GetClippingPlanes() const { return localPlanes_; }
    InstanceFrame const& GetFrame() const { return frame_; }

private:
    static glm::vec3 Narrow(Vertex const& v) {
        return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
    }

    ModelView model_;
    ModelRay ray_;
    std::vector<WidePlane> planes_;
    std::vector<glm::vec4> localPlanes_;
    InstanceFrame frame_;
    glm::vec3 origin_{0, 0, 0};
    glm::vec3 direction_{0, 0, 0};
};

}  // namespace Quorlan::Tools::Picking
