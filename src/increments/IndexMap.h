#pragma once

#include <Quorlan/ModelTypes.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Where each of a source's elements went. Elements that do not exist are told apart by their index too.
class IndexMap {
public:
    explicit IndexMap(std::uint32_t count) : indices_(count, kInvalidIndex) {}

    template <class Write>
    std::uint32_t FindOrWrite(std::uint32_t source, Write write) {
        bool const isKnown = source < indices_.size() && indices_[source] != kInvalidIndex;
        return isKnown ? indices_[source] : FindOrWriteNew(source, write);
    }

private:
    template <class Write>
    std::uint32_t FindOrWriteNew(std::uint32_t source, Write write) {
        std::uint32_t& index =
            source < indices_.size() ? indices_[source] : others_.try_emplace(source, kInvalidIndex).first->second;
        if (index == kInvalidIndex) index = write();
        return index;
    }

    std::vector<std::uint32_t> indices_;
    std::unordered_map<std::uint32_t, std::uint32_t> others_;
};

}  // namespace Quorlan::Tools::Increments
