#include "cut/FixedMemory.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define QUORLAN_OWN_ALLOCATOR 0
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define QUORLAN_OWN_ALLOCATOR 0
#endif
#ifndef QUORLAN_OWN_ALLOCATOR
#define QUORLAN_OWN_ALLOCATOR 1
#endif

namespace QuorlanProgram::Import {

namespace {

constexpr std::uintptr_t kBase = 0x200000000000;          ///< far from where programs and libraries are put
constexpr std::size_t kSize = std::size_t{1} << 34;       ///< [bytes] of addresses; memory is taken as it is used
constexpr std::size_t kKeptBytes = std::size_t{1} << 24;  ///< that stay with the process between two lives
constexpr std::size_t kAlignment = 16;

thread_local bool isActive = false;
bool isTaken = false;  // one that was left by a jump rather than ended keeps the region for good
std::size_t used = 0;

#if QUORLAN_OWN_ALLOCATOR
bool Reserve() {
    void* const wanted = reinterpret_cast<void*>(kBase);  // NOLINT: the address is the point
    void* const got = mmap(wanted, kSize, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
    if (got == wanted) return true;
    if (got != MAP_FAILED) munmap(got, kSize);
    return false;
}
#endif

bool IsReserved() {
#if QUORLAN_OWN_ALLOCATOR
    static bool const isReserved = Reserve();
    return isReserved;
#else
    return false;
#endif
}

}  // namespace

/// The next piece of the region, or null where it is not in use or used up.
void* TakeFixedMemory(std::size_t size) {
    if (!isActive) return nullptr;
    auto const rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (rounded < size || kSize - used < rounded) return nullptr;
    auto* const piece = reinterpret_cast<char*>(kBase) + used;  // NOLINT
    used += rounded;
    return piece;
}

bool IsFixedMemory(void const* piece) {
    auto const address = reinterpret_cast<std::uintptr_t>(piece);
    return address >= kBase && address - kBase < kSize;
}

FixedMemory::FixedMemory() : isOwner_(!isTaken && IsReserved()) {
    if (isOwner_) isTaken = true;
    isActive = isOwner_;
}

FixedMemory::~FixedMemory() {
    if (!isOwner_) return;
    isActive = false;
    isTaken = false;
    if (used > kKeptBytes) {
        madvise(reinterpret_cast<char*>(kBase) + kKeptBytes, kSize - kKeptBytes, MADV_DONTNEED);  // NOLINT
    }
    used = 0;
}

FixedMemory::Pause::Pause() : wasActive_(isActive) { isActive = false; }

FixedMemory::Pause::~Pause() { isActive = wasActive_; }

}  // namespace QuorlanProgram::Import

#if QUORLAN_OWN_ALLOCATOR

// The operators of the whole program. Weak, so that a program with its own keeps them.

[[gnu::weak]] void* operator new(std::size_t size) {
    using namespace QuorlanProgram::Import;
    if (void* const piece = TakeFixedMemory(size)) return piece;
    for (;;) {
        if (void* const piece = std::malloc(size == 0 ? 1 : size)) return piece;
        auto* const handler = std::get_new_handler();
        if (!handler) throw std::bad_alloc();
        handler();
    }
}

[[gnu::weak]] void operator delete(void* piece) noexcept {
    if (!QuorlanProgram::Import::IsFixedMemory(piece)) std::free(piece);
}

[[gnu::weak]] void operator delete(void* piece, std::size_t) noexcept { operator delete(piece); }

#endif
