#pragma once

#include "shape/Shape.h"

namespace QuorlanProgram::Import {

/// A face: an outer loop and its holes.
struct FaceLoops {
    Loop outer;
    std::vector<Loop> holes;
};

/// Takes a face apart whose loops lie within each other more than once, as some files have them: a loop within a hole
/// bounds a face of its own, which may look the other way. Loops keep the way they run. COST: quadratic in the loops.
/// REQUIRES: loops of one plane that do not cross.
std::vector<FaceLoops> SplitNestedLoops(std::vector<Loop> loops);

}  // namespace QuorlanProgram::Import
