// Merges two buffers; what comes out opens and merges again.

#include "BufferMutator.h"
#include "Require.h"
#include "TwoBuffers.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/Increments/Merge.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const [full, increment] = SplitBuffers(data, size);
    Quorlan::Tools::Increments::Merge merge;
    if (!merge.Build(full, increment)) return 0;
    auto const merged = merge.GetResult();
    Require(!Quorlan::ModelStorage::FromBuffer(merged).HasError());
    Require(merge.Build(merged, increment));
    return 0;
}
