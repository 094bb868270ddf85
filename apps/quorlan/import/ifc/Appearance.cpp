#include "ifc/Appearance.h"

#include <ifcpp/IFC4/include/IfcBooleanOperand.h>
#include <ifcpp/IFC4/include/IfcBooleanResult.h>
#include <ifcpp/IFC4/include/IfcColourRgb.h>
#include <ifcpp/IFC4/include/IfcCsgSolid.h>
#include <ifcpp/IFC4/include/IfcCurveStyle.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMaterial.h>
#include <ifcpp/IFC4/include/IfcMaterialConstituent.h>
#include <ifcpp/IFC4/include/IfcMaterialConstituentSet.h>
#include <ifcpp/IFC4/include/IfcMaterialDefinitionRepresentation.h>
#include <ifcpp/IFC4/include/IfcMaterialLayer.h>
#include <ifcpp/IFC4/include/IfcMaterialLayerSet.h>
#include <ifcpp/IFC4/include/IfcMaterialLayerSetUsage.h>
#include <ifcpp/IFC4/include/IfcMaterialList.h>
#include <ifcpp/IFC4/include/IfcMaterialProfile.h>
#include <ifcpp/IFC4/include/IfcMaterialProfileSet.h>
#include <ifcpp/IFC4/include/IfcMaterialProfileSetUsage.h>
#include <ifcpp/IFC4/include/IfcNormalisedRatioMeasure.h>
#include <ifcpp/IFC4/include/IfcObject.h>
#include <ifcpp/IFC4/include/IfcPresentationLayerAssignment.h>
#include <ifcpp/IFC4/include/IfcPresentationStyleAssignment.h>
#include <ifcpp/IFC4/include/IfcRelAssociatesMaterial.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByType.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcStyledItem.h>
#include <ifcpp/IFC4/include/IfcSurfaceSide.h>
#include <ifcpp/IFC4/include/IfcSurfaceStyle.h>
#include <ifcpp/IFC4/include/IfcSurfaceStyleRendering.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>

#include <algorithm>
#include <cmath>

#include "step/WideText.h"

namespace QuorlanProgram::Import {

namespace {

constexpr int kDeepestOperand = 1000;  ///< a chain of boolean operands that is longer is one that meets itself

using Style = std::optional<MaterialRecord>;

std::uint8_t ToByte(double share) { return static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255)); }

template <typename Measure>
double ValueOr(Measure const& measure, double fallback) {
    return measure && std::isfinite(measure->m_value) ? measure->m_value : fallback;
}

void SetColour(MaterialRecord& material, IfcColourRgb const& colour, double factor) {
    material.color[0] = ToByte(ValueOr(colour.m_Red, 0) * factor);
    material.color[1] = ToByte(ValueOr(colour.m_Green, 0) * factor);
    material.color[2] = ToByte(ValueOr(colour.m_Blue, 0) * factor);
}

/// The diffuse colour of a style may be a colour of its own or a share of the surface colour.
MaterialRecord ToMaterial(IfcSurfaceStyleShading const& shading) {
    MaterialRecord material;
    material.color[3] = ToByte(1 - ValueOr(shading.m_Transparency, 0));
    auto const* rendering = dynamic_cast<IfcSurfaceStyleRendering const*>(&shading);
    auto const* diffuse = rendering ? rendering->m_DiffuseColour.get() : nullptr;
    if (auto const* colour = dynamic_cast<IfcColourRgb const*>(diffuse)) {
        SetColour(material, *colour, 1);
    } else if (shading.m_SurfaceColour) {
        auto const* share = dynamic_cast<IfcNormalisedRatioMeasure const*>(diffuse);
        SetColour(material, *shading.m_SurfaceColour, share ? ValueOr(share, 1) : 1);
    }
    return material;
}

Style ToStyle(IfcSurfaceStyle const& style) {
    for (auto const& element : style.m_Styles) {
        auto const* shading = dynamic_cast<IfcSurfaceStyleShading const*>(element.get());
        if (!shading) continue;
        auto material = ToMaterial(*shading);
        // A style of the back side alone is shown rather than lost.
        material.twoSided = style.m_Side && style.m_Side->m_enum != IfcSurfaceSide::ENUM_POSITIVE;
        return material;
    }
    return std::nullopt;
}

Style ToStyle(IfcCurveStyle const& style) {
    auto const* colour = dynamic_cast<IfcColourRgb const*>(style.m_CurveColour.get());
    if (!colour) return std::nullopt;
    MaterialRecord material;
    material.color[3] = 255;
    SetColour(material, *colour, 1);
    return material;
}

/// The first style of a kind that an item has, by itself or in an assignment.
template <typename Kind>
Style ToStyle(IfcStyledItem const& styled) {
    for (auto const& entry : styled.m_Styles) {
        if (auto const* own = dynamic_cast<Kind const*>(entry.get())) {
            if (auto style = ToStyle(*own)) return style;
        }
        auto const* assignment = dynamic_cast<IfcPresentationStyleAssignment const*>(entry.get());
        if (!assignment) continue;
        for (auto const& select : assignment->m_Styles) {
            auto const* assigned = dynamic_cast<Kind const*>(select.get());
            if (!assigned) continue;
            if (auto style = ToStyle(*assigned)) return style;
        }
    }
    return std::nullopt;
}

