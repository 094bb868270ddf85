#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace QuorlanProgram::Import {

/// What an import read, and by name and number everything that it did not read.
struct ImportReport {
    std::string schema;  ///< as the file names it

    std::size_t products = 0;         ///< of the file, those below included
    std::size_t entities = 0;         ///< written
    std::size_t spaces = 0;           ///< of these, spaces
    std::size_t instances = 0;        ///< written
    std::size_t shapes = 0;           ///< read; those that are copies of one another among them
    std::size_t definitions = 0;      ///< written: the distinct ones
    double largestDeviation = 0;      ///< [m] of a vertex, from sharing a definition with a copy
    std::size_t modelledShapes = 0;   ///< shapes whose faces are as they were modelled
    std::size_t joinedShapes = 0;     ///< shapes whose faces were joined from the kernel's triangles
    std::size_t splitShapes = 0;      ///< shapes that needed more than one definition
    std::size_t materials = 0;        ///< written
    std::size_t layers = 0;           ///< written
    std::size_t properties = 0;       ///< written
    std::size_t ownerHistories = 0;   ///< written
    std::size_t curvesRewritten = 0;  ///< indexed curves that were made polylines

    std::size_t openings = 0;                             ///< products that are openings and so no entities
    std::map<std::string, std::size_t> withoutBody;       ///< by class: products without a shape to read
    std::map<std::string, std::size_t> representations;   ///< by identifier: representations other than the body
    std::map<std::string, std::size_t> unknownClasses;    ///< instances of classes that the reader does not know
    std::map<std::string, std::size_t> unreadItems;       ///< by class: body items that gave no shape
    std::map<std::string, std::size_t> unreadProperties;  ///< by class
    std::vector<std::string> productsWithoutShape;        ///< GUIDs of products whose body gave no shape at all
    std::vector<std::string> duplicateGuids;              ///< each once; all of their entities are kept
    std::vector<std::string> invalidGuids;                ///< kept as identifier texts
    std::vector<std::string> missedCuts;          ///< "GUID: 2", products with openings or clippings that failed
    std::map<std::string, std::size_t> messages;  ///< of the reader, each with its number of occurrences

    double secondsRead = 0;   ///< text to IFC model
    double secondsShape = 0;  ///< IFC model to model buffer
};

/// A few lines for a person; lists are cut to ten entries.
std::string ToText(ImportReport const& report);

/// Everything, one member per member of the report.
std::string ToJson(ImportReport const& report);

}  // namespace QuorlanProgram::Import
