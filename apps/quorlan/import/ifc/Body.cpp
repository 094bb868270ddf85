#include "ifc/Body.h"

#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMappedItem.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>
#include <ifcpp/IFC4/include/IfcStyledItem.h>

#include "step/WideText.h"

namespace QuorlanProgram::Import {

namespace {

constexpr int kDeepestMap = 32;  ///< maps within maps beyond this are maps that meet themselves

/// What the way to an item, through the uses of maps, says about it.
struct Context {
    Matrix4 placement;
    std::optional<MaterialRecord> style;
    std::string layer;
    int depth = 0;
};

std::string FirstName(std::string const& a, std::string const& b) { return a.empty() ? b : a; }

class Collector {
public:
    Collector(PlacementReader const& placements, std::vector<BodyItem>& items, bool isOfCurves)
        : placements_(placements), items_(items), isOfCurves_(isOfCurves) {}

    void AddRepresentation(IfcRepresentation const& representation, Context context) {
        context.layer = FirstName(context.layer, FindLayer(representation));
        for (auto const& item : representation.m_Items) {
            if (item) AddItem(item, context);
        }
    }

private:
    std::optional<MaterialRecord> FindStyle(IfcRepresentationItem const& item) const {
        return isOfCurves_ ? FindCurveStyle(item) : FindItemStyle(item);
    }

    void AddItem(std::shared_ptr<IfcRepresentationItem> const& item, Context const& context) {
        if (std::dynamic_pointer_cast<IfcStyledItem>(item)) return;
        if (auto const mapped = std::dynamic_pointer_cast<IfcMappedItem>(item)) {
            AddMap(*mapped, context);
            return;
        }
        BodyItem entry;
        entry.placed = {item, context.placement};
        entry.style = context.style ? context.style : FindStyle(*item);
        entry.layer = FirstName(FindLayer(*item), context.layer);
        items_.push_back(std::move(entry));
    }

    void AddMap(IfcMappedItem const& mapped, Context const& outer) {
        if (!mapped.m_MappingSource || !mapped.m_MappingSource->m_MappedRepresentation || outer.depth == kDeepestMap) {
            return;
        }
        Context context;
        context.placement = outer.placement * placements_.GetMapping(mapped);
        context.style = outer.style ? outer.style : FindStyle(mapped);
        context.layer = FirstName(outer.layer, FindLayer(mapped));
        context.depth = outer.depth + 1;
        AddRepresentation(*mapped.m_MappingSource->m_MappedRepresentation, context);
    }

    PlacementReader const& placements_;
    std::vector<BodyItem>& items_;
    bool isOfCurves_;
};

bool IsBody(std::string const& identifier) {
    return identifier.empty() || identifier == "Body" || identifier == "Facetation";
}

}  // namespace

Body CollectBody(IfcProduct const& product, PlacementReader const& placements,
                 std::set<std::string> const& curveNames) {
    Body body;
    if (!product.m_Representation) return body;
    for (auto const& representation : product.m_Representation->m_Representations) {
        if (!representation) continue;
        auto const identifier = ToUtf8(representation->m_RepresentationIdentifier);
        if (IsBody(identifier)) {
            body.hasRepresentation = true;
            Collector(placements, body.items, false).AddRepresentation(*representation, {});
        } else if (curveNames.count(identifier) > 0) {
            auto const first = body.curves.size();
            Collector(placements, body.curves, true).AddRepresentation(*representation, {});
            for (auto i = first; i < body.curves.size(); ++i) {
                if (body.curves[i].layer.empty()) body.curves[i].layer = identifier;
            }
        } else {
            body.otherRepresentations.push_back(identifier);
        }
    }
    return body;
}

}  // namespace QuorlanProgram::Import
