#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

/// Two buffers of one input: the second begins at the second identifier, at a multiple of 8. Twice the same where there
/// is no second.
inline std::pair<std::vector<char>, std::vector<char>> SplitBuffers(std::uint8_t const* data, std::size_t size) {
    std::size_t split = 8;
    while (split + 8 <= size && std::memcmp(data + split + 4, "QLN8", 4) != 0) split += 8;
    if (split + 8 > size) return {{data, data + size}, {data, data + size}};
    return {{data, data + split}, {data + split, data + size}};
}

/// The input that splits into these two.
inline std::vector<char> JoinBuffers(std::vector<char> first, std::vector<char> const& second) {
    first.resize((first.size() + 7) / 8 * 8);
    first.insert(first.end(), second.begin(), second.end());
    return first;
}
