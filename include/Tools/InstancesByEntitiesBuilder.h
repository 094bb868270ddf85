#pragma once

#include <Tools/Export.h>

#include <vector>

namespace Quorlan::Tools {

/// Which instances each entity of a model has, and which entities have any.
///
///     Quorlan::Tools::InstancesByEntitiesBuilder builder;
///     if (!builder.Build(buffer.data())) return;
///     for (unsigned instance : builder.GetInstancesByEntities()[entity]) Highlight(instance);
///
/// COST: one pass over the instances; one list per entity of the model.
class QUORLAN_TOOLS_API InstancesByEntitiesBuilder {
public:
    /// REQUIRES: the bytes are a trusted model buffer if they carry its identifier; they are not kept after the call.
    /// RETURNS false, with both lists empty, if it is no model buffer or has no vector of instances. A vector without
    /// instances gives true.
    bool Build(void const* buffer);

    /// Entity indices in the order in which each entity's first instance occurs.
    std::vector<unsigned int> const& GetEntitiesHavingInstances() const { return entitiesHavingInstances_; }

    /// For each entity of the model its instances, ascending.
    std::vector<std::vector<unsigned int>> const& GetInstancesByEntities() const { return instancesByEntities_; }

private:
    std::vector<unsigned int> entitiesHavingInstances_;
    std::vector<std::vector<unsigned int>> instancesByEntities_;
};

}  // namespace Quorlan::Tools
