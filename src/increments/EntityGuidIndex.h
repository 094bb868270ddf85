#pragma once

#include <Quorlan/Guid.h>
#include <Quorlan/IModelReader.h>

#include <cstddef>
#include <cstdint>
#include <vector>

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
    };

    explicit EntityGuidIndex(IModelReader const& reader);

    /// RETURNS null if no entity has this GUID. COST: constant.
    entry_s const* Find(_GUID const& guid) const;

    /// In ascending order of the entities.
    std::vector<entry_s> const& GetEntries() const { return entries_; }

private:
    std::size_t FindSlot(_GUID const& guid) const;

    std::vector<entry_s> entries_;
    std::vector<std::uint32_t> slots_;  ///< entry indices in an open hash table of a power of two; kInvalidIndex: free
};

}  // namespace Quorlan::Tools::Increments
