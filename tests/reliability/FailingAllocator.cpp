#include "reliability/FailingAllocator.h"

#include <cstdlib>
#include <new>

namespace TestSupport {
namespace {

constexpr std::ptrdiff_t kNever = -1;

std::ptrdiff_t countdown = kNever;
bool hasFailed = false;
std::ptrdiff_t liveBlocks = 0;

void* Allocate(std::size_t size, std::size_t alignment) {
    if (countdown >= 0 && countdown-- == 0) {
        hasFailed = true;
        throw std::bad_alloc();
    }
    std::size_t const rounded = (size + alignment - 1) / alignment * alignment;
    void* const block = alignment <= alignof(std::max_align_t) ? std::malloc(size == 0 ? 1 : size)
                                                               : std::aligned_alloc(alignment, rounded);
    if (block == nullptr) throw std::bad_alloc();
    ++liveBlocks;
    return block;
}

void Free(void* block) {
    if (block != nullptr) --liveBlocks;
    std::free(block);
}

}  // namespace

FailAllocation::FailAllocation(std::size_t number) {
    hasFailed = false;
    countdown = static_cast<std::ptrdiff_t>(number);
}

FailAllocation::~FailAllocation() { countdown = kNever; }

bool FailAllocation::HasFailed() const { return hasFailed; }

std::ptrdiff_t GetLiveBlockCount() { return liveBlocks; }

}  // namespace TestSupport

void* operator new(std::size_t size) { return TestSupport::Allocate(size, 1); }
void* operator new[](std::size_t size) { return TestSupport::Allocate(size, 1); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return TestSupport::Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return TestSupport::Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept { TestSupport::Free(block); }
void operator delete[](void* block) noexcept { TestSupport::Free(block); }
void operator delete(void* block, std::size_t) noexcept { TestSupport::Free(block); }
void operator delete[](void* block, std::size_t) noexcept { TestSupport::Free(block); }
void operator delete(void* block, std::align_val_t) noexcept { TestSupport::Free(block); }
void operator delete[](void* block, std::align_val_t) noexcept { TestSupport::Free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { TestSupport::Free(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { TestSupport::Free(block); }
