#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <embree3/rtcore.h>

namespace CampusBenchmark {

/// A half line that has hit nothing yet, in the single precision that Embree asks for.
inline RTCRayHit MakeEmbreeRay(GeometryObjectLib::Vertex const& origin, GeometryObjectLib::Vertex const& direction) {
    RTCRayHit query{};
    query.ray.org_x = static_cast<float>(origin.x);
    query.ray.org_y = static_cast<float>(origin.y);
    query.ray.org_z = static_cast<float>(origin.z);
    query.ray.dir_x = static_cast<float>(direction.x);
    query.ray.dir_y = static_cast<float>(direction.y);
    query.ray.dir_z = static_cast<float>(direction.z);
    query.ray.tfar = 1e30f;
    query.ray.mask = 0xFFFFFFFF;
    query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    return query;
}

}  // namespace CampusBenchmark
