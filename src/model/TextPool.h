#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Quorlan {

/// Texts in the order in which they were added, in one run of characters.
class TextPool {
public:
    std::uint32_t Add(std::string_view text) {
        characters_.append(text);
        ends_.push_back(characters_.size());
        return static_cast<std::uint32_t>(ends_.size() - 1);
    }

    void Reserve(std::size_t count) { ends_.reserve(ends_.size() + count); }

    std::size_t GetCount() const { return ends_.size(); }
    std::size_t GetCharacterCount() const { return characters_.size(); }

    std::string_view Get(std::size_t index) const {
        std::size_t const begin = index == 0 ? 0 : ends_[index - 1];
        return {characters_.data() + begin, ends_[index] - begin};
    }

private:
    std::string characters_;
    std::vector<std::size_t> ends_;
};

/// Texts of which each distinct one is held once: open addressing with linear probing, at most half of the slots taken.
class UniqueTexts {
public:
    /// The index of the text: of the one that was added before, or else the next.
    std::uint32_t Add(std::string_view text);

    /// Holds a text that is not to be found again.
    std::uint32_t AddApart(std::string_view text) { return texts_.Add(text); }

    TextPool const& GetAll() const { return texts_; }

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::uint32_t indexPlusOne = 0;  ///< 0: free
    };

    Slot& FindSlot(std::uint64_t hash, std::string_view text);
    void Grow();

    TextPool texts_;
    std::vector<Slot> slots_;
};

}  // namespace Quorlan
