#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ImportSources.h"

namespace QuorlanProgram::Import {

struct ImportResult {
    std::string error;        ///< why there is no model, in one line; empty if there is one
    std::vector<char> model;  ///< the model buffer
    ImportReport report;
};

/// A model of one IFC file.
ImportResult ImportIfc(std::string_view text, ImportOptions const& options = {});

}  // namespace QuorlanProgram::Import
