#include "Units.h"

#include <ifcpp/IFC4/include/IfcConversionBasedUnit.h>
#include <ifcpp/IFC4/include/IfcMeasureWithUnit.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcSIPrefix.h>
#include <ifcpp/IFC4/include/IfcSIUnit.h>
#include <ifcpp/IFC4/include/IfcUnitAssignment.h>
#include <ifcpp/IFC4/include/IfcUnitEnum.h>
#include <ifcpp/IFC4/include/IfcValue.h>

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace QuorlanProgram::Import {

namespace {

constexpr int kDeepestUnit = 8;  ///< a chain of conversions that is longer is one that meets itself

/// 1, 2 or 3 for units of length, area and volume, 0 for any other.
int GetDimension(IfcNamedUnit const& unit) {
    if (!unit.m_UnitType) return 0;
    switch (unit.m_UnitType->m_enum) {
        case IfcUnitEnum::ENUM_LENGTHUNIT: return 1;
        case IfcUnitEnum::ENUM_AREAUNIT: return 2;
        case IfcUnitEnum::ENUM_VOLUMEUNIT: return 3;
        default: return 0;
    }
}

double GetFactor(IfcSIPrefix const* prefix) {
    static constexpr double kFactors[] = {1e18, 1e15, 1e12, 1e9,  1e6,  1e3,   1e2,   1e1,
                                          1e-1, 1e-2, 1e-3, 1e-6, 1e-9, 1e-12, 1e-15, 1e-18};
    return prefix ? kFactors[prefix->m_enum] : 1;
}

double GetSize(IfcUnit const* unit, int depth) {
    if (auto const* si = dynamic_cast<IfcSIUnit const*>(unit)) {
        auto const dimension = GetDimension(*si);
        // The prefix belongs to the metre: a square millimetre is 1e-6 square metres.
        return dimension == 0 ? 0 : std::pow(GetFactor(si->m_Prefix.get()), dimension);
    }
    auto const* converted = dynamic_cast<IfcConversionBasedUnit const*>(unit);
    if (!converted || GetDimension(*converted) == 0 || !converted->m_ConversionFactor || depth == 0) return 0;
    double value = 0;
    if (!ReadNumber(value, converted->m_ConversionFactor->m_ValueComponent.get())) return 0;
    return value * GetSize(converted->m_ConversionFactor->m_UnitComponent.get(), depth - 1);
}

}  // namespace

double GetSize(IfcUnit const* unit) { return GetSize(unit, kDeepestUnit); }

bool ReadNumber(double& out, IfcValue const* value) {
    if (!value) return false;
    // The measure types have no number in common; all of them write it, with as many digits as the stream is told.
    std::stringstream text;
    text.imbue(std::locale::classic());
    text.precision(std::numeric_limits<double>::max_digits10);
    value->getStepParameter(text, false);
    return (text >> out) && std::isfinite(out) && (text >> std::ws).eof();
}

Units ReadUnits(IfcProject const& project) {
    Units units;
    if (!project.m_UnitsInContext) return units;
    for (auto const& unit : project.m_UnitsInContext->m_Units) {
        auto const* named = dynamic_cast<IfcNamedUnit const*>(unit.get());
        auto const size = GetSize(unit.get());
        if (!named || !(size > 0)) continue;
        auto const dimension = GetDimension(*named);
        (dimension == 1 ? units.length : dimension == 2 ? units.area : units.volume) = size;
    }
    return units;
}

}  // namespace QuorlanProgram::Import
