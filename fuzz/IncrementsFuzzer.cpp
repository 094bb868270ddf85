// Merges and squashes two buffers cut from any bytes, and writes whatever opens as an increment and as one entity.

#include "BufferMutator.h"
#include "support/RunEveryTool.h"

#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    // Two thirds of all inputs are one buffer taken twice, the others are cut in the middle.
    std::size_t const split = size < 16 || data[size - 1] % 3 != 0 ? size : size / 2 / 8 * 8;
    std::vector<char> const first(data, data + split);
    std::vector<char> const second = split == size ? first : std::vector<char>(data + split, data + size);
    Quorlan::Tools::Increments::Merge merge;
    merge.Build(first, second);
    Quorlan::Tools::Increments::Squash squash;
    squash.Build(first, second);
    auto const storage = Quorlan::ModelStorage::FromBuffer(first);
    if (!storage.HasError()) TestSupport::RunWriters(storage.GetModelReader());
    return 0;
}
