#pragma once

#include <Quorlan/ModelTypes.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "ifc/Units.h"

class IfcObject;

namespace QuorlanProgram::Import {

/// The properties of one object: the set "IFC" with its class and where it is, then those of its own sets and
/// quantities, then those of its type that it does not have itself.
///
/// Lengths, areas and volumes are in metres, masses in kilograms, times in seconds, angles in radians, all other
/// numbers as they stand in the file. What is read as no value (complex properties, tables, references) is counted by
/// class in `unread`.
class PropertyReader {
public:
    explicit PropertyReader(Units const& units) : units_(units) {}

    /// `className`: the class that the set "IFC" tells; empty for the object's own.
    std::vector<Quorlan::PropertyRecord> Read(IfcObject const& object, std::string const& className = {});

    std::map<std::string, std::size_t> const& GetUnread() const { return unread_; }

private:
    Units units_;
    std::map<std::string, std::size_t> unread_;
};

}  // namespace QuorlanProgram::Import
