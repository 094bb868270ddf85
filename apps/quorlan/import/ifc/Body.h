#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ifc/Appearance.h"
#include "ifc/IfcGeometry.h"
#include "ifc/Placement.h"

class IfcProduct;

namespace QuorlanProgram::Import {

/// One item of a product's body, taken out of the maps that it may stand in.
struct BodyItem {
    PlacedItem placed;  ///< in the frame of the product
    std::optional<MaterialRecord> style;
    std::string layer;  ///< empty for none
};

struct Body {
    bool hasRepresentation = false;  ///< there is a body, though perhaps one without items
    std::vector<BodyItem> items;
    std::vector<BodyItem> curves;                   ///< of the curve representations that are asked for
    std::vector<std::string> otherRepresentations;  ///< the identifiers of those that are left out
};

/// The items of the representations that are the body of a product: those named Body or Facetation, or without a name.
///
/// A style of a map's use goes before that of the mapped item. A layer is that of the item, else of the product's
/// representation, else of the map's use, else of the mapped representation. Representations named in `curveNames` are
/// curves; their items stand on a layer of that name where they have none.
Body CollectBody(IfcProduct const& product, PlacementReader const& placements,
                 std::set<std::string> const& curveNames = {});

}  // namespace QuorlanProgram::Import
