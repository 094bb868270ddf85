#pragma once

#include "model/LargePages.h"

#include <Quorlan/Guid.h>
#include <Quorlan/IModelReader.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan {
class BufferModelReader;
}

namespace Quorlan::Tools::Increments {

/// The 64-bit FNV-1a hash of the first 8 bytes, exclusive-or the same hash of the last 8 (Fowler, Noll, Vo, "The FNV
/// Non-Cryptographic Hash Algorithm", 1991).
std::uint64_t HashGuid(_GUID const& guid);

/// The entities of one model that a GUID identifies, with the change actions that their owner histories record.
///
/// Of several entities with one GUID the first counts, of several links of one entity the last. An entity without a
/// link has the action NOCHANGE.
class EntityGuidIndex {
public:
    struct entry_s {
        _GUID guid;
        OwnerHistoryChangeAction action;
        EntityIndex_t entity;
        std::uint64_t hash;  ///< of the GUID
    };

    explicit EntityGuidIndex(IModelReader const& reader);

    /// RETURNS null if no entity has this GUID. COST: constant.
    entry_s const* Find(_GUID const& guid) const { return Find(guid, HashGuid(guid)); }

    /// The same for an entry of another index, whose hash is known.
    entry_s const* Find(entry_s const& entry) const { return Find(entry.guid, entry.hash); }

    /// In ascending order of the entities.
    LargeVector<entry_s> const& GetEntries() const { return entries_; }

private:
    class Batch;

    void AddAll(IModelReader const& reader);
    void AddAll(BufferModelReader const& reader);
    void Reserve(std::uint32_t count);
    void Add(entry_s const& entry);
    entry_s const* Find(_GUID const& guid, std::uint64_t hash) const;
    std::size_t FindSlot(_GUID const& guid, std::uint64_t hash) const;

    /// An index of the table fits the mask; the bits above hold those of the hash, so that an entry is hardly ever read
    /// without being the one that is looked for.
    std::uint32_t GetIndexMask() const { return static_cast<std::uint32_t>(slots_.size() - 1); }
    std::uint32_t TagOf(std::uint64_t hash) const { return static_cast<std::uint32_t>(hash >> 32) & ~GetIndexMask(); }

    LargeVector<entry_s> entries_;
    LargeVector<std::uint32_t> slots_;  ///< tagged entry indices in an open hash table of a power of two, or kFree
};

}  // namespace Quorlan::Tools::Increments
