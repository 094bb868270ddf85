#pragma once

#include "picking/Campus.h"

#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <Tools/BoundingBoxBuilder.h>

#include <vector>

namespace CampusBenchmark {

inline std::vector<GeometryObjectLib::AxisAlignedBox3> ComputeBoxes(Campus const& campus) {
    Quorlan::Tools::BoundingBoxBuilder boxes;
    boxes.Build(campus.buffer.data());
    return boxes.getBoundingBoxes();
}

}  // namespace CampusBenchmark
