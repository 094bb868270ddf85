#pragma once

#include <vector>

#include "step/StepText.h"

namespace QuorlanProgram::Import {

/// How many metres the unit of length is that an IFC text assigns (IfcUnitAssignment); 0 if it assigns none.
double FindMetresPerUnit(std::vector<StepStatement> const& statements);

}  // namespace QuorlanProgram::Import
