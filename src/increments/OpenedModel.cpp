#include "increments/OpenedModel.h"

#include "model/BufferGate.h"

#include <Quorlan/ModelBuilder.h>

#include <cstdint>

namespace Quorlan::Tools::Increments {

OpenedModel::OpenedModel(std::vector<char> const& buffer) {
    constexpr std::size_t kAlignment = 8;
    bool const isAligned = reinterpret_cast<std::uintptr_t>(buffer.data()) % kAlignment == 0;
    if (!isAligned) copy_ = buffer;
    auto const* const model = OpenUntrustedModel(isAligned ? buffer : copy_, &scans_);
    if (model != nullptr) reader_.emplace(*model, &scans_);
}

std::vector<char> const& SelectBase(std::vector<char> const& buffer, std::vector<char>& empty) {
    if (!buffer.empty()) return buffer;
    empty = ModelBuilder().Create();
    return empty;
}

}  // namespace Quorlan::Tools::Increments
