// Merges the entities of two buffers, of which the second may not open, into one.

#include "BufferMutator.h"
#include "Require.h"
#include "TwoBuffers.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/EntityMerger.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using Action = Quorlan::OwnerHistoryChangeAction;
    auto const [first, second] = SplitBuffers(data, size);
    Quorlan::Tools::EntityMerger merger;
    for (auto const* const buffer : {&first, &second}) {
        auto const storage = Quorlan::ModelStorage::FromBuffer(*buffer);
        if (storage.HasError()) continue;
        merger.Add(storage.GetModelReader(), {}, {}, L"one", Action::ADDED);
    }
    Require(!Quorlan::ModelStorage::FromBuffer(merger.GetResult()).HasError());
    return 0;
}
