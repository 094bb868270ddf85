// Merges and squashes two buffers, or one with itself, and writes what opens as an increment and as one entity.

#include "BufferMutator.h"
#include "support/RunEveryTool.h"

#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

#include <cstring>

QUORLAN_BUFFER_MUTATOR

/// Where the second of two buffers begins: at the second identifier, at a multiple of 8. Otherwise the end.
static std::size_t FindSecondBuffer(std::uint8_t const* data, std::size_t size) {
    for (std::size_t begin = 8; begin + 8 <= size; begin += 8) {
        if (std::memcmp(data + begin + 4, "QLN8", 4) == 0) return begin;
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::size_t const split = FindSecondBuffer(data, size);
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
