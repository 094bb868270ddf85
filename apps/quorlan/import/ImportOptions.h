#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "shape/Chords.h"

namespace QuorlanProgram::Import {

struct ImportOptions {
    /// [m] that the chords of a circle may lie off it. Smaller is rounder and larger.
    double deflection = Chords::kDeflection;

    /// Whether openings become entities, on the layer "IfcOpeningElement" where they have none of their own. They are
    /// cut from what they open in any case.
    bool takesOpenings = false;

    /// Whether triangles are joined to polygons with holes.
    bool joinsFaces = true;

    /// The identifiers of the representations that are imported as line graphics: "Axis", "Annotation".
    std::set<std::string> curveNames;

    /// Of mesh files: what their GUIDs are made of, beside names. Without one, entities are identified by their names.
    std::optional<std::string> guidSeed;

    /// Of mesh files that know no unit: how many metres theirs is.
    double metresPerUnit = 1;

    /// Called from time to time: what is done at the moment, how much of it, of how much. May be empty.
    std::function<void(char const* stage, std::size_t done, std::size_t total)> progress;
};

}  // namespace QuorlanProgram::Import
