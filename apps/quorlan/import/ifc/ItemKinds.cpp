#include "ifc/ItemKinds.h"

#include <ifcpp/IFC4/include/IfcArbitraryClosedProfileDef.h>
#include <ifcpp/IFC4/include/IfcBoolean.h>
#include <ifcpp/IFC4/include/IfcBooleanResult.h>
#include <ifcpp/IFC4/include/IfcCsgPrimitive3D.h>
#include <ifcpp/IFC4/include/IfcDerivedProfileDef.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcExtrudedAreaSolid.h>
#include <ifcpp/IFC4/include/IfcExtrudedAreaSolidTapered.h>
#include <ifcpp/IFC4/include/IfcParameterizedProfileDef.h>
#include <ifcpp/IFC4/include/IfcPolygonalFaceSet.h>
#include <ifcpp/IFC4/include/IfcPositiveLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcSolidModel.h>
#include <ifcpp/IFC4/include/IfcTriangulatedFaceSet.h>

namespace QuorlanProgram::Import {

using GeometryObjectLib::Vertex;

namespace {

/// Outer loop first and no more than one of them.
bool IsSimpleProfile(IfcProfileDef const* profile) {
    if (auto const* derived = dynamic_cast<IfcDerivedProfileDef const*>(profile)) {
        return IsSimpleProfile(derived->m_ParentProfile.get());
    }
    return dynamic_cast<IfcParameterizedProfileDef const*>(profile) ||
           dynamic_cast<IfcArbitraryClosedProfileDef const*>(profile);
}

}  // namespace

std::optional<Vertex> ReadExtrusion(IfcExtrudedAreaSolid const& solid, double metresPerUnit) {
    if (!solid.m_ExtrudedDirection || !solid.m_Depth) return std::nullopt;
    auto const& ratios = solid.m_ExtrudedDirection->m_DirectionRatios;
    if (ratios.size() < 3 || !ratios[0] || !ratios[1] || !ratios[2]) return std::nullopt;
    Vertex const direction{ratios[0]->m_value, ratios[1]->m_value, ratios[2]->m_value};
    auto const length = GeometryObjectLib::Length(direction);
    if (!(length > 0)) return std::nullopt;
    return direction * (solid.m_Depth->m_value * metresPerUnit / length);
}

bool IsSolid(IfcRepresentationItem const& item) {
    if (auto const* set = dynamic_cast<IfcTriangulatedFaceSet const*>(&item)) {
        return set->m_Closed && set->m_Closed->m_value;
    }
    if (auto const* set = dynamic_cast<IfcPolygonalFaceSet const*>(&item))
        return set->m_Closed && set->m_Closed->m_value;
    return dynamic_cast<IfcSolidModel const*>(&item) || dynamic_cast<IfcBooleanResult const*>(&item) ||
           dynamic_cast<IfcCsgPrimitive3D const*>(&item);
}

bool IsPrism(IfcExtrudedAreaSolid const& solid) {
    return !dynamic_cast<IfcExtrudedAreaSolidTapered const*>(&solid) && IsSimpleProfile(solid.m_SweptArea.get());
}

}  // namespace QuorlanProgram::Import
