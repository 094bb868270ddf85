#pragma once

#include "model/BufferSink.h"

#include <model_generated.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>
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

    void Add(T const& element) {
        if (pending_ == block_.size()) Flush();
        block_[pending_++] = element;
    }

    /// Hands on the rest. REQUIRES: nothing is added afterwards. RETURNS how many there were.
    std::size_t Finish() {
        Flush();
        return flushed_;
    }

private:
    void Flush() {
        append_(target_, block_.data(), pending_);
        flushed_ += pending_;
        pending_ = 0;
    }

    void* target_;
    void (*append_)(void* target, T const* elements, std::size_t count);
    std::size_t flushed_ = 0;
    std::size_t pending_ = 0;
    std::array<T, 64> block_;
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
    virtual void WriteTexts(std::function<void(std::string_view)> const& add) const = 0;
    virtual void WriteHistoryRecords(ElementWriter<Schema::OwnerHistoryRecord>& out) const = 0;
    virtual void WriteHistoryLinks(ElementWriter<Schema::OwnerHistoryLink>& out) const = 0;
    virtual void WritePlacements(ElementWriter<Schema::Placement>& out) const = 0;
    virtual void WriteInstances(ElementWriter<Schema::Instance>& out) const = 0;

    /// Adds the properties' strings to those of the writer, which are written afterwards.
    virtual void WriteProperties(ElementWriter<Schema::PropertyEntry>& out) = 0;
};

}  // namespace Quorlan
