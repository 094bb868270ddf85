#include "model/BufferSink.h"

#include "model/BufferGate.h"
#include "model/LargePages.h"

#include <algorithm>
#include <new>

namespace Quorlan {

BufferSink::BufferSink(std::size_t expectedSize) { ReserveLargePages(bytes_, std::min(expectedSize, kMaxBufferSize)); }

std::size_t BufferSink::AppendLayout(std::initializer_list<flatbuffers::voffset_t> fields) {
    std::size_t const position = bytes_.size();
    std::size_t const size = std::max(fields) + std::size_t{2};
    char* const layout = Append(size);
    flatbuffers::WriteScalar(layout, static_cast<flatbuffers::voffset_t>(size));
    flatbuffers::WriteScalar(layout + 2, static_cast<flatbuffers::voffset_t>(4 + 4 * fields.size()));
    flatbuffers::voffset_t slot = 4;
    for (flatbuffers::voffset_t const field : fields) {
        flatbuffers::WriteScalar(layout + field, slot);
        slot = static_cast<flatbuffers::voffset_t>(slot + 4);
    }
    return position;
}

std::size_t BufferSink::AppendTable(std::size_t layout, std::size_t slotCount) {
    Align(4, 0);
    std::size_t const position = bytes_.size();
    flatbuffers::WriteScalar(Append(4 + 4 * slotCount), static_cast<flatbuffers::soffset_t>(position - layout));
    return position;
}

std::size_t BufferSink::BeginVector(std::size_t table, std::size_t slot, std::size_t count, std::size_t alignment) {
    Align(std::max<std::size_t>(alignment, 4), 4);
    LinkNext(table, slot);
    flatbuffers::WriteScalar(Append(4), static_cast<flatbuffers::uoffset_t>(count));
    return bytes_.size() - 4;
}

void BufferSink::RequireSpace(std::size_t count) const {
    if (count >= kMaxBufferSize || bytes_.size() >= kMaxBufferSize - count) {
        throw std::bad_array_new_length();
    }
}

}  // namespace Quorlan
