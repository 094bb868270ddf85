#pragma once

#include <string_view>

namespace QuorlanProgram::Import {

/// The name of an element class that came with IFC4X3, as it is written there, from its name in upper case; empty for
/// any other class. All of them begin with the attributes of IfcElement, so that IfcBuildingElementProxy can stand in.
std::string_view FindLaterElementClass(std::string_view upperCaseName);

/// What stands in for them, and how many attributes the two have in common.
constexpr std::string_view kStandIn = "IFCBUILDINGELEMENTPROXY";
constexpr int kStandInAttributes = 8;

}  // namespace QuorlanProgram::Import
