// Squashes two buffers; what comes out opens.

#include "BufferMutator.h"
#include "Require.h"
#include "TwoBuffers.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/Increments/Squash.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const [base, increment] = SplitBuffers(data, size);
    Quorlan::Tools::Increments::Squash squash;
    if (!squash.Build(base, increment)) return 0;
    squash.GetDeleted();
    squash.GetModified();
    Require(!Quorlan::ModelStorage::FromBuffer(squash.GetResult()).HasError());
    return 0;
}
