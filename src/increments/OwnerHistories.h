#pragma once

#include <Quorlan/Guid.h>
#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Writes an owner history with a change action and nothing else. RETURNS its reference.
std::uint32_t AddBareOwnerHistory(IOwnerHistoryWriter& writer, OwnerHistoryChangeAction action);

/// Writes a bare entity per GUID, all linked to one owner history with the action DELETED.
void AddDeletedEntities(ModelBuilder& target, std::vector<_GUID> const& guids);

/// Copies owner histories of the entities of one source model, with their change action replaced.
class OwnerHistoryCopier {
public:
    OwnerHistoryCopier(IModelReader const& source, IOwnerHistoryWriter& writer);

    /// Writes the owner history of an entity's last link for its copy; of an entity without a link, what the source
    /// reads for the reference `kInvalidIndex`. Entities that share an owner part in the source share its copy.
    void Copy(std::uint32_t sourceEntity, EntityIndex_t copy, OwnerHistoryChangeAction action);

private:
    std::uint32_t CopyPart(std::uint32_t sourcePart);

    IOwnerHistoryReader const& source_;
    IOwnerHistoryWriter& writer_;
    std::vector<std::uint32_t> references_;  ///< by source entity
    std::unordered_map<std::uint32_t, std::uint32_t> parts_;
    OwnerPart part_;
    OwnerHistoryRecord record_;
    OwnerHistoryLinkRecord link_;
};

}  // namespace Quorlan::Tools::Increments
