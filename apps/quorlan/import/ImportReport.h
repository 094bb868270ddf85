#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "cut/SolidCuts.h"

namespace QuorlanProgram::Import {

/// What the import of one file read, and by name and number everything that it did not read.
struct ImportReport {
    using Counts = std::map<std::string, std::size_t>;

    std::string file;    ///< as it was given; may be empty
    std::string schema;  ///< as the file names it

    std::size_t products = 0;              ///< of the file, those below included
    std::size_t entities = 0;              ///< written
    std::size_t spaces = 0;                ///< of these, spaces
    std::size_t instances = 0;             ///< written
    std::size_t shapes = 0;                ///< read; those that are copies of one another among them
    std::size_t shapesOfEarlierFiles = 0;  ///< of these, copies of a shape of a file before this one
    std::size_t curveSets = 0;             ///< line graphics read
    std::size_t definitions = 0;           ///< written: the distinct ones
    double largestDeviation = 0;           ///< [m] of a vertex, from sharing a definition with a copy
    std::size_t modelledShapes = 0;        ///< shapes whose faces are as they were modelled
    std::size_t joinedShapes = 0;          ///< shapes whose faces were joined from triangles
    std::size_t splitShapes = 0;           ///< shapes that needed more than one definition
    std::size_t solids = 0;                ///< instances of solids: extrusions, breps, results of cuts
    std::size_t materials = 0;             ///< written
    std::size_t layers = 0;                ///< written
    std::size_t properties = 0;            ///< written
    std::size_t ownerHistories = 0;        ///< written
    std::size_t curvesRewritten = 0;       ///< indexed curves that were made polylines
    std::size_t typedNulls = 0;            ///< values without content that were repaired
    CutCount cuts;                         ///< openings and boolean operations

    // Left out on purpose.
    std::size_t openings = 0;  ///< products that are openings and so no entities
    Counts withoutBody;        ///< by class: products without a shape to read
    std::vector<std::string>
        otherProducts;        ///< of these, those with representations other than a body, and their names
    Counts representations;   ///< by identifier: representations other than the body
    Counts unreadProperties;  ///< by class
    Counts unknownClasses;    ///< instances of classes that the reader does not know, none of them a product

    // Warnings: what is missing or wrong.
    bool isCutOff = false;                          ///< the file has no end mark; what came before it is read
    bool lacksUnit = false;                         ///< the file has no unit of length; it is taken for metres
    std::size_t missingReferences = 0;              ///< to instances that are not there
    std::size_t circularReferences = 0;             ///< that were cut
    std::size_t absurdNumbers = 0;                  ///< beyond the range of a double
    std::vector<std::string> damagedProducts;       ///< "GUID class": with such references, if over other instances
    std::vector<std::string> unknownProducts;       ///< "GUID class": of classes that the reader does not know
    std::vector<std::string> misplacedProducts;     ///< left out: their placement is no number or beyond all measure
    std::vector<std::string> repairedPlacements;    ///< with axes that are parallel or of no length
    std::vector<std::string> productsWithoutShape;  ///< whose body gave no shape at all
    Counts unreadItems;                             ///< by class: body items that gave no shape
    Counts droppedFaces;                            ///< by GUID: faces that are no polygon
    Counts addedFaces;                              ///< by GUID: plane faces that a solid of the file lacked
    Counts wrongCuts;                               ///< by GUID: cuts that no way gave what volumes say
    Counts openSolids;                              ///< by GUID and class: solids that did not come out closed
    std::vector<std::string> duplicateGuids;        ///< each once; all of their entities are kept
    std::vector<std::string> invalidGuids;          ///< kept as identifier texts
    Counts messages;                                ///< of the reader, each with its number of occurrences

    double secondsRead = 0;   ///< text to IFC model
    double secondsShape = 0;  ///< IFC model to model buffer

    /// The number of warnings, each thing that is missing or wrong counted once.
    std::size_t CountWarnings() const;
};

/// Several reports as text for a person, with lists cut to ten entries; as Markdown, with whole lists; as JSON with the
/// sums of all files at the top and each file under "files".
std::string ToText(std::vector<ImportReport> const& reports);
std::string ToMarkdown(std::vector<ImportReport> const& reports);
std::string ToJson(std::vector<ImportReport> const& reports);

}  // namespace QuorlanProgram::Import
