#pragma once

#include <flatbuffers/flatbuffers.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace Quorlan {

/// A FlatBuffers buffer that is written from front to back, into one allocation.
///
/// Offsets lead to what comes later, so that a table stands before what it holds and its fields are set afterwards.
/// Every field takes a slot of 4 bytes, as all of ours fit one; slot 0 is the first. Positions count from the front.
/// Every operation that appends THROWS std::bad_array_new_length if the buffer would reach 2 GiB, and moves the bytes
/// where more are written than were expected.
class BufferSink {
public:
    explicit BufferSink(std::size_t expectedSize);

    std::size_t GetSize() const { return bytes_.size(); }

    /// The bytes at a position. They move when something is appended.
    char* At(std::size_t position) { return bytes_.data() + position; }
    char const* At(std::size_t position) const { return bytes_.data() + position; }

    /// Appends zeros. RETURNS the first.
    char* Append(std::size_t count) {
        RequireSpace(count);
        std::size_t const position = bytes_.size();
        bytes_.resize(position + count);
        return At(position);
    }

    void AppendCopy(void const* data, std::size_t count) {
        RequireSpace(count);
        auto const* const first = static_cast<char const*>(data);
        bytes_.insert(bytes_.end(), first, first + count);
    }

    /// Appends zeros until `bytesBefore` more bytes lead to a multiple of `alignment`.
    void Align(std::size_t alignment, std::size_t bytesBefore) {
        Append((alignment - (bytes_.size() + bytesBefore) % alignment) % alignment);
    }

    /// Appends the layout of a table that has these fields in its slots. RETURNS its position.
    std::size_t AppendLayout(std::initializer_list<flatbuffers::voffset_t> fields);

    /// Appends a table with empty slots. RETURNS its position.
    std::size_t AppendTable(std::size_t layout, std::size_t slotCount);

    /// Sets an offset to what stands at `target`.
    void SetOffset(std::size_t position, std::size_t target) {
        flatbuffers::WriteScalar(At(position), static_cast<flatbuffers::uoffset_t>(target - position));
    }

    /// Sets slot `slot` of a table to lead to what is appended next.
    void LinkNext(std::size_t table, std::size_t slot) { SetOffset(table + 4 + 4 * slot, bytes_.size()); }

    /// Begins a vector whose elements are appended next, and lets the slot lead to it. RETURNS where its length stands.
    std::size_t BeginVector(std::size_t table, std::size_t slot, std::size_t count, std::size_t alignment);

    /// Appends a vector of structs or numbers and lets the slot lead to it.
    template <class T>
    void AppendVector(std::size_t table, std::size_t slot, T const* elements, std::size_t count) {
        BeginVector(table, slot, count, alignof(T));
        AppendCopy(elements, count * sizeof(T));
        Align(4, 0);
    }

    template <class T, class Allocator>
    void AppendVector(std::size_t table, std::size_t slot, std::vector<T, Allocator> const& elements) {
        AppendVector(table, slot, elements.data(), elements.size());
    }

    /// Appends a vector of offsets that are yet to be set, and lets the slot lead to it. RETURNS the first's position.
    std::size_t AppendOffsets(std::size_t table, std::size_t slot, std::size_t count) {
        BeginVector(table, slot, count, 4);
        std::size_t const first = bytes_.size();
        Append(4 * count);
        return first;
    }

    /// The buffer. The sink is empty afterwards.
    std::vector<char> Take() { return std::move(bytes_); }

private:
    void RequireSpace(std::size_t count) const;

    std::vector<char> bytes_;
};

}  // namespace Quorlan