template <typename Kind>
Style FindOwnStyle(IfcRepresentationItem const& item) {
    for (auto const& weak : item.m_StyledByItem_inverse) {
        auto const styled = weak.lock();
        if (!styled) continue;
        if (auto style = ToStyle<Kind>(*styled)) return style;
    }
    return std::nullopt;
}

Style FindStyle(IfcMaterial const* material) {
    if (!material) return std::nullopt;
    for (auto const& weak : material->m_HasRepresentation_inverse) {
        auto const definition = weak.lock();
        if (!definition) continue;
        for (auto const& representation : definition->m_Representations) {
            if (!representation) continue;
            for (auto const& item : representation->m_Items) {
                auto const* styled = dynamic_cast<IfcStyledItem const*>(item.get());
                if (!styled) continue;
                if (auto style = ToStyle<IfcSurfaceStyle>(*styled)) return style;
            }
        }
    }
    return std::nullopt;
}

/// The first style of the materials of `parts`, each of which holds one as its m_Material.
template <typename Parts>
Style FindFirst(Parts const& parts) {
    for (auto const& part : parts) {
        if (!part) continue;
        if (auto style = FindStyle(part->m_Material.get())) return style;
    }
    return std::nullopt;
}

Style FindSelectStyle(IfcMaterialSelect const* select) {
    if (auto const* usage = dynamic_cast<IfcMaterialLayerSetUsage const*>(select)) {
        select = dynamic_cast<IfcMaterialSelect const*>(usage->m_ForLayerSet.get());
    } else if (auto const* profiles = dynamic_cast<IfcMaterialProfileSetUsage const*>(select)) {
        select = dynamic_cast<IfcMaterialSelect const*>(profiles->m_ForProfileSet.get());
    }
    if (auto const* material = dynamic_cast<IfcMaterial const*>(select)) return FindStyle(material);
    if (auto const* set = dynamic_cast<IfcMaterialLayerSet const*>(select)) return FindFirst(set->m_MaterialLayers);
    if (auto const* set = dynamic_cast<IfcMaterialProfileSet const*>(select)) return FindFirst(set->m_MaterialProfiles);
    if (auto const* set = dynamic_cast<IfcMaterialConstituentSet const*>(select)) {
        return FindFirst(set->m_MaterialConstituents);
    }
    if (auto const* layer = dynamic_cast<IfcMaterialLayer const*>(select)) return FindStyle(layer->m_Material.get());
    if (auto const* list = dynamic_cast<IfcMaterialList const*>(select)) {
        for (auto const& material : list->m_Materials) {
            if (auto style = FindStyle(material.get())) return style;
        }
    }
    return std::nullopt;
}

Style FindAssociatedStyle(IfcObjectDefinition const& object) {
    for (auto const& weak : object.m_HasAssociations_inverse) {
        auto const relation = std::dynamic_pointer_cast<IfcRelAssociatesMaterial>(weak.lock());
        if (!relation) continue;
        if (auto style = FindSelectStyle(relation->m_RelatingMaterial.get())) return style;
    }
    return std::nullopt;
}

template <typename Assignments>
std::string FindName(Assignments const& assignments) {
    for (auto const& weak : assignments) {
        auto const layer = weak.lock();
        if (layer && layer->m_Name) return ToUtf8(layer->m_Name);
    }
    return {};
}

}  // namespace

std::optional<MaterialRecord> FindItemStyle(IfcRepresentationItem const& item) {
    auto const* at = &item;
    for (int depth = 0; at && depth < kDeepestOperand; ++depth) {
        if (auto style = FindOwnStyle<IfcSurfaceStyle>(*at)) return style;
        if (auto const* solid = dynamic_cast<IfcCsgSolid const*>(at)) {
            at = dynamic_cast<IfcRepresentationItem const*>(solid->m_TreeRootExpression.get());
        } else {
            auto const* result = dynamic_cast<IfcBooleanResult const*>(at);
            at = result ? dynamic_cast<IfcRepresentationItem const*>(result->m_FirstOperand.get()) : nullptr;
        }
    }
    return std::nullopt;
}

std::optional<MaterialRecord> FindCurveStyle(IfcRepresentationItem const& item) {
    return FindOwnStyle<IfcCurveStyle>(item);
}

std::optional<MaterialRecord> FindMaterialStyle(IfcObject const& object) {
    if (auto style = FindAssociatedStyle(object)) return style;
    for (auto const& weak : object.m_IsTypedBy_inverse) {
        auto const relation = weak.lock();
        if (!relation || !relation->m_RelatingType) continue;
        if (auto style = FindAssociatedStyle(*relation->m_RelatingType)) return style;
    }
    return std::nullopt;
}

std::string FindLayer(IfcRepresentationItem const& item) { return FindName(item.m_LayerAssignment_inverse); }

std::string FindLayer(IfcRepresentation const& representation) {
    return FindName(representation.m_LayerAssignments_inverse);
}

}  // namespace QuorlanProgram::Import
