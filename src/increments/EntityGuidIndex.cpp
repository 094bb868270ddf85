#include "increments/EntityGuidIndex.h"

#include "geometry/Lanes.h"
#include "model/BufferReaders.h"

#include <array>

namespace Quorlan::Tools::Increments {
namespace {

constexpr std::uint64_t kFnvBasis = 0xcbf29ce484222325;
constexpr std::uint64_t kFnvPrime = 0x100000001b3;

constexpr std::uint32_t kFree = 0xFFFFFFFF;  ///< no entry: indices stay below the mask

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

/// Entries on their way into the table, which the processor fetches the slots of meanwhile.
class EntityGuidIndex::Batch {
public:
    explicit Batch(EntityGuidIndex& index) : index_(index) {}

    void Add(_GUID const& guid, OwnerHistoryChangeAction action, std::uint32_t entity) {
        if (count_ == entries_.size()) Flush();
        std::uint64_t const hash = HashGuid(guid);
        QUORLAN_PREFETCH(&index_.slots_[hash & index_.GetIndexMask()]);
        entries_[count_++] = {guid, action, EntityIndex_t{entity}, hash};
    }

    void Flush() {
        for (std::size_t i = 0; i < count_; ++i) index_.Add(entries_[i]);
        count_ = 0;
    }

private:
    EntityGuidIndex& index_;
    std::size_t count_ = 0;
    std::array<entry_s, 32> entries_;
};

EntityGuidIndex::EntityGuidIndex(IModelReader const& reader) {
    if (auto const* const stored = dynamic_cast<BufferModelReader const*>(&reader)) {
        AddAll(*stored);
    } else {
        AddAll(reader);
    }
}

void EntityGuidIndex::AddAll(IModelReader const& reader) {
    IEntityReader const& entities = reader.GetEntities();
    std::uint32_t const count = entities.GetCount();
    auto const actions = ReadActions(reader, count);
    Reserve(count);
    Batch batch(*this);
    EntityIdentifier identifier;
    _GUID guid{};
    for (std::uint32_t entity = 0; entity < count; ++entity) {
        entities.GetIdentifier(identifier, entity);
        if (identifier.kind != 0) continue;
        entities.GetGuid(guid, identifier.reference);
        batch.Add(guid, actions[entity], entity);
    }
    batch.Flush();
}

void EntityGuidIndex::AddAll(BufferModelReader const& reader) {
    auto const* const records = reader.GetModel().entities()->records();
    auto const* const guids = reader.GetModel().entities()->guids();
    auto const actions = ReadActions(reader.GetModel(), records->size());
    Reserve(records->size());
    Batch batch(*this);
    for (std::uint32_t entity = 0; entity < records->size(); ++entity) {
        auto const* const record = records->Get(entity);
        if (record->identifierKind() != 0) continue;
        batch.Add(ToGuid(FindElement(guids, record->identifierReference())), actions[entity], entity);
    }
    batch.Flush();
}

void EntityGuidIndex::Reserve(std::uint32_t count) {
    std::size_t slotCount = 2;
    while (slotCount < std::size_t{count} * 4) slotCount *= 2;
    slots_.assign(slotCount, kFree);
    entries_.reserve(count);
}

void EntityGuidIndex::Add(entry_s const& entry) {
    std::uint32_t& slot = slots_[FindSlot(entry.guid, entry.hash)];
    if (slot != kFree) return;
    slot = TagOf(entry.hash) | static_cast<std::uint32_t>(entries_.size());
    entries_.push_back(entry);
}

EntityGuidIndex::entry_s const* EntityGuidIndex::Find(_GUID const& guid, std::uint64_t hash) const {
    std::uint32_t const slot = slots_[FindSlot(guid, hash)];
    return slot == kFree ? nullptr : &entries_[slot & GetIndexMask()];
}

/// The slot that holds the GUID, or the free slot where it belongs. The stride comes from the last half alone (double
/// hashing), so that GUIDs whose halves are equal, which all hash to 0, part at the second probe. An odd stride visits
/// every slot, and most of them are free.
std::size_t EntityGuidIndex::FindSlot(_GUID const& guid, std::uint64_t hash) const {
    std::uint64_t const mask = GetIndexMask();
    std::uint32_t const tag = TagOf(hash);
    auto const isElsewhere = [&](std::uint64_t position) {
        std::uint32_t const slot = slots_[position];
        if (slot == kFree) return false;
        return ((slot ^ tag) & ~mask) != 0 || entries_[slot & mask].guid != guid;
    };
    std::uint64_t slot = hash & mask;
    if (!isElsewhere(slot)) return slot;
    std::uint64_t const stride = (HashEightBytes(BytesOf(guid) + 8) >> 32) | 1;
    do slot = (slot + stride) & mask;
    while (isElsewhere(slot));
    return slot;
}

}  // namespace Quorlan::Tools::Increments
