#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <optional>

class IfcExtrudedAreaSolid;
class IfcRepresentationItem;

namespace QuorlanProgram::Import {

/// True for items that the standard calls solids, and for surfaces that say they are closed.
bool IsSolid(IfcRepresentationItem const& item);

/// True for an extrusion of the same section all the way, whose profile is one area: an outer loop and its holes.
bool IsPrism(IfcExtrudedAreaSolid const& solid);

/// The way of an extrusion in metres, in the solid's own frame; nothing where it has no direction.
std::optional<GeometryObjectLib::Vertex> ReadExtrusion(IfcExtrudedAreaSolid const& solid, double metresPerUnit);

}  // namespace QuorlanProgram::Import
