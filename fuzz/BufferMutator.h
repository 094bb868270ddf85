#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

/// Changes a buffer where its structure stands: in aligned words. Plain byte mutations hardly ever get past a verifier;
/// a changed index, a shortened vector or an offset that leads to where another one leads often does.
inline std::size_t MutateBuffer(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
    std::minstd_rand random(seed);
    if (size < 16 || random() % 8 == 0) return LLVMFuzzerMutate(data, size, maxSize);

    std::size_t const width = random() % 2 == 0 ? 2 : 4;
    auto const pick = [&] { return data + 8 + width * (random() % ((size - 8) / width)); };
    std::uint8_t* const target = pick();
    std::uint32_t value = 0;
    std::memcpy(&value, target, width);
    switch (random() % 6) {
        case 0: value = static_cast<std::uint32_t>(random()) % 16; break;
        case 1: value += static_cast<std::uint32_t>(random()) % 9 - 4; break;
        case 2: value /= 2; break;
        case 3: value = 0xFFFFFFFF; break;
        case 4: std::memcpy(&value, pick(), width); break;
        default: {
            std::uint8_t* const other = pick();
            std::uint32_t swapped = 0;
            std::memcpy(&swapped, other, width);
            std::memcpy(other, &value, width);
            value = swapped;
        }
    }
    std::memcpy(target, &value, width);
    return size;
}

/// Puts the mutator in place of the fuzzer's own.
#define QUORLAN_BUFFER_MUTATOR                                                                                \
    extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, \
                                                   unsigned seed) {                                           \
        return MutateBuffer(data, size, maxSize, seed);                                                       \
    }
