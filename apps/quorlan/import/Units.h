#pragma once

class IfcProject;
class IfcUnit;
class IfcValue;

namespace QuorlanProgram::Import {

/// How many metres, square metres and cubic metres the units of a file are.
struct Units {
    double length = 1;
    double area = 1;
    double volume = 1;
};

/// The units that a project assigns; metres where it assigns none.
Units ReadUnits(IfcProject const& project);

/// The number of SI units (metres, square metres, cubic metres) that one of `unit` is; 0 if it is no unit of length,
/// area or volume.
double GetSize(IfcUnit const* unit);

/// The number of a numeric value of any measure type. RETURNS false if it is no number.
bool ReadNumber(double& out, IfcValue const* value);

}  // namespace QuorlanProgram::Import
