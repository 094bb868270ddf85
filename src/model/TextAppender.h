#pragma once

#include "model/BufferSink.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Quorlan {

/// [bytes] What a text of this length takes: its length, its characters and a zero, rounded up.
inline std::size_t SizeOfText(std::size_t length) { return (4 + length + 1 + 3) / 4 * 4; }

/// Writes what a text takes, which is `size` bytes.
inline void WriteText(char* out, std::size_t size, std::string_view text) {
    flatbuffers::WriteScalar(out + size - 4, std::uint32_t{0});
    flatbuffers::WriteScalar(out, static_cast<std::uint32_t>(text.size()));
    if (!text.empty()) std::memcpy(out + 4, text.data(), text.size());
}

/// Appends texts, block by block, and lets one offset after another lead to them.
class TextAppender {
public:
    TextAppender(BufferSink& sink, std::size_t firstOffset) : sink_(sink), offset_(firstOffset) {}

    void Add(std::string_view text) {
        std::size_t const size = SizeOfText(text.size());
        if (size > block_.size() - pending_) Flush();
        sink_.SetOffset(offset_, sink_.GetSize() + pending_);
        offset_ += 4;
        if (size > block_.size()) {
            WriteText(sink_.Append(size), size, text);
        } else {
            WriteText(block_.data() + pending_, size, text);
            pending_ += size;
        }
    }

    void Flush() {
        sink_.AppendCopy(block_.data(), pending_);
        pending_ = 0;
    }

private:
    BufferSink& sink_;
    std::size_t offset_;
    std::size_t pending_ = 0;
    std::array<char, 4096> block_;
};

}  // namespace Quorlan
