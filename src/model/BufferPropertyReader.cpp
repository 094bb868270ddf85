#include "model/BufferReaders.h"
#include "model/PropertyValue.h"

#include <algorithm>
#include <cstring>

namespace Quorlan {
namespace {

/// The first of the sorted entries whose entity is not below `index`. Entities have about as many properties each, so
/// that the place is guessed from the entity's share of the entries and bracketed in doubling steps from there.
Schema::PropertyEntry const* FindFirst(Schema::PropertyEntry const* entries, std::uint32_t count, std::uint32_t index) {
    auto const isBefore = [index](Schema::PropertyEntry const& entry) { return entry.entity() < index; };
    std::uint64_t const share = std::uint64_t{index} * count / (std::uint64_t{entries[count - 1].entity()} + 1);
    std::uint64_t lower = std::min<std::uint64_t>(share, count);
    std::uint64_t upper = lower;
    for (std::uint64_t step = 1; lower > 0 && !isBefore(entries[lower - 1]); step *= 2) {
        upper = lower - 1;
        lower -= std::min(lower, step);
    }
    for (std::uint64_t step = 1; upper < count && isBefore(entries[upper]); step *= 2) {
        lower = upper + 1;
        upper += std::min(count - upper, step);
    }
    return std::partition_point(entries + lower, entries + upper, isBefore);
}

}  // namespace

std::pair<std::uint32_t, std::uint32_t> BufferPropertyReader::FindEntries(EntityIndex_t entity) const {
    auto const* const entries = properties_ == nullptr ? nullptr : properties_->entries();
    if (CountOf(entries) == 0) return {0, 0};
    auto const* const first = entries->Get(0);
    auto const* const last = first + entries->size();
    auto const index = static_cast<std::uint32_t>(entity);
    auto const* const lower = FindFirst(first, entries->size(), index);
    auto const* upper = lower;
    // An entity has few entries as a rule: the end is looked for in doubling steps.
    for (std::ptrdiff_t step = 1; upper < last && upper->entity() == index; step *= 2) {
        upper += std::min(step, last - upper);
    }
    upper = std::partition_point(lower, upper,
                                 [index](Schema::PropertyEntry const& entry) { return entry.entity() == index; });
    return {static_cast<std::uint32_t>(lower - first), static_cast<std::uint32_t>(upper - first)};
}

std::uint32_t BufferPropertyReader::GetPropertyCount(EntityIndex_t entity) const {
    auto const [first, last] = FindEntries(entity);
    return last - first;
}

void BufferPropertyReader::GetProperty(PropertyRecord& out, EntityIndex_t entity, std::uint32_t index) const {
    auto const [first, last] = FindEntries(entity);
    if (index >= last - first) {
        out = {};
        return;
    }
    auto const& entry = *properties_->entries()->Get(first + index);
    auto const* const strings = properties_->strings();
    Assign(out.set, FindElement(strings, entry.set()));
    Assign(out.name, FindElement(strings, entry.name()));
    switch (entry.valueKind()) {
        case kDoubleProperty: {
            double value = 0;
            std::uint64_t const bits = entry.value();
            std::memcpy(&value, &bits, sizeof(value));
            out.value = value;
            break;
        }
        case kIntegerProperty: out.value = static_cast<std::int64_t>(entry.value()); break;
        case kBooleanProperty: out.value = entry.value() != 0; break;
        default: {
            bool const fits = entry.valueKind() == kTextProperty && entry.value() < kInvalidIndex;
            auto const reference = fits ? static_cast<std::uint32_t>(entry.value()) : kInvalidIndex;
            std::string text;
            Assign(text, FindElement(strings, reference));
            out.value = std::move(text);
        }
    }
}

}  // namespace Quorlan
