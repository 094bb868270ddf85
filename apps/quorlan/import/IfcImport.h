#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ImportReport.h"

namespace QuorlanProgram::Import {

struct ImportOptions {
    int verticesPerCircle = 24;  ///< chords that stand for a full circle, at least 6

    /// Whether openings become entities, on the layer "IfcOpeningElement" where they have none of their own. They are
    /// cut from what they open in any case.
    bool takesOpenings = false;

    /// Whether the first entity gets the property set that tells of shared shapes (`ImportRecord`).
    bool writesRecord = false;

    /// Called from time to time with the share that is done, 0 to 1. May be empty.
    std::function<void(double)> progress;
};

struct ImportResult {
    std::string error;        ///< why there is no model, in one line; empty if there is one
    std::vector<char> model;  ///< the model buffer
    ImportReport report;
};

/// Makes a model of the text of an IFC file (IFC2x3 and IFC4, and what of IFC4X3 is also IFC4).
///
/// Every product with a body is an entity with its GUID, name, placement, owner history and property sets; every item
/// of its body is an instance of a shape in the entity's own frame, in metres, with its material and layer.
///
/// RETURNS a result with an error and no model if `text` is no whole IFC file with a project. Writes nothing to any
/// stream. Not for several threads at once: the geometry kernel behind it keeps a tolerance in a global variable.
ImportResult ImportIfc(std::string_view text, ImportOptions const& options = {});

}  // namespace QuorlanProgram::Import
