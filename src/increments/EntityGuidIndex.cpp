#include "increments/EntityGuidIndex.h"

namespace Quorlan::Tools::Increments {
namespace {

std::uint64_t HashEightBytes(unsigned char const* bytes) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (int i = 0; i < 8; ++i) hash = (hash ^ bytes[i]) * 0x100000001b3;
    return hash;
}

unsigned char const* BytesOf(_GUID const& guid) { return reinterpret_cast<unsigned char const*>(&guid); }

/// The change action of every entity.
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

}  // namespace

std::uint64_t HashGuid(_GUID const& guid) { return HashEightBytes(BytesOf(guid)) ^ HashEightBytes(BytesOf(guid) + 8); }

EntityGuidIndex::EntityGuidIndex(IModelReader const& reader) {
    IEntityReader const& entities = reader.GetEntities();
    std::uint32_t const count = entities.GetCount();
    auto const actions = ReadActions(reader, count);

    std::size_t slotCount = 2;
    while (slotCount < std::size_t{count} * 2) slotCount *= 2;
    slots_.assign(slotCount, kInvalidIndex);
    entries_.reserve(count);

    EntityIdentifier identifier;
    _GUID guid{};
    for (std::uint32_t entity = 0; entity < count; ++entity) {
        entities.GetIdentifier(identifier, entity);
        if (identifier.kind != 0) continue;
        entities.GetGuid(guid, identifier.reference);
        std::uint32_t& slot = slots_[FindSlot(guid)];
        if (slot != kInvalidIndex) continue;
        slot = static_cast<std::uint32_t>(entries_.size());
        entries_.push_back({guid, actions[entity], EntityIndex_t{entity}});
    }
}

EntityGuidIndex::entry_s const* EntityGuidIndex::Find(_GUID const& guid) const {
    std::uint32_t const entry = slots_[FindSlot(guid)];
    return entry == kInvalidIndex ? nullptr : &entries_[entry];
}

/// The slot that holds the GUID, or the free slot where it belongs. The stride comes from the last half alone (double
/// hashing), so that GUIDs whose halves are equal, which all hash to 0, part at the second probe. An odd stride visits
/// every slot, and half of them are free.
std::size_t EntityGuidIndex::FindSlot(_GUID const& guid) const {
    std::uint64_t const mask = slots_.size() - 1;
    std::uint64_t const stride = (HashEightBytes(BytesOf(guid) + 8) >> 32) | 1;
    std::uint64_t slot = HashGuid(guid) & mask;
    while (slots_[slot] != kInvalidIndex && entries_[slots_[slot]].guid != guid) slot = (slot + stride) & mask;
    return slot;
}

}  // namespace Quorlan::Tools::Increments
