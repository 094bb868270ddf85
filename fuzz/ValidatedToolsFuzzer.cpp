// Validates any bytes and runs every tool on what passes.

#include "BufferMutator.h"
#include "support/RunEveryTool.h"

#include <Quorlan/ModelValidator.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<char> const buffer(data, data + size);
    if (Quorlan::ModelValidator().Build(buffer)) TestSupport::RunEveryTool(buffer);
    return 0;
}
