#pragma once

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>
#include <Tools/Picking/ViewProjection.h>

#include <cstdint>
#include <vector>

/// A campus of office buildings for the benchmarks of the pickers.
namespace CampusBenchmark {

using GeometryObjectLib::QuantizedAxisAlignedBoxTree;
using GeometryObjectLib::Vertex;
using Quorlan::Tools::Picking::ViewProjection;

/// A pixel and the camera it belongs to.
struct View {
    ViewProjection camera;
    double x = 0;
    double y = 0;
};

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
