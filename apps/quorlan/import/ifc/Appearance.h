#pragma once

#include <Quorlan/ModelTypes.h>

#include <optional>
#include <string>

class IfcObject;
class IfcRepresentation;
class IfcRepresentationItem;

namespace QuorlanProgram::Import {

using Quorlan::MaterialRecord;

/// The surface style of an item: its colour with transparency, and whether both sides are to be seen. Of a result of
/// boolean operations without a style of its own, that of its first operand.
std::optional<MaterialRecord> FindItemStyle(IfcRepresentationItem const& item);

/// The colour of a curve's own style.
std::optional<MaterialRecord> FindCurveStyle(IfcRepresentationItem const& item);

/// The style of the material that is associated with an object or with its type; of several materials, of the first
/// that has one.
std::optional<MaterialRecord> FindMaterialStyle(IfcObject const& object);

/// The name of the layer that an item or a representation is assigned to; empty if none.
std::string FindLayer(IfcRepresentationItem const& item);
std::string FindLayer(IfcRepresentation const& representation);

}  // namespace QuorlanProgram::Import
