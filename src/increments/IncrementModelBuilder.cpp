#include <Tools/Increments/IncrementModelBuilder.h>

#include "increments/ContentCopier.h"
#include "increments/EntityCopies.h"
#include "increments/OwnerHistories.h"
#include "increments/StoredCopier.h"

#include <algorithm>

namespace Quorlan::Tools::Increments {
namespace {

EntityCopies CopyEntities(ModelBuilder& target, IModelReader const& reader,
                          std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> const& entities) {
    IEntityReader const& source = reader.GetEntities();
    IEntityWriter& writer = target.GetEntityWriter();
    EntityCopies copies(source.GetCount(), entities.size());
    OwnerHistoryCopier histories(reader, target.GetOwnerHistoryWriter());
    EntityIdentifier identifier;
    _GUID guid{};
    std::wstring text;
    PlacementRecord placement;
    for (auto const& [action, index] : entities) {
        auto const entity = static_cast<std::uint32_t>(index);
        if (entity >= copies.GetSourceCount()) continue;
        source.GetIdentifier(identifier, entity);
        if (identifier.kind != 0) continue;
        source.GetGuid(guid, identifier.reference);
        source.GetText(text, identifier.textReference);
        source.GetPlacementRecord(placement, entity);
        EntityIndex_t const copy = writer.AddEntityAt(guid, text, placement);
        histories.Copy(entity, copy, action);
        copies.Append(entity, copy);
    }
    return copies;
}

/// The instances of the copied entities, in the order of the source.
std::vector<InstanceRecord> FindInstances(IGeometryReader const& source, EntityCopies const& copies) {
    std::vector<InstanceRecord> instances;
    InstanceRecord instance;
    for (std::uint32_t i = 0, count = source.GetInstanceCount(); i < count; ++i) {
        source.GetInstance(instance, i);
        if (copies.IsCopied(instance.entityIndex)) instances.push_back(instance);
    }
    return instances;
}

/// Which of `count` indices the instances use through `member`. Indices that lead nowhere are passed over.
std::vector<bool> MarkUsed(std::vector<InstanceRecord> const& instances, std::uint32_t InstanceRecord::*member,
                           std::uint32_t count) {
    std::vector<bool> used(count);
    for (InstanceRecord const& instance : instances) {
        if (instance.*member < count) used[instance.*member] = true;
    }
    return used;
}

void CopyInstances(ModelBuilder& target, ContentCopier& content, IGeometryReader const& source,
                   EntityCopies const& copies) {
    std::vector<InstanceRecord> instances = FindInstances(source, copies);
    auto const definitions = content.CopyDefinitions(
        source, MarkUsed(instances, &InstanceRecord::definitionIndex, source.GetDefinitionCount()));
    auto const hasNoShape = [&](InstanceRecord const& instance) {
        return LookUp(definitions.indices, instance.definitionIndex) == kInvalidIndex;
    };
    instances.erase(std::remove_if(instances.begin(), instances.end(), hasNoShape), instances.end());

    auto const materials =
        content.CopyMaterials(source, MarkUsed(instances, &InstanceRecord::materialIndex, source.GetMaterialCount()));
    auto const layers =
        content.CopyLayers(source, MarkUsed(instances, &InstanceRecord::layerIndex, source.GetExtraContentCount()));

    IInstanceWriter& writer = target.GetInstanceWriter();
    PlacementRecord placement;
    for (InstanceRecord const& instance : instances) {
        source.GetPlacementRecord(placement, instance.placementIndex);
        if (DefinitionMove const* const move = definitions.FindMove(instance.definitionIndex)) {
            placement = PlaceMoved(placement, ToDoubleFrame(placement), *move);
        }
        copies.ForEachCopy(instance.entityIndex, [&](EntityIndex_t entity) {
            writer.AddInstanceAt(entity, GeometryDefinitionIndex_t{definitions.indices[instance.definitionIndex]},
                                 LookUp(materials, instance.materialIndex), LookUp(layers, instance.layerIndex),
                                 placement);
        });
    }
}

void CopyProperties(ModelBuilder& target, IPropertyReader const& source, EntityCopies const& copies) {
    IPropertyWriter& writer = target.GetPropertyWriter();
    PropertyRecord property;
    for (auto const& copy : copies.GetAll()) {
        EntityIndex_t const entity{copy.source};
        for (std::uint32_t i = 0, count = source.GetPropertyCount(entity); i < count; ++i) {
            source.GetProperty(property, entity, i);
            writer.AddProperty(copy.entity, property);
        }
    }
}

}  // namespace

IncrementModelBuilder::IncrementModelBuilder() : content_(std::make_unique<ContentCopier>(*this)) {}
IncrementModelBuilder::~IncrementModelBuilder() = default;

void IncrementModelBuilder::Add(IModelReader const& reader,
                                std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> const& entities) {
    auto const* const stored = dynamic_cast<BufferModelReader const*>(&reader);
    auto const target = StoredTarget::Find(*this);
    if (stored != nullptr && target) {
        CopyStoredEntities(*target, *content_, *stored, entities);
        return;
    }
    EntityCopies const copies = CopyEntities(*this, reader, entities);
    if (copies.GetAll().empty()) return;
    CopyInstances(*this, *content_, reader.GetGeometry(), copies);
    CopyProperties(*this, reader.GetProperties(), copies);
}

void IncrementModelBuilder::AddAsDeleted(std::vector<_GUID> const& guids) { AddDeletedEntities(*this, guids); }

std::vector<char> IncrementModelBuilder::GetResult() const { return Create(); }

}  // namespace Quorlan::Tools::Increments
