#include "ifc/Units.h"

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

/// The units of one kind: where they are kept, and the power to which a prefix counts.
struct Kind {
    IfcUnitEnum::IfcUnitEnumEnum unit;
    double Units::*size;
    int power;
};

constexpr Kind kKinds[] = {
    {IfcUnitEnum::ENUM_LENGTHUNIT, &Units::length, 1}, {IfcUnitEnum::ENUM_AREAUNIT, &Units::area, 2},
    {IfcUnitEnum::ENUM_VOLUMEUNIT, &Units::volume, 3}, {IfcUnitEnum::ENUM_MASSUNIT, &Units::mass, 1},
    {IfcUnitEnum::ENUM_TIMEUNIT, &Units::time, 1},     {IfcUnitEnum::ENUM_PLANEANGLEUNIT, &Units::angle, 1},
};

constexpr double kKilogramsPerGram = 1e-3;

Kind const* FindKind(IfcNamedUnit const* unit) {
    if (!unit || !unit->m_UnitType) return nullptr;
    for (auto const& kind : kKinds) {
        if (kind.unit == unit->m_UnitType->m_enum) return &kind;
    }
    return nullptr;
}

double GetFactor(IfcSIPrefix const* prefix) {
    static constexpr double kFactors[] = {1e18, 1e15, 1e12, 1e9,  1e6,  1e3,   1e2,   1e1,
                                          1e-1, 1e-2, 1e-3, 1e-6, 1e-9, 1e-12, 1e-15, 1e-18};
    return prefix ? kFactors[prefix->m_enum] : 1;
}

double GetSize(IfcUnit const* unit, int depth) {
    auto const* kind = FindKind(dynamic_cast<IfcNamedUnit const*>(unit));
    if (!kind || depth == 0) return 0;
    if (auto const* si = dynamic_cast<IfcSIUnit const*>(unit)) {
        // The prefix belongs to the metre: a square millimetre is 1e-6 square metres. Masses count in grams.
        auto const size = std::pow(GetFactor(si->m_Prefix.get()), kind->power);
        return kind->unit == IfcUnitEnum::ENUM_MASSUNIT ? size * kKilogramsPerGram : size;
    }
    auto const* converted = dynamic_cast<IfcConversionBasedUnit const*>(unit);
    if (!converted || !converted->m_ConversionFactor) return 0;
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
        auto const* kind = FindKind(dynamic_cast<IfcNamedUnit const*>(unit.get()));
        auto const size = GetSize(unit.get());
        if (!kind || !(size > 0)) continue;
        units.*(kind->size) = size;
        if (kind->unit == IfcUnitEnum::ENUM_LENGTHUNIT) units.hasLength = true;
    }
    return units;
}

}  // namespace QuorlanProgram::Import
