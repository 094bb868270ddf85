// Opens any bytes and reads everything from what opens.

#include "BufferMutator.h"
#include "support/ReadEverything.h"

#include <Quorlan/ModelStorage.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const storage = Quorlan::ModelStorage::FromBuffer({data, data + size});
    if (!storage.HasError()) TestSupport::ReadEverything(storage.GetModelReader());
    return 0;
}
