#pragma once

#include <GeometryObjectLib/FacetedBRep.h>

namespace QuorlanProgram {

/// What stands against the volume of one shape.
struct ShapeTrust {
    bool isOpen = false;             ///< an edge belongs to one face only: there is no inside
    bool isTwisted = false;          ///< faces that meet at an edge run through it the same way, or more than two meet
    bool isInverted = false;         ///< closed, but its faces look inwards
    bool hasDegenerateFace = false;  ///< a face without area, which says nothing of its plane

    bool IsClosed() const { return !isOpen && !isTwisted; }
};

/// Looks at every edge: in a closed and consistently oriented solid each is used twice, once in each direction.
/// Vertices at the same position count as one.
ShapeTrust ExamineShape(GeometryObjectLib::FacetedBRep const& shape);

}  // namespace QuorlanProgram
