#pragma once

#include <GeometryObjectLib/Vector3f.h>

namespace Quorlan::Tools::Picking {

/// A point of an edge or an arc, and how far it lies from what it was sought for.
struct ClosestPoint {
    GeometryObjectLib::Vector3f point;
    float distance = 0;
};

}  // namespace Quorlan::Tools::Picking
