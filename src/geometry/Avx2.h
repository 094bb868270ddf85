#pragma once

#if defined(__GNUC__) && defined(__x86_64__)
#define QUORLAN_HAS_AVX2 1
#else
#define QUORLAN_HAS_AVX2 0
#endif

#if defined(__has_feature)
#define QUORLAN_HAS_FEATURE(name) __has_feature(name)
#else
#define QUORLAN_HAS_FEATURE(name) 0
#endif

/// Compiles a function and all that it calls once more, for AVX2: instructions with three operands need fewer moves.
/// Under sanitizers what it calls stays as it is, for the compiler's time.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || QUORLAN_HAS_FEATURE(address_sanitizer) || \
    QUORLAN_HAS_FEATURE(thread_sanitizer)
#define QUORLAN_AVX2_WHOLE __attribute__((target("avx2")))
#else
#define QUORLAN_AVX2_WHOLE __attribute__((target("avx2"), flatten))
#endif

namespace Quorlan {

/// Whether the processor has AVX2 and this build has code for it.
inline bool HasAvx2() {
#if QUORLAN_HAS_AVX2
    static bool const hasAvx2 = __builtin_cpu_supports("avx2") != 0;
    return hasAvx2;
#else
    return false;
#endif
}

}  // namespace Quorlan
