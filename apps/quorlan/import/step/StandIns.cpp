#include "step/StandIns.h"

#include <algorithm>
#include <array>

namespace QuorlanProgram::Import {

namespace {

constexpr std::array<std::string_view, 27> kElementClasses{"IfcBearing",
                                                           "IfcBorehole",
                                                           "IfcBuiltElement",
                                                           "IfcCaissonFoundation",
                                                           "IfcConveyorSegment",
                                                           "IfcCourse",
                                                           "IfcDeepFoundation",
                                                           "IfcDistributionBoard",
                                                           "IfcEarthworksElement",
                                                           "IfcEarthworksFill",
                                                           "IfcElectricFlowTreatmentDevice",
                                                           "IfcGeomodel",
                                                           "IfcGeoslice",
                                                           "IfcGeotechnicalStratum",
                                                           "IfcImpactProtectionDevice",
                                                           "IfcKerb",
                                                           "IfcLiquidTerminal",
                                                           "IfcMobileTelecommunicationsAppliance",
                                                           "IfcMooringDevice",
                                                           "IfcNavigationElement",
                                                           "IfcPavement",
                                                           "IfcRail",
                                                           "IfcReinforcedSoil",
                                                           "IfcSign",
                                                           "IfcSignal",
                                                           "IfcTrackElement",
                                                           "IfcVehicle"};

bool IsUpperCaseOf(std::string_view upper, std::string_view name) {
    return std::equal(upper.begin(), upper.end(), name.begin(), name.end(), [](char u, char c) {
        return u == (c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
    });
}

}  // namespace

std::string_view FindLaterElementClass(std::string_view upperCaseName) {
    auto const* found = std::find_if(kElementClasses.begin(), kElementClasses.end(),
                                     [&](std::string_view name) { return IsUpperCaseOf(upperCaseName, name); });
    return found == kElementClasses.end() ? std::string_view() : *found;
}

}  // namespace QuorlanProgram::Import
