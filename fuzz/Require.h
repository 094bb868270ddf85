#pragma once

#include <cstdlib>

/// Ends the fuzzer, with the input that led here, if what must hold does not.
inline void Require(bool holds) {
    if (!holds) std::abort();
}
