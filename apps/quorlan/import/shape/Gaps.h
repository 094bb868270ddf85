#pragma once

#include "shape/Shape.h"

namespace QuorlanProgram::Import {

constexpr double kGapFlatness = 1e-4;  ///< [m] off its plane, within which the border of a gap is plane

/// Closes a shape that lacks plane faces: where its border is made of simple loops, each in one plane, every loop
/// becomes a face. RETURNS the number of faces added; 0, with the shape as it was, if that would not close it.
std::size_t CloseGaps(FacetedBRep& shape);

}  // namespace QuorlanProgram::Import
