#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "step/StepText.h"

/// Values that the reader would take for others. Results are places in the text, begin and end.
namespace QuorlanProgram::Import {

using TextPlaces = std::vector<std::pair<std::size_t, std::size_t>>;

/// Values without content that have a type, "IFCLABEL($)".
TextPlaces FindTypedNulls(std::string_view text, std::vector<StepStatement> const& statements);

/// Numbers beyond the range of a double, "1.E400", and what some systems print for none, "1.#QNAN".
TextPlaces FindAbsurdNumbers(std::string_view text, std::vector<StepStatement> const& statements);

}  // namespace QuorlanProgram::Import
