#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "step/IndexedCurve.h"
#include "step/StepReferences.h"

namespace QuorlanProgram::Import {

/// What is wrong with the text of a file before anything of it is read.
enum class TextProblem { kNone, kEmpty, kNoStepFile, kNoIfcSchema };

/// An instance of a file, as its text has it.
struct InstancePlace {
    std::uint32_t id = 0;
    std::uint32_t classIndex = 0;
    std::size_t begin = 0;  ///< of its statement in the text, and the end
    std::size_t end = 0;
};

/// An IFC file's text made ready for the reader, and what was found on the way.
struct RepairedText {
    std::string text;
    std::string schema;               ///< as the file names it, "IFC4X3_ADD2"
    bool schemaReplaced = false;      ///< the reader knows no such schema and is told IFC4
    bool isCutOff = false;            ///< the file has no end mark
    double metresPerUnit = 0;         ///< of the unit of length; 0 if there is none
    std::size_t curvesRewritten = 0;  ///< IfcIndexedPolyCurve written as IfcPolyline
    std::size_t curvesKept = 0;       ///< those that were not understood
    std::size_t typedNulls = 0;       ///< "IFCLABEL($)" written as "$"
    std::size_t absurdNumbers = 0;    ///< "1.E400" and "1.#QNAN", written as no number
    ReferenceFaults faults;

    /// The instances of element classes of IFC4X3 that are read as IfcBuildingElementProxy, and their own class.
    std::unordered_map<std::uint32_t, std::string> standIns;

    std::vector<std::string> classes;  ///< the names of all classes in upper case
    std::vector<InstancePlace> instances;
    std::unordered_map<std::uint32_t, std::vector<CurveSegment>> arcs;  ///< of rewritten curves that have arcs
};

/// The text behind its byte order mark, if it has one: the one that places in the text count from.
std::string_view WithoutMark(std::string_view text);

/// Looks whether `text` is an IFC file: the STEP head and a schema of the IFC family.
TextProblem CheckText(std::string_view text);

/// Rewrites what the reader does not understand and leaves every other byte as it is:
///
/// - IfcIndexedPolyCurve becomes an IfcPolyline over new points, its arcs made discrete;
/// - values without content that have a type, "IFCLABEL($)", and references that close a circle become "$";
/// - numbers beyond the range of a double become no numbers, which the reader would take for 0;
/// - a schema of the IFC4 family that is not IFC4 itself (IFC4X3) is named IFC4, whose classes most files stay within;
/// - its new element classes become IfcBuildingElementProxy;
/// - a file that is cut off ends behind its last whole instance.
///
/// REQUIRES: CheckText(text) is kNone. `chords` is asked for radii in metres. COST: a few passes over the text.
RepairedText RepairText(std::string_view text, Chords const& chords);

}  // namespace QuorlanProgram::Import
