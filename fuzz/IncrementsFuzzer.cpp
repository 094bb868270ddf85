// Makes an increment of two buffers, merges it into the first, which may be empty, and squashes it with the second.

#include "BufferMutator.h"
#include "Require.h"
#include "TwoBuffers.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

QUORLAN_BUFFER_MUTATOR

using namespace Quorlan;

/// All entities, each with another action. RETURNS whether the buffer opens.
static bool AddAll(Tools::Increments::IncrementModelBuilder& increment, std::vector<char> const& buffer) {
    auto const storage = ModelStorage::FromBuffer(buffer);
    if (storage.HasError()) return false;
    std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> changes;
    for (std::uint32_t i = 0; i < storage.GetModelReader().GetEntities().GetCount(); ++i) {
        changes.emplace_back(OwnerHistoryChangeAction{i % 4}, EntityIndex_t{i});
    }
    increment.Add(storage.GetModelReader(), changes);
    return true;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const [first, second] = SplitBuffers(data, size);
    Tools::Increments::IncrementModelBuilder builder;
    bool const firstOpens = AddAll(builder, first);
    bool const secondOpens = AddAll(builder, second);
    auto const increment = builder.GetResult();
    Require(!ModelStorage::FromBuffer(increment).HasError());
    Require(Tools::Increments::Merge().Build(first, increment) == (firstOpens || first.empty()));
    Require(Tools::Increments::Squash().Build(increment, second) == secondOpens);
    return 0;
}
