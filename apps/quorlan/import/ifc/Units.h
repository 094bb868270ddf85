#pragma once

class IfcProject;
class IfcUnit;
class IfcValue;

namespace QuorlanProgram::Import {

/// How many SI units the units of a file are: metres, square metres, cubic metres, kilograms, seconds, radians.
struct Units {
    bool hasLength = false;  ///< the file has a unit of length
    double length = 1;
    double area = 1;
    double volume = 1;
    double mass = 1;
    double time = 1;
    double angle = 1;
};

/// The units that a project assigns; SI units where it assigns none.
Units ReadUnits(IfcProject const& project);

/// The number of SI units that one of `unit` is; 0 if it is no unit of one of the kinds of `Units`.
double GetSize(IfcUnit const* unit);

/// The number of a numeric value of any measure type. RETURNS false if it is no number.
bool ReadNumber(double& out, IfcValue const* value);

}  // namespace QuorlanProgram::Import
