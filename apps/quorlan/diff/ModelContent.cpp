#include "diff/ModelContent.h"

#include <algorithm>
#include <utility>

#include "ImportRecord.h"

namespace QuorlanProgram {

using Quorlan::kInvalidIndex;

ModelContent::ModelContent(std::vector<char> const& model, Quorlan::IModelReader const& reader, ShapeStore& store)
    : model_(model), reader_(reader), store_(store) {
    Quorlan::Tools::PlacementBuilder builder;
    if (builder.Build(model.data())) placements_ = std::move(builder.getPlacements());
    AddEntities();
    AddParts();
}

void ModelContent::AddEntities() {
    auto const& entities = reader_.GetEntities();
    slots_.assign(entities.GetCount(), kInvalidIndex);
    Quorlan::EntityIdentifier identifier;
    for (std::uint32_t i = 0; i < slots_.size(); ++i) {
        if (entities.GetIdentifier(identifier, i).kind != 0) continue;
        entity_s entity;
        entity.index = i;
        entities.GetGuidText(entity.guid, identifier.reference);
        if (!entityOfGuid_.try_emplace(entity.guid, GetNamedCount()).second) {
            ++repeated_;
            continue;
        }
        slots_[i] = GetNamedCount();
        entities_.push_back(std::move(entity));
    }
}

void ModelContent::AddParts() {
    auto const& geometry = reader_.GetGeometry();
    layers_.resize(geometry.GetExtraContentCount());
    for (std::uint32_t i = 0; i < layers_.size(); ++i) geometry.GetLayerName(layers_[i], i);
    auto const shapes = store_.AddShapes(geometry);
    auto const materials = store_.AddMaterials(geometry);

    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < placements_.size(); ++i) {
        geometry.GetInstance(instance, i);
        auto const slot = slots_[instance.entityIndex];
        auto const shape = shapes[instance.definitionIndex];
        if (slot == kInvalidIndex || shape == ShapeStore::kNoShape) continue;
        bool const hasMaterial = instance.materialIndex < materials.size();
        bool const hasLayer = instance.layerIndex < layers_.size();
        entities_[slot].parts.push_back({shape, hasMaterial ? materials[instance.materialIndex] : kInvalidIndex, i,
                                         hasLayer ? &layers_[instance.layerIndex] : nullptr});
    }
}

ModelContent::entity_s const* ModelContent::Find(std::string const& guid) const {
    auto const found = entityOfGuid_.find(guid);
    return found == entityOfGuid_.end() ? nullptr : &entities_[found->second];
}

std::vector<Quorlan::PropertyRecord> ModelContent::GetProperties(entity_s const& entity) const {
    auto const& properties = reader_.GetProperties();
    auto const index = Quorlan::EntityIndex_t{entity.index};
    std::vector<Quorlan::PropertyRecord> records(properties.GetPropertyCount(index));
    for (std::uint32_t i = 0; i < records.size(); ++i) properties.GetProperty(records[i], index, i);
    auto const tellsOfTheImport = [](auto const& record) { return record.set == Import::kImportRecordSet; };
    records.erase(std::remove_if(records.begin(), records.end(), tellsOfTheImport), records.end());
    return records;
}

}  // namespace QuorlanProgram
