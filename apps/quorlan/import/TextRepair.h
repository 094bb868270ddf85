#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace QuorlanProgram::Import {

/// What is wrong with the text of a file before anything of it is read.
enum class TextProblem { kNone, kEmpty, kNoStepFile, kNoIfcSchema, kTruncated };

/// An IFC file's text made ready for the reader, and what was found on the way.
struct RepairedText {
    std::string text;
    std::string schema;               ///< as the file names it, "IFC4X3_ADD2"
    bool schemaReplaced = false;      ///< the reader knows no such schema and is told IFC4
    std::size_t curvesRewritten = 0;  ///< IfcIndexedPolyCurve written as IfcPolyline
    std::size_t curvesKept = 0;       ///< those that were not understood

    std::vector<std::string> classes;                          ///< the names of all classes in upper case
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ids;  ///< of every instance: its id, its class
};

/// Looks whether `text` is a whole IFC file: the STEP head, a schema of the IFC family, and the end mark, which a file
/// cut off on its way does not have.
TextProblem CheckText(std::string_view text);

/// Rewrites what the reader does not understand and leaves every other byte as it is:
///
/// - IfcIndexedPolyCurve becomes an IfcPolyline over new points, its arcs made discrete with `verticesPerCircle` chords
///   per full turn;
/// - a schema of the IFC4 family that is not IFC4 itself (IFC4X3) is named IFC4, whose classes most files stay within.
///
/// REQUIRES: CheckText(text) is kNone. COST: one pass over the text.
RepairedText RepairText(std::string_view text, int verticesPerCircle);

}  // namespace QuorlanProgram::Import
