#include "model/ModelView.h"
#include "picking/RayArc.h"
#include "picking/RaySegment.h"

#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <limits>

namespace Quorlan::Tools::Picking {

namespace {

using GeometryObjectLib::ArcSegment;
using GeometryObjectLib::ToVertex;

Schema::GraphicsContainerTable const* FindContainer(std::vector<char> const& modelBuffer, unsigned int index) {
    auto const* const geometry = FindGeometry(modelBuffer);
    if (geometry == nullptr || geometry->graphicsContainers() == nullptr) return nullptr;
    auto const* const container = geometry->graphicsContainers()->Get(index);
    if (container == nullptr || container->segments() == nullptr || container->arcs() == nullptr) return nullptr;
    return container;
}

ArcSegment ToArcSegment(Schema::ArcSegment const& arc) {
    return {ToVertex(Quorlan::ToVector3f(arc.center())), ToVertex(Quorlan::ToVector3f(arc.axis())),
            ToVertex(Quorlan::ToVector3f(arc.startDirection())), arc.radius(), arc.sweepAngle()};
}

}  // namespace

bool RayToGraphicsContainerBuilder::Build(glm::vec3 const& origin, glm::vec3 const& direction,
                                          std::vector<glm::vec4> const& clippingPlanes,
                                          std::vector<char> const& modelBuffer, unsigned int index) {
    auto const* const container = FindContainer(modelBuffer, index);
    if (container == nullptr) return false;

    Ray3f const ray{ToVector3f(origin), ToVector3f(direction)};
    float best = std::numeric_limits<float>::max();
    std::uint32_t number = 0;
    auto const offer = [&](ClosestPoint const& candidate) {
        if (best > candidate.distance && !IsClipped(clippingPlanes, candidate.point)) {
            best = candidate.distance;
            nearestPoint_ = ToGlm(candidate.point);
            hitSegmentNumber_ = number;
        }
    };
    for (auto const* const segment : *container->segments()) {
        offer(ClosestPointRaySegment(ray, Quorlan::ToVector3f(segment->start()), Quorlan::ToVector3f(segment->end())));
        ++number;
    }
    for (auto const* const stored : *container->arcs()) {
        ArcSegment const arc = ToArcSegment(*stored);
        if (!IsArcBeyond(ray, arc, best)) offer(ClosestPointRayArc(ray, arc));
        ++number;
    }

    rayParameter_ = Dot(ToVector3f(nearestPoint_) - ray.origin, ray.direction);
    return best != std::numeric_limits<float>::max();
}

}  // namespace Quorlan::Tools::Picking
