#pragma once

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>

#include <vector>

namespace Quorlan::Tools::Increments {

/// Opens the model that an increment builds on. No bytes at all stand for the empty model.
inline ModelStorage OpenBase(std::vector<char> const& buffer) {
    return buffer.empty() ? ModelStorage::FromBuffer(ModelBuilder().Create()) : ModelStorage::FromBuffer(buffer);
}

}  // namespace Quorlan::Tools::Increments
