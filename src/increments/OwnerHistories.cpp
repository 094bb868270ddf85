#include "increments/OwnerHistories.h"

namespace Quorlan::Tools::Increments {

std::uint32_t AddBareOwnerHistory(IOwnerHistoryWriter& writer, OwnerHistoryChangeAction action) {
    OwnerHistoryRecord record;
    record.changeAction = action;
    std::uint32_t const part = writer.AddOwnerPart({});
    return writer.AddOwnerHistory(part, writer.AddOwnerHistoryRecord(record), {});
}

void AddDeletedEntities(ModelBuilder& target, std::vector<_GUID> const& guids) {
    IOwnerHistoryWriter& histories = target.GetOwnerHistoryWriter();
    IEntityWriter& entities = target.GetEntityWriter();
    std::uint32_t const deleted = AddBareOwnerHistory(histories, OwnerHistoryChangeAction::DELETED);
    for (_GUID const& guid : guids) histories.LinkOwnerHistory(entities.AddEntity(guid, {}, {}), deleted);
}

OwnerHistoryCopier::OwnerHistoryCopier(IModelReader const& source, IOwnerHistoryWriter& writer)
    : source_(source.GetOwnerHistories()),
      writer_(writer),
      references_(source.GetEntities().GetCount(), kInvalidIndex) {
    OwnerHistoryLink link;
    for (std::uint32_t i = 0, count = source_.GetLinkCount(); i < count; ++i) {
        source_.GetLink(link, i);
        auto const entity = static_cast<std::uint32_t>(link.entity);
        if (entity < references_.size()) references_[entity] = link.reference;
    }
}

void OwnerHistoryCopier::Copy(std::uint32_t sourceEntity, EntityIndex_t copy, OwnerHistoryChangeAction action) {
    std::uint32_t const reference = references_[sourceEntity];
    std::uint32_t const part = CopyPart(source_.GetOwnerPartIndex(reference));
    source_.GetOwnerHistory(record_, source_.GetOwnerHistoryIndex(reference));
    record_.changeAction = action;
    source_.GetOwnerHistoryLinkRecord(link_, reference);
    std::uint32_t const record = writer_.AddOwnerHistoryRecord(record_);
    writer_.LinkOwnerHistory(copy, writer_.AddOwnerHistory(part, record, link_));
}

std::uint32_t OwnerHistoryCopier::CopyPart(std::uint32_t sourcePart) {
    auto const [entry, isNew] = parts_.try_emplace(sourcePart, kInvalidIndex);
    if (isNew) {
        source_.GetOwnerPart(part_, sourcePart);
        entry->second = writer_.AddOwnerPart(part_);
    }
    return entry->second;
}

}  // namespace Quorlan::Tools::Increments
