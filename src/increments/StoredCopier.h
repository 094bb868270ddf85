#pragma once

#include "increments/StoredPart.h"

#include <Quorlan/ModelBuilder.h>

#include <optional>

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

/// Copies entities from a model buffer, which need not outlive the call. REQUIRES: `content` writes to the same
/// builder.
void CopyStoredEntities(StoredTarget const& target, ContentCopier& content, BufferModelReader const& source,
                        EntityList const& entities);

}  // namespace Quorlan::Tools::Increments
