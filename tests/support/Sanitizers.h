#pragma once

namespace TestSupport {

/// Whether the tests run under a sanitizer with an allocator of its own, which reserves more address space than any
/// limit leaves and puts blocks where it likes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHasSanitizer = true;
#else
constexpr bool kHasSanitizer = false;
#endif

}  // namespace TestSupport
