#pragma once

#include "diff/ModelComparison.h"

#include <string>

namespace QuorlanProgram {

/// "moved by 0.350 m, layer 'Walls' → 'Doors'".
std::string Describe(EntityDifference const& difference);

/// A line per change and one with the counts, in UTF-8.
std::string ToText(ModelDifference const& difference, ModelContent const& oldModel, ModelContent const& newModel);

/// A table per kind of change.
std::string ToMarkdown(ModelDifference const& difference, ModelContent const& oldModel, ModelContent const& newModel);

std::string ToJson(ModelDifference const& difference, ModelContent const& oldModel, ModelContent const& newModel);

}  // namespace QuorlanProgram
