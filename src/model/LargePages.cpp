#include "model/LargePages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Quorlan {

void AdviseLargePages([[maybe_unused]] void* bytes, [[maybe_unused]] std::size_t size) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kPageSize = 4096;
    auto const begin = (reinterpret_cast<std::uintptr_t>(bytes) + kPageSize - 1) / kPageSize * kPageSize;
    auto const end = (reinterpret_cast<std::uintptr_t>(bytes) + size) / kPageSize * kPageSize;
    if (begin < end) static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
#endif
}

}  // namespace Quorlan
