#pragma once

#include <cstdint>
#include <string_view>

namespace QuorlanSample {

/// A generator whose numbers are the same everywhere (Steele, Lea, Flood, "Fast Splittable Pseudorandom Number
/// Generators", 2014). The distributions of the standard library are not.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next() {
        state_ += 0x9E3779B97F4A7C15u;
        auto z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    /// REQUIRES: `count` > 0. The bias is below 2^-32 for the small counts used here.
    std::uint32_t Below(std::uint32_t count) {
        return static_cast<std::uint32_t>(((Next() >> 32) * std::uint64_t{count}) >> 32);
    }

    double Between(double lo, double hi) { return lo + (hi - lo) * static_cast<double>(Next() >> 11) * 0x1p-53; }

private:
    std::uint64_t state_;
};

/// A 64-bit hash of a text (Fowler, Noll, Vo, FNV-1a).
constexpr std::uint64_t HashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (char const c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    return hash;
}

}  // namespace QuorlanSample
