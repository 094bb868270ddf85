#pragma once

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>

#include <cstdint>
#include <optional>

namespace QuorlanProgram::Import {

/// What sharing shapes saved and cost when a model was imported. The model carries it as a property set of its first
/// entity, as a buffer has no place of its own for it.
struct ImportRecord {
    std::uint64_t shapes = 0;       ///< read
    std::uint64_t definitions = 0;  ///< written: the distinct ones
    double largestDeviation = 0;    ///< [m] of a vertex in the world, from sharing a definition with a copy
};

/// The name of the property set. It tells of the import, not of the building.
extern char const* const kImportRecordSet;

void WriteImportRecord(Quorlan::ModelBuilder& builder, ImportRecord const& record);

/// Empty for a model without a record, and for one whose shapes are no longer those of the import.
std::optional<ImportRecord> ReadImportRecord(Quorlan::IModelReader const& reader);

}  // namespace QuorlanProgram::Import
