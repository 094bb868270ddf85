#pragma once

#include "picking/View.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <cstdint>
#include <vector>

/// A campus of office buildings for the benchmarks of the pickers.
namespace CampusBenchmark {

using GeometryObjectLib::QuantizedAxisAlignedBoxTree;
using GeometryObjectLib::Vertex;
using Quorlan::Tools::Picking::ViewProjection;

struct Campus {
    std::vector<char> buffer;
    QuantizedAxisAlignedBoxTree tree;
    std::uint32_t instanceCount = 0;
    std::vector<View> views;  ///< half of them from inside a room, half from outside over the whole campus
};

/// Buildings of ten storeys with twenty rooms each, every one turned by its own angle, in a square grid. A room has
/// walls, of which one has a door hole, a floor slab, columns, a door, a window, furniture with round legs, and pipes
/// as lines. Shapes are shared. Some `instanceCount` instances; the same count gives the same campus, made once.
Campus const& GetCampus(std::uint32_t instanceCount);

}  // namespace CampusBenchmark
