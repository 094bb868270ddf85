#include "increments/EntityGuidIndex.h"

#include "model/BufferReaders.h"

namespace Quorlan::Tools::Increments {
namespace {

constexpr std::uint64_t kFnvBasis = 0xcbf29ce484222325;
constexpr std::uint64_t kFnvPrime = 0x100000001b3;

std::uint64_t HashEightBytes(unsigned char const* bytes) {
    std::uint64_t hash = kFnvBasis;
    for (int i = 0; i < 8; ++i) hash = (hash ^ bytes[i]) * kFnvPrime;
    return hash;
}

unsigned char const* BytesOf(_GUID const& guid) { return reinterpret_cast<unsigned char const*>(&guid); }

/// The change action of every entity, through the public operations.
std::vector<OwnerHistoryChangeAction> ReadActions(IModelReader const& reader, std::uint32_t entityCount) {
    std::vector<OwnerHistoryChangeAction> actions(entityCount, OwnerHistoryChangeAction::NOCHANGE);
    IOwnerHistoryReader const& histories = reader.GetOwnerHistories();
    OwnerHistoryLink link;
    OwnerHistoryRecord record;
    for (std::uint32_t i = 0, count = histories.GetLinkCount(); i < count; ++i) {
        histories.GetLink(link, i);
        auto const entity = static_cast<std::uint32_t>(link.entity);
        if (entity >= entityCount) continue;
        histories.GetOwnerHistory(record, histories.GetOwnerHistoryIndex(link.reference));
        actions[entity] = record.changeAction;
    }
    return actions;
}

/// The same from a buffer.
std::vector<OwnerHistoryChangeAction> ReadActions(Schema::Model const& model, std::uint32_t entityCount) {
    std::vector<OwnerHistoryChangeAction> actions(entityCount, OwnerHistoryChangeAction::NOCHANGE);
    auto const* const histories = model.ownerHistories();
    if (histories == nullptr) return actions;
    for (std::uint32_t i = 0; i < CountOf(histories->links()); ++i) {
        auto const* const link = histories->links()->Get(i);
        if (link->entity() >= entityCount) continue;
        auto const* const history = FindElement(histories->histories(), link->reference());
        auto const* const record = history == nullptr ? nullptr : FindElement(histories->records(), history->record());
        actions[link->entity()] = static_cast<OwnerHistoryChangeAction>(record == nullptr ? 0 : record->changeAction());
    }
    return actions;
}

}  // namespace

std::uint64_t HashGuid(_GUID const& guid) {
    unsigned char const* const bytes = BytesOf(guid);
    std::uint64_t first = kFnvBasis;
    std::uint64_t last = kFnvBasis;
    for (int i = 0; i < 8; ++i) {  // side by side: each step of one waits for the step before
        first = (first ^ bytes[i]) * kFnvPrime;
        last = (last ^ bytes[8 + i]) * kFnvPrime;
    }
    return first ^ last;
}

EntityGuidIndex::EntityGuidIndex(IModelReader const& reader) {
    if (auto const* const stored = dynamic_cast<BufferModelReader const*>(&reader)) {
        AddAll(*stored);
        return;
    }
    IEntityReader const& entities = reader.GetEntities();
    std::uint32_t const count = entities.GetCount();
    auto const actions = ReadActions(reader, count);
    Reserve(count);
    EntityIdentifier identifier;
    _GUID guid{};
    for (std::uint32_t entity = 0; entity < count; ++entity) {
        entities.GetIdentifier(identifier, entity);
        if (identifier.kind != 0) continue;
        entities.GetGuid(guid, identifier.reference);
        Add(guid, actions[entity], EntityIndex_t{entity});
    }
}

void EntityGuidIndex::AddAll(BufferModelReader const& reader) {
    auto const* const records = reader.GetModel().entities()->records();
    auto const actions = ReadActions(reader.GetModel(), records->size());
    Reserve(records->size());
    _GUID guid{};
    for (std::uint32_t entity = 0; entity < records->size(); ++entity) {
        auto const* const record = records->Get(entity);
        if (record->identifierKind() != 0) continue;
        reader.GetEntities().GetGuid(guid, record->identifierReference());
        Add(guid, actions[entity], EntityIndex_t{entity});
    }
}

void EntityGuidIndex::Reserve(std::uint32_t count) {
    std::size_t slotCount = 2;
    while (slotCount < std::size_t{count} * 2) slotCount *= 2;
    slots_.assign(slotCount, kInvalidIndex);
    entries_.reserve(count);
}

void EntityGuidIndex::Add(_GUID const& guid, OwnerHistoryChangeAction action, EntityIndex_t entity) {
    std::uint64_t const hash = HashGuid(guid);
    std::uint32_t& slot = slots_[FindSlot(guid, hash)];
    if (slot != kInvalidIndex) return;
    slot = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back({guid, action, entity, hash});
}

EntityGuidIndex::entry_s const* EntityGuidIndex::Find(_GUID const& guid, std::uint64_t hash) const {
    std::uint32_t const entry = slots_[FindSlot(guid, hash)];
    return entry == kInvalidIndex ? nullptr : &entries_[entry];
}

/// The slot that holds the GUID, or the free slot where it belongs. The stride comes from the last half alone (double
/// hashing), so that GUIDs whose halves are equal, which all hash to 0, part at the second probe. An odd stride visits
/// every slot, and half of them are free.
std::size_t EntityGuidIndex::FindSlot(_GUID const& guid, std::uint64_t hash) const {
    auto const isElsewhere = [&](std::uint64_t slot) {
        return slots_[slot] != kInvalidIndex && entries_[slots_[slot]].guid != guid;
    };
    std::uint64_t const mask = slots_.size() - 1;
    std::uint64_t slot = hash & mask;
    if (!isElsewhere(slot)) return slot;
    std::uint64_t const stride = (HashEightBytes(BytesOf(guid) + 8) >> 32) | 1;
    do slot = (slot + stride) & mask;
    while (isElsewhere(slot));
    return slot;
}

}  // namespace Quorlan::Tools::Increments
