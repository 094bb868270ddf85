#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "step/StepText.h"

namespace QuorlanProgram::Import {

/// What is wrong with the references between the instances of a STEP file.
struct ReferenceFaults {
    std::size_t missing = 0;  ///< references to instances that are not there

    /// Where references stand in the text, begin and end, that close a circle: without them none is left. Instances of
    /// an IFC file never refer to themselves, over however many others.
    std::vector<std::pair<std::size_t, std::size_t>> circles;

    /// The instances that have a faulty reference themselves or refer, over however many others, to one that has.
    std::unordered_set<std::uint32_t> damaged;
};

/// Follows every reference, "#12", outside of strings and comments. COST: linear in the text.
/// REQUIRES: the statements are of `text`.
ReferenceFaults CheckReferences(std::string_view text, std::vector<StepStatement> const& statements);

}  // namespace QuorlanProgram::Import
