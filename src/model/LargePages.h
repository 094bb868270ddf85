#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace Quorlan {

/// Asks the system to provide memory in large pages, so that touching it for the first time costs one page fault in
/// 2 MB instead of 500, and reading it at random misses fewer address translations. Only a hint.
void AdviseLargePages(void* bytes, std::size_t size);

/// Reserves room in a vector, in large pages where that much is an allocation of its own.
void ReserveLargePages(std::vector<char>& bytes, std::size_t size);

/// [bytes] What the large pages of most systems are.
constexpr std::size_t kLargePageSize = std::size_t{1} << 21;

/// Gives large allocations in large pages and all others as `std::allocator` does.
template <class T>
struct LargePageAllocator {
    using value_type = T;

    LargePageAllocator() = default;
    template <class Other>
    LargePageAllocator(LargePageAllocator<Other> const&) {}

    T* allocate(std::size_t count) {
        if (!IsLarge(count)) return std::allocator<T>().allocate(count);
        // Rounded up, so that the last page is a large one too.
        std::size_t const size = (count * sizeof(T) + kLargePageSize - 1) / kLargePageSize * kLargePageSize;
        void* const bytes = ::operator new(size, std::align_val_t(kLargePageSize));
        AdviseLargePages(bytes, size);
        return static_cast<T*>(bytes);
    }

    void deallocate(T* elements, std::size_t count) {
        if (!IsLarge(count)) return std::allocator<T>().deallocate(elements, count);
        ::operator delete(elements, std::align_val_t(kLargePageSize));
    }

    friend bool operator==(LargePageAllocator const&, LargePageAllocator const&) { return true; }
    friend bool operator!=(LargePageAllocator const&, LargePageAllocator const&) { return false; }

private:
    static bool IsLarge(std::size_t count) {
        return count >= kLargePageSize / sizeof(T) && count <= static_cast<std::size_t>(-1) / 2 / sizeof(T);
    }
};

/// A vector for the many elements of a whole model.
template <class T>
using LargeVector = std::vector<T, LargePageAllocator<T>>;

/// Makes room for more elements: with some to spare for an increment behind a model, and by doubling where many small
/// calls follow one another.
template <class Vector>
void ReserveMore(Vector& elements, std::size_t count) {
    std::size_t const needed = elements.size() + count;
    if (needed <= elements.capacity()) return;
    std::size_t const wanted = elements.empty() ? needed + needed / 16 : 2 * elements.capacity();
    elements.reserve(wanted < needed ? needed : wanted);
}

}  // namespace Quorlan
