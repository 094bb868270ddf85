#include "ifc/BodyWriter.h"

#include <ifcpp/IFC4/include/IfcRepresentationItem.h>

#include <array>
#include <map>
#include <utility>

namespace QuorlanProgram::Import {

namespace {

/// What keeps line graphics apart: the layer, and the colour where there is one.
using LookKey = std::pair<std::string, std::optional<std::array<std::uint8_t, 4>>>;

}  // namespace

void BodyWriter::WriteBody(Owner const& owner, std::vector<BodyItem> const& body,
                           std::vector<PlacedItem> const& openings) {
    std::vector<CutShape> cuts(body.size());
    if (!openings.empty()) {
        std::vector<PlacedItem> placed;
        for (auto const& item : body) placed.push_back(item.placed);
        cuts = geometry_.Cut(placed, openings);
    }
    for (std::size_t i = 0; i < body.size(); ++i) WriteItem(owner, body[i], std::move(cuts[i]));
}

void BodyWriter::WriteItem(Owner const& owner, BodyItem const& item, CutShape cut) {
    auto const isRigid = IsRigid(item.placed.placement);
    Converted own;
    Converted const* converted = &own;
    auto placement = Matrix4();
    if (cut.isCut) {
        own = Add(cut.converted);
    } else if (isRigid) {
        converted = &GetDefinitions(item.placed.item);
        placement = item.placed.placement;
    } else {
        auto baked = Convert(item.placed.item);
        Transform(baked.shape, item.placed.placement);
        own = Add(baked);
    }
    parts_.AddInstances(owner.entity, converted->definitions, placement, item.style ? item.style : owner.material,
                        item.layer.empty() ? owner.layer : item.layer);
    Note(owner, item, *converted);
    // Of an item that is not cut, openings that should have cut it.
    if (!cut.isCut) {
        Converted uncut;
        uncut.cuts = cut.converted.cuts;
        report_.cuts += uncut.cuts;
        Note(owner, item, uncut);
    }
}

void BodyWriter::Note(Owner const& owner, BodyItem const& item, Converted const& converted) {
    if (converted.cuts.wrong > 0) report_.wrongCuts[owner.guid] += converted.cuts.wrong;
    if (converted.droppedFaces > 0) report_.droppedFaces[owner.guid] += converted.droppedFaces;
    if (converted.addedFaces > 0) report_.addedFaces[owner.guid] += converted.addedFaces;
    if (converted.isSolid) ++report_.solids;
    if (converted.isOpenSolid) report_.openSolids[owner.guid + ' ' + item.placed.item->className()] += 1;
}

ConvertedShape BodyWriter::Convert(std::shared_ptr<IfcRepresentationItem> const& item) {
    auto converted = geometry_.Convert(item);
    if (converted.shape.faces.empty()) ++report_.unreadItems[item->className()];
    return converted;
}

BodyWriter::Converted const& BodyWriter::GetDefinitions(std::shared_ptr<IfcRepresentationItem> const& item) {
    auto const known = definitions_.find(item.get());
    if (known != definitions_.end()) return known->second;
    return definitions_.emplace(item.get(), Add(Convert(item))).first->second;
}

BodyWriter::Converted BodyWriter::Add(ConvertedShape const& shape) {
    Converted converted;
    converted.cuts = shape.cuts;
    report_.cuts += shape.cuts;  // once, however many products use the item
    converted.droppedFaces = shape.droppedFaces;
    converted.addedFaces = shape.addedFaces;
    if (shape.shape.faces.empty()) return converted;
    ++(shape.isAsModelled ? report_.modelledShapes : report_.joinedShapes);
    converted.isSolid = shape.isSolid;
    converted.isOpenSolid = shape.isSolid && !(IsClosed(shape.shape) && GetVolume(shape.shape) > 0);
    converted.definitions = parts_.AddShape(shape.shape);
    return converted;
}

void BodyWriter::WriteCurves(Owner const& owner, std::vector<BodyItem> const& items, CurveReader const& curves) {
    struct Drawing {
        std::optional<MaterialRecord> material;
        GraphicsContainer graphics;
    };
    std::map<LookKey, Drawing> drawings;
    for (auto const& item : items) {
        LookKey key{item.layer, std::nullopt};
        if (item.style) key.second = item.style->color;
        auto& drawing = drawings[key];
        drawing.material = item.style;
        if (!curves.Read(drawing.graphics, item.placed.item, item.placed.placement)) {
            ++report_.unreadItems[item.placed.item->className()];
        }
    }
    for (auto const& [key, drawing] : drawings) {
        parts_.AddInstances(owner.entity, parts_.AddGraphics(drawing.graphics), {}, drawing.material, key.first);
    }
}

}  // namespace QuorlanProgram::Import
