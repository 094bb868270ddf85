#include "ifc/IfcProducts.h"

#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcFeatureElementSubtraction.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcOwnerHistory.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRelVoidsElement.h>
#include <ifcpp/IFC4/include/IfcSpace.h>
#include <ifcpp/IFC4/include/IfcSpatialZone.h>
#include <ifcpp/model/BuildingModel.h>

#include <set>

#include "step/StepText.h"
#include "step/WideText.h"

namespace QuorlanProgram::Import {

namespace {

constexpr std::size_t kPlacementArgument = 5;  ///< of a product

bool IsOpening(IfcProduct const& product) {
    return dynamic_cast<IfcFeatureElementSubtraction const*>(&product) != nullptr;
}

bool IsSpace(IfcProduct const& product) {
    return dynamic_cast<IfcSpace const*>(&product) || dynamic_cast<IfcSpatialZone const*>(&product);
}

IfcObjectDefinition const* FindWhole(IfcObjectDefinition const& part) {
    for (auto const& weak : part.m_Decomposes_inverse) {
        auto const relation = weak.lock();
        if (relation) return relation->m_RelatingObject.get();
    }
    return nullptr;
}

std::string Join(std::vector<std::string> const& names) {
    std::string joined;
    for (auto const& name : names) joined.append(joined.empty() ? "" : ", ").append(name);
    return joined;
}

}  // namespace

IfcProducts::IfcProducts(std::shared_ptr<BuildingModel> const& model, Units const& units, std::string_view original,
                         RepairedText const& text, ImportOptions const& options, ModelParts& parts,
                         ImportReport& report, MessageLog& log)
    : model_(model),
      original_(original),
      text_(text),
      options_(options),
      parts_(parts),
      report_(report),
      placements_(units.length),
      properties_(units),
      geometry_(model, units.length, {Chords(options.deflection), options.joinsFaces}, log),
      histories_(parts.GetBuilder().GetOwnerHistoryWriter()),
      bodies_(parts, geometry_, report),
      curves_(units.length, units.angle, Chords(options.deflection), text.arcs,
              [this](auto const& item) { return geometry_.ConvertCurve(item); }) {}

void IfcProducts::WriteAll() {
    std::vector<std::shared_ptr<IfcProduct>> products;
    for (auto const& entry : model_->getMapIfcEntities()) {
        if (auto product = std::dynamic_pointer_cast<IfcProduct>(entry.second)) products.push_back(std::move(product));
    }
    for (std::size_t i = 0; i < products.size(); ++i) {
        if (options_.progress) options_.progress("shapes", i, products.size());
        Write(*products[i]);
    }
    report_.ownerHistories = histories_.GetCount();
    report_.unreadProperties = properties_.GetUnread();
}

void IfcProducts::Write(IfcProduct const& product) {
    ++report_.products;
    if (IsOpening(product) && !options_.takesOpenings) {
        ++report_.openings;
        return;
    }
    NoteDamage(product);
    auto const body = CollectBody(product, placements_, options_.curveNames);
    for (auto const& identifier : body.otherRepresentations) ++report_.representations[identifier];
    if (!body.hasRepresentation && body.curves.empty()) {
        ++report_.withoutBody[GetClass(product)];
        if (!body.otherRepresentations.empty()) {
            report_.otherProducts.push_back(GetName(product) + ": " + Join(body.otherRepresentations));
        }
        return;
    }
    auto const& world = placements_.GetWorld(product.m_ObjectPlacement.get());
    if (!world.isUsable || HasLostPlacement(product)) {
        report_.misplacedProducts.push_back(GetName(product));
        return;
    }
    if (world.isRepaired) report_.repairedPlacements.push_back(GetName(product));
    auto const name = product.m_Name ? product.m_Name->m_value : std::wstring();
    auto const entity = parts_.AddEntity(ToUtf8(product.m_GlobalId), name, world.matrix);
    histories_.Link(entity, product.m_OwnerHistory.get());
    for (auto const& property : properties_.Read(product, GetClass(product))) {
        parts_.GetBuilder().GetPropertyWriter().AddProperty(entity, property);
        ++report_.properties;
    }
    WriteParts(entity, product, body, world.matrix);
}

std::string IfcProducts::GetClass(IfcProduct const& product) const {
    auto const standIn = text_.standIns.find(static_cast<std::uint32_t>(product.m_entity_id));
    return standIn == text_.standIns.end() ? product.className() : standIn->second;
}

std::string IfcProducts::GetName(IfcProduct const& product) const {
    return ToUtf8(product.m_GlobalId) + ' ' + GetClass(product);
}

/// True where the file places a product by what the reader does not know: at the origin it would stand in the wrong
/// place. Looked up in the text, seldom as that is.
bool IfcProducts::HasLostPlacement(IfcProduct const& product) {
    if (product.m_ObjectPlacement) return false;
    if (places_.empty()) {
        for (auto const& instance : text_.instances) places_.emplace(instance.id, &instance);
    }
    auto const place = places_.find(static_cast<std::uint32_t>(product.m_entity_id));
    if (place == places_.end()) return false;
    auto const begin = place->second->begin;
    auto const statements = ReadStatements(original_.substr(begin, place->second->end - begin));
    if (statements.empty()) return false;
    auto const arguments = SplitArguments(statements.front().arguments);
    return arguments.size() > kPlacementArgument && arguments[kPlacementArgument].substr(0, 1) == "#";
}

void IfcProducts::NoteDamage(IfcProduct const& product) {
    if (text_.faults.damaged.count(static_cast<std::uint32_t>(product.m_entity_id)) > 0) {
        report_.damagedProducts.push_back(GetName(product));
    }
}

void IfcProducts::WriteParts(Quorlan::EntityIndex_t entity, IfcProduct const& product, Body const& body,
                             Matrix4 const& world) {
    if (IsSpace(product)) ++report_.spaces;
    BodyWriter::Owner owner{entity, ToUtf8(product.m_GlobalId), FindMaterialStyle(product), {}};
    if (IsSpace(product)) owner.layer = "IfcSpace";
    if (IsOpening(product)) owner.layer = "IfcOpeningElement";
    auto const written = report_.instances;
    bodies_.WriteBody(owner, body.items, CollectOpenings(product, world));
    if (body.hasRepresentation && report_.instances == written) {
        report_.productsWithoutShape.push_back(GetName(product));
    }
    bodies_.WriteCurves(owner, body.curves, curves_);
}

/// The openings of a product and of the wholes that it is a part of, in the frame of the product.
std::vector<PlacedItem> IfcProducts::CollectOpenings(IfcProduct const& product, Matrix4 const& world) {
    std::vector<PlacedItem> openings;
    std::set<IfcObjectDefinition const*> met;
    auto const toProduct = InvertRigid(world);
    for (auto const* at = dynamic_cast<IfcObjectDefinition const*>(&product); at && met.insert(at).second;) {
        auto const* element = dynamic_cast<IfcElement const*>(at);
        if (!element) break;
        for (auto const& weak : element->m_HasOpenings_inverse) {
            auto const relation = weak.lock();
            if (relation && relation->m_RelatedOpeningElement) {
                AddOpening(openings, *relation->m_RelatedOpeningElement, toProduct);
            }
        }
        at = FindWhole(*at);
    }
    return openings;
}

void IfcProducts::AddOpening(std::vector<PlacedItem>& openings, IfcProduct const& opening, Matrix4 const& toProduct) {
    auto const& world = placements_.GetWorld(opening.m_ObjectPlacement.get());
    if (!world.isUsable) return;
    for (auto& item : CollectBody(opening, placements_).items) {
        openings.push_back({item.placed.item, toProduct * world.matrix * item.placed.placement});
    }
}

}  // namespace QuorlanProgram::Import
