#include "model/TextPool.h"

#include <cstring>
#include <utility>

namespace Quorlan {
namespace {

std::uint64_t Mix(std::uint64_t value) {
    value = (value ^ value >> 32) * 0xD6E8FEB86659FD93;  // odd, half of its bits set
    return value ^ value >> 32;
}

/// Eight characters a step.
std::uint64_t Hash(std::string_view text) {
    std::uint64_t hash = text.size();
    std::size_t position = 0;
    for (; position + 8 <= text.size(); position += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + position, 8);
        hash = Mix(hash ^ word);
    }
    std::uint64_t rest = 0;
    if (position < text.size()) std::memcpy(&rest, text.data() + position, text.size() - position);
    return Mix(hash ^ rest);
}

}  // namespace

std::uint32_t UniqueTexts::Add(std::string_view text) {
    if (2 * (texts_.GetCount() + 1) > slots_.size()) Grow();
    std::uint64_t const hash = Hash(text);
    Slot& slot = FindSlot(hash, text);
    if (slot.indexPlusOne == 0) {
        std::uint32_t const index = texts_.Add(text);
        slot = {hash, index + 1};
    }
    return slot.indexPlusOne - 1;
}

/// The slot that holds the text, or the free one where it belongs.
UniqueTexts::Slot& UniqueTexts::FindSlot(std::uint64_t hash, std::string_view text) {
    std::size_t const mask = slots_.size() - 1;
    std::size_t slot = hash & mask;
    while (slots_[slot].indexPlusOne != 0) {
        if (slots_[slot].hash == hash && texts_.Get(slots_[slot].indexPlusOne - 1) == text) break;
        slot = (slot + 1) & mask;
    }
    return slots_[slot];
}

void UniqueTexts::Grow() {
    std::vector<Slot> const old = std::exchange(slots_, std::vector<Slot>(slots_.empty() ? 64 : 2 * slots_.size()));
    std::size_t const mask = slots_.size() - 1;
    for (Slot const& filled : old) {
        if (filled.indexPlusOne == 0) continue;
        std::size_t slot = filled.hash & mask;
        while (slots_[slot].indexPlusOne != 0) slot = (slot + 1) & mask;
        slots_[slot] = filled;
    }
}

}  // namespace Quorlan
