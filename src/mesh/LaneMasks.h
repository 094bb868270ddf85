#pragma once

#include "geometry/Lanes.h"

#include <array>
#include <cmath>
#include <cstddef>

/// Decisions per lane, for algorithms whose lanes take different ways.
namespace Quorlan::Tools {

using GeometryObjectLib::Float4;

#if QUORLAN_HAS_SSE2

struct LaneMask {
    __m128 bits;

    friend LaneMask operator&(LaneMask a, LaneMask b) { return {_mm_and_ps(a.bits, b.bits)}; }
    friend LaneMask operator|(LaneMask a, LaneMask b) { return {_mm_or_ps(a.bits, b.bits)}; }

    /// The lanes of `a` that are not in `b`.
    friend LaneMask Without(LaneMask a, LaneMask b) { return {_mm_andnot_ps(b.bits, a.bits)}; }
    friend bool IsAny(LaneMask a) { return _mm_movemask_ps(a.bits) != 0; }
};

inline LaneMask AllLanes() { return {_mm_castsi128_ps(_mm_set1_epi32(-1))}; }
inline LaneMask IsLess(Float4 a, Float4 b) { return {_mm_cmplt_ps(a.v, b.v)}; }
inline LaneMask IsLessOrEqual(Float4 a, Float4 b) { return {_mm_cmple_ps(a.v, b.v)}; }
inline LaneMask IsZero(Float4 a) { return {_mm_cmpeq_ps(a.v, _mm_setzero_ps())}; }
inline Float4 Select(LaneMask mask, Float4 a, Float4 b) {
    return _mm_or_ps(_mm_and_ps(mask.bits, a.v), _mm_andnot_ps(mask.bits, b.v));
}
inline Float4 Abs(Float4 a) { return _mm_andnot_ps(_mm_set1_ps(-0.0F), a.v); }
inline Float4 CopySign(Float4 a, Float4 sign) {
    __m128 const bit = _mm_set1_ps(-0.0F);
    return _mm_or_ps(_mm_andnot_ps(bit, a.v), _mm_and_ps(bit, sign.v));
}
inline std::array<float, 4> ToArray(Float4 a) {
    std::array<float, 4> lanes;
    _mm_storeu_ps(lanes.data(), a.v);
    return lanes;
}

/// Lanes x, y, z, w become y, z, x, w.
inline Float4 NextAxis(Float4 a) { return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(3, 0, 2, 1)); }

#else

struct LaneMask {
    std::array<bool, 4> lane;

    template <class Operation>
    static LaneMask Of(Operation const& operation) {
        return {{operation(0), operation(1), operation(2), operation(3)}};
    }
    friend LaneMask operator&(LaneMask const& a, LaneMask const& b) {
        return Of([&](std::size_t i) { return a.lane[i] && b.lane[i]; });
    }
    friend LaneMask operator|(LaneMask const& a, LaneMask const& b) {
        return Of([&](std::size_t i) { return a.lane[i] || b.lane[i]; });
    }
    friend LaneMask Without(LaneMask const& a, LaneMask const& b) {
        return Of([&](std::size_t i) { return a.lane[i] && !b.lane[i]; });
    }
    friend bool IsAny(LaneMask const& a) { return a.lane[0] || a.lane[1] || a.lane[2] || a.lane[3]; }
};

inline LaneMask AllLanes() { return {{true, true, true, true}}; }
inline LaneMask IsLess(Float4 const& a, Float4 const& b) {
    return LaneMask::Of([&](std::size_t i) { return a.lane[i] < b.lane[i]; });
}
inline LaneMask IsLessOrEqual(Float4 const& a, Float4 const& b) {
    return LaneMask::Of([&](std::size_t i) { return a.lane[i] <= b.lane[i]; });
}
inline LaneMask IsZero(Float4 const& a) {
    return LaneMask::Of([&](std::size_t i) { return a.lane[i] == 0; });
}
inline Float4 Select(LaneMask const& mask, Float4 const& a, Float4 const& b) {
    auto const pick = [&](std::size_t i) { return mask.lane[i] ? a.lane[i] : b.lane[i]; };
    return {pick(0), pick(1), pick(2), pick(3)};
}
inline Float4 Abs(Float4 const& a) {
    return {std::fabs(a.lane[0]), std::fabs(a.lane[1]), std::fabs(a.lane[2]), std::fabs(a.lane[3])};
}
inline Float4 CopySign(Float4 const& a, Float4 const& sign) {
    return Float4::Zip(a, sign, [](float x, float y) { return std::copysign(x, y); });
}
inline std::array<float, 4> ToArray(Float4 const& a) { return {a.lane[0], a.lane[1], a.lane[2], a.lane[3]}; }
inline Float4 NextAxis(Float4 const& a) { return {a.lane[1], a.lane[2], a.lane[0], a.lane[3]}; }

#endif

}  // namespace Quorlan::Tools
