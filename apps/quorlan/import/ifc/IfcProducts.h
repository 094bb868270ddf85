#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ImportOptions.h"
#include "ifc/BodyWriter.h"
#include "ifc/OwnerHistories.h"
#include "ifc/PropertySets.h"
#include "step/TextRepair.h"

class IfcObjectDefinition;

namespace QuorlanProgram::Import {

/// Writes the products of one IFC file.
class IfcProducts {
public:
    /// `original` is the text before it was repaired; it and `text` must outlive this object.
    IfcProducts(std::shared_ptr<BuildingModel> const& model, Units const& units, std::string_view original,
                RepairedText const& text, ImportOptions const& options, ModelParts& parts, ImportReport& report,
                MessageLog& log);

    void WriteAll();

private:
    void Write(IfcProduct const& product);
    void WriteParts(Quorlan::EntityIndex_t entity, IfcProduct const& product, Body const& body, Matrix4 const& world);
    void NoteDamage(IfcProduct const& product);
    std::string GetClass(IfcProduct const& product) const;
    std::string GetName(IfcProduct const& product) const;
    bool HasLostPlacement(IfcProduct const& product);
    std::vector<PlacedItem> CollectOpenings(IfcProduct const& product, Matrix4 const& world);
    void AddOpening(std::vector<PlacedItem>& openings, IfcProduct const& opening, Matrix4 const& toProduct);

    std::shared_ptr<BuildingModel> model_;
    std::string_view original_;
    RepairedText const& text_;
    ImportOptions const& options_;
    std::unordered_map<std::uint32_t, InstancePlace const*> places_;  ///< filled when it is asked for
    ModelParts& parts_;
    ImportReport& report_;
    PlacementReader placements_;
    PropertyReader properties_;
    IfcGeometry geometry_;
    OwnerHistories histories_;
    BodyWriter bodies_;
    CurveReader curves_;
};

}  // namespace QuorlanProgram::Import
