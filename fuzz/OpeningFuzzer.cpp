// Opens any bytes, validates them and counts what they hold. What validates also opens.

#include "BufferMutator.h"
#include "Require.h"

#include <Quorlan/ModelStatistics.h>
#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>

QUORLAN_BUFFER_MUTATOR

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<char> const buffer(data, data + size);
    bool const opens = !Quorlan::ModelStorage::FromBuffer(buffer).HasError();
    Quorlan::ModelValidator validator;
    bool const isValid = validator.Build(buffer);
    Require(opens || !isValid);
    Require(isValid == validator.GetProblems().empty() && validator.GetProblems().size() <= 100);
    Require(Quorlan::ModelStatistics().Build(buffer) || !opens);
    return 0;
}
