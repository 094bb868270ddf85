#pragma once

#include "geometry/Lanes.h"

#include <array>
#include <utility>

/// What sums and iterations in lanes need beyond `geometry/Lanes.h`.
namespace Quorlan::Tools {

using GeometryObjectLib::Float4;
using GeometryObjectLib::Load;

/// A decision per lane, for algorithms whose lanes take different ways.
using LaneMask = decltype(std::declval<Float4>() < std::declval<Float4>());

#if QUORLAN_HAS_SSE2

/// Bit i is lane i.
inline unsigned ToBits(LaneMask a) { return static_cast<unsigned>(_mm_movemask_ps(a.v)); }

/// Lanes x, y, z, w become y, z, x, w.
inline Float4 NextAxis(Float4 a) { return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(3, 0, 2, 1)); }

#else

inline unsigned ToBits(LaneMask const& a) {
    return (a.lane[0] ? 1u : 0u) | (a.lane[1] ? 2u : 0u) | (a.lane[2] ? 4u : 0u) | (a.lane[3] ? 8u : 0u);
}

inline Float4 NextAxis(Float4 const& a) { return {a.lane[1], a.lane[2], a.lane[0], a.lane[3]}; }

#endif

/// The number of the lowest bit that is set. REQUIRES: one is.
inline unsigned CountZerosBelow(unsigned bits) {
#if defined(__GNUC__)
    return static_cast<unsigned>(__builtin_ctz(bits));
#else
    unsigned count = 0;
    while ((bits >> count & 1) == 0) ++count;
    return count;
#endif
}

inline bool IsAny(LaneMask const& a) { return ToBits(a) != 0; }

inline LaneMask IsZero(Float4 const& a) { return Abs(a) <= Float4(0.0F); }

inline std::array<float, 4> ToArray(Float4 const& a) {
    std::array<float, 4> lanes;
    Store(a, lanes.data());
    return lanes;
}

}  // namespace Quorlan::Tools
