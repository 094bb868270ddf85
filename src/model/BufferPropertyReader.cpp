#include "model/BufferReaders.h"
#include "model/PropertyValue.h"

#include <algorithm>
#include <cstring>

namespace Quorlan {

std::pair<std::uint32_t, std::uint32_t> BufferPropertyReader::FindEntries(EntityIndex_t entity) const {
    auto const* const entries = properties_ == nullptr ? nullptr : properties_->entries();
    if (CountOf(entries) == 0) return {0, 0};
    auto const* const first = entries->Get(0);
    auto const* const last = first + entries->size();
    auto const index = static_cast<std::uint32_t>(entity);
    auto const* const lower = std::partition_point(
        first, last, [index](Schema::PropertyEntry const& entry) { return entry.entity() < index; });
    // An entity has few entries as a rule: the end is looked for in doubling steps.
    std::ptrdiff_t reach = 1;
    while (reach < last - lower && lower[reach].entity() == index) reach *= 2;
    auto const* const upper =
        std::partition_point(lower, lower + std::min(reach, last - lower),
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
