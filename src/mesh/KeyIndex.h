#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Quorlan::Tools {

/// A map from 64-bit keys to 64-bit values for lookups in hot loops: open addressing with linear probing in one array
/// of a power of two. At most a quarter of the slots is taken, so that a key that is not present mostly meets a free
/// slot at once. Nothing is ever removed.
class KeyIndex {
public:
    static constexpr std::uint64_t kNone = ~std::uint64_t{0};

    /// kNone if the key is not present.
    std::uint64_t Find(std::uint64_t key) const {
        if (slots_.empty()) return kNone;
        return slots_[SlotOf(key)].value;
    }

    /// REQUIRES: the key is not present, and the value is not kNone.
    void Insert(std::uint64_t key, std::uint64_t value) {
        if (4 * (count_ + 1) > slots_.size()) Grow();
        slots_[SlotOf(key)] = {key, value};
        ++count_;
    }

private:
    struct Slot {
        std::uint64_t key = 0;
        std::uint64_t value = kNone;
    };

    /// The slot of the key, or the free one where it belongs. Keys need not be well mixed.
    std::size_t SlotOf(std::uint64_t key) const {
        constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;  // 2^64 / 1.618...
        std::size_t const mask = slots_.size() - 1;
        auto slot = static_cast<std::size_t>((key ^ key >> 32) * kGoldenRatio >> 32) & mask;
        while (slots_[slot].value != kNone && slots_[slot].key != key) slot = (slot + 1) & mask;
        return slot;
    }

    void Grow() {
        std::vector<Slot> const old = std::exchange(slots_, std::vector<Slot>(slots_.empty() ? 16 : 2 * slots_.size()));
        for (Slot const& slot : old) {
            if (slot.value != kNone) slots_[SlotOf(slot.key)] = slot;
        }
    }

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

}  // namespace Quorlan::Tools
