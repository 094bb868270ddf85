#include "mesh/NameGuid.h"

#include <cstdint>

namespace QuorlanProgram::Import {

namespace {

constexpr std::uint64_t kOffset = 0xcbf29ce484222325u;
constexpr std::uint64_t kPrime = 0x100000001b3u;

std::uint64_t Hash(std::uint64_t hash, std::string_view text) {
    for (auto const c : text) hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
    return hash;
}

}  // namespace

_GUID MakeNameGuid(std::string_view seed, std::string_view name) {
    // A zero byte between the texts keeps "ab" + "c" apart from "a" + "bc"; the second half starts with another byte.
    auto const high = Hash(Hash(Hash(kOffset, seed), {"\0", 1}), name);
    auto const low = Hash(Hash(Hash(Hash(kOffset, "2"), seed), {"\0", 1}), name);
    _GUID guid{};
    guid.Data1 = static_cast<std::uint32_t>(high >> 32);
    guid.Data2 = static_cast<std::uint16_t>(high >> 16);
    guid.Data3 = static_cast<std::uint16_t>((high & 0x0FFF) | 0x8000);
    for (int i = 0; i < 8; ++i) guid.Data4[i] = static_cast<unsigned char>(low >> (56 - 8 * i));
    guid.Data4[0] = static_cast<unsigned char>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

}  // namespace QuorlanProgram::Import
