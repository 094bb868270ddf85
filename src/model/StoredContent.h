#pragma once

#include "model/BufferSink.h"
#include "model/TextAppender.h"

#include <model_generated.h>

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace Quorlan {

/// Hands structs on in blocks that stay in the nearest cache, so that memory is written once and not cleared before.
template <class T>
class ElementWriter {
public:
    explicit ElementWriter(BufferSink& target)
        : target_(&target), append_([](void* sink, T const* elements, std::size_t count) {
              static_cast<BufferSink*>(sink)->AppendCopy(elements, count * sizeof(T));
          }) {}

    template <class Allocator>
    explicit ElementWriter(std::vector<T, Allocator>& target)
        : target_(&target), append_([](void* vector, T const* elements, std::size_t count) {
              auto& all = *static_cast<std::vector<T, Allocator>*>(vector);
              all.insert(all.end(), elements, elements + count);
          }) {}

    /// Adds an element, which is made where it stands: a copy would wait for its parts to be stored.
    template <class... Arguments>
    void Add(Arguments&&... arguments) {
        if (pending_ == kBlockSize) Flush();
        ::new (static_cast<void*>(At(pending_++))) T(std::forward<Arguments>(arguments)...);
    }

    /// Hands on the rest. REQUIRES: nothing is added afterwards. RETURNS how many there were.
    std::size_t Finish() {
        Flush();
        return flushed_;
    }

private:
    void Flush() {
        append_(target_, At(0), pending_);
        flushed_ += pending_;
        pending_ = 0;
    }

    static constexpr std::size_t kBlockSize = 64;
    static_assert(std::is_trivially_destructible_v<T>);

    T* At(std::size_t index) { return reinterpret_cast<T*>(block_) + index; }

    void* target_;
    void (*append_)(void* target, T const* elements, std::size_t count);
    std::size_t flushed_ = 0;
    std::size_t pending_ = 0;
    alignas(T) unsigned char block_[kBlockSize * sizeof(T)];
};

/// Entities, and all that grows with their number, that no writer holds: while a buffer is written they are read from
/// where they are stored and go straight into it, behind what the writers hold. The operations are called in this
/// order, each once.
class StoredContent {
public:
    virtual ~StoredContent() = default;

    /// [bytes] What all of it takes at most if no entity is written twice.
    virtual std::size_t EstimateSize() const = 0;
    virtual std::size_t GetTextCount() const = 0;

    virtual void WriteEntities(ElementWriter<Schema::EntityRecord>& out) const = 0;
    virtual void WriteGuids(ElementWriter<Schema::Guid>& out) const = 0;
    virtual void WriteTexts(TextAppender& out) const = 0;
    virtual void WriteHistoryRecords(ElementWriter<Schema::OwnerHistoryRecord>& out) const = 0;
    virtual void WriteHistoryLinks(ElementWriter<Schema::OwnerHistoryLink>& out) const = 0;
    virtual void WritePlacements(ElementWriter<Schema::Placement>& out) const = 0;
    virtual void WriteInstances(ElementWriter<Schema::Instance>& out) const = 0;

    /// Adds the properties' strings to those of the writer, which are written afterwards.
    virtual void WriteProperties(ElementWriter<Schema::PropertyEntry>& out) = 0;
};

}  // namespace Quorlan
