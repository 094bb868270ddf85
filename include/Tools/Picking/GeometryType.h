#pragma once

#include <cstdint>

namespace Quorlan::Tools::Picking {

/// Which kinds of geometry `ModelInstancesPicker::PickEdges` tests. The values are not the kind bytes of a model
/// buffer. Other values are legal; those from 1 to 10 stand for kinds that no picker tests, and the rest for none.
enum class GeometryType : std::uint32_t {
    FACETED_BREP = 0,        ///< definition kind 1
    GRAPHICS_CONTAINER = 3,  ///< definition kind 5
    BREP_WITH_UV = 4,        ///< definition kind 6
    BREP_WITH_NORMAL = 5,    ///< definition kind 7
    NONE = 0xFFFFFFFF,       ///< definition kind 0
};

}  // namespace Quorlan::Tools::Picking
