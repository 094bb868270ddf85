#include "increments/StoredCopier.h"

namespace Quorlan::Tools::Increments {
namespace {

/// Appends what an operation of the part writes.
template <class Vector, class... Arguments>
void Append(Vector& elements, StoredPart const& part,
            void (StoredPart::*write)(ElementWriter<typename Vector::value_type>&, Arguments&...) const,
            Arguments&... arguments) {
    ElementWriter<typename Vector::value_type> out(elements);
    (part.*write)(out, arguments...);
    out.Finish();
}

template <class Elements>
std::uint32_t CountOfAll(Elements const& elements) {
    return static_cast<std::uint32_t>(elements.size());
}

}  // namespace

std::optional<StoredTarget> StoredTarget::Find(ModelBuilder& builder) {
    auto* const entities = dynamic_cast<EntityWriter*>(&builder.GetEntityWriter());
    auto* const ownerHistories = dynamic_cast<OwnerHistoryWriter*>(&builder.GetOwnerHistoryWriter());
    auto* const instances = dynamic_cast<InstanceWriter*>(&builder.GetInstanceWriter());
    auto* const properties = dynamic_cast<PropertyWriter*>(&builder.GetPropertyWriter());
    if (entities == nullptr || ownerHistories == nullptr || instances == nullptr || properties == nullptr) {
        return std::nullopt;
    }
    return StoredTarget{*entities, *ownerHistories, *instances, *properties};
}

void CopyStoredEntities(StoredTarget const& target, ContentCopier& content, BufferModelReader const& source,
                        EntityList const& list) {
    auto& [entities, histories, instances, properties] = target;
    StoredNumbers const first{CountOfAll(entities.records),
                              CountOfAll(entities.guids),
                              static_cast<std::uint32_t>(entities.texts.GetCount()),
                              CountOfAll(histories.records),
                              CountOfAll(histories.histories),
                              CountOfAll(instances.instances)};
    ReserveMore(histories.histories, list.size());
    StoredPart const part(source, list, first, histories, content);
    StoredNumbers const& next = part.GetNext();
    ReserveMore(entities.records, next.entity - first.entity);
    ReserveMore(entities.guids, next.guid - first.guid);
    ReserveMore(histories.records, next.historyRecord - first.historyRecord);
    ReserveMore(histories.links, next.entity - first.entity);
    ReserveMore(instances.placements, next.instance - first.instance);
    ReserveMore(instances.instances, next.instance - first.instance);
    Append(entities.records, part, &StoredPart::WriteEntities);
    Append(entities.guids, part, &StoredPart::WriteGuids);
    part.WriteTexts(entities.texts);
    Append(histories.records, part, &StoredPart::WriteHistoryRecords);
    Append(histories.links, part, &StoredPart::WriteHistoryLinks);
    Append(instances.placements, part, &StoredPart::WritePlacements);
    Append(instances.instances, part, &StoredPart::WriteInstances);
    Append(properties.entries, part, &StoredPart::WriteProperties, properties.strings);
}

}  // namespace Quorlan::Tools::Increments
