#pragma once

#if defined(__GNUC__) && defined(__x86_64__)
#define QUORLAN_HAS_AVX2 1
#else
#define QUORLAN_HAS_AVX2 0
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
