#include "model/ModelView.h"
#include "picking/NearestSegment.h"
#include "picking/RayArc.h"

#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <cstdint>

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

NearestSegment FindNearestLine(Ray3f const& ray, std::vector<glm::vec4> const& planes,
                               flatbuffers::Vector<Schema::LineSegment const*> const& lines) {
    NearestSegmentSearch search(ray, planes, ClipRule::kItsClosestPoint);
    for (std::uint32_t i = 0; i < lines.size(); ++i) {
        search.Offer(Quorlan::ToVector3f(lines[i]->start()), Quorlan::ToVector3f(lines[i]->end()), i);
    }
    return search.Finish();
}

}  // namespace

bool RayToGraphicsContainerBuilder::Build(glm::vec3 const& origin, glm::vec3 const& direction,
                                          std::vector<glm::vec4> const& clippingPlanes,
                                          std::vector<char> const& modelBuffer, unsigned int index) {
    auto const* const container = FindContainer(modelBuffer, index);
    if (container == nullptr) return false;

    Ray3f const ray{ToVector3f(origin), ToVector3f(direction)};
    NearestSegment best = FindNearestLine(ray, clippingPlanes, *container->segments());
    std::uint64_t number = container->segments()->size();
    for (auto const* const stored : *container->arcs()) {
        ArcSegment const arc = ToArcSegment(*stored);
        if (!IsArcBeyond(ray, arc, best.distance)) {
            ClosestPoint const candidate = ClosestPointRayArc(ray, arc);
            if (best.distance > candidate.distance && !IsClipped(clippingPlanes, candidate.point)) {
                best = {candidate.distance, candidate.point, number};
            }
        }
        ++number;
    }
    if (best.IsFound()) {
        nearestPoint_ = ToGlm(best.point);
        hitSegmentNumber_ = static_cast<std::uint32_t>(best.number);
    }
    rayParameter_ = Dot(ToVector3f(nearestPoint_) - ray.origin, ray.direction);
    return best.IsFound();
}

}  // namespace Quorlan::Tools::Picking
