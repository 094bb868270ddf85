#pragma once

#include "increments/ContentCopier.h"
#include "model/BufferReaders.h"
#include "model/ModelWriters.h"

#include <optional>
#include <utility>
#include <vector>

namespace Quorlan::Tools::Increments {

/// The writers of a model builder where they are the library's own, which take content as a buffer holds it.
struct StoredTarget {
    EntityWriter& entities;
    OwnerHistoryWriter& ownerHistories;
    InstanceWriter& instances;
    PropertyWriter& properties;

    /// Empty where a derived class has writers of its own.
    static std::optional<StoredTarget> Find(ModelBuilder& builder);
};

/// Copies entities from a model buffer, table by table and struct by struct: the same as reading and writing each
/// through the public operations, without their conversions. REQUIRES: `content` writes to the same builder.
void CopyStoredEntities(StoredTarget const& target, ContentCopier& content, BufferModelReader const& source,
                        std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> const& entities);

}  // namespace Quorlan::Tools::Increments
