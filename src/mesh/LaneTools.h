#pragma once

#include "geometry/Lanes.h"

#include <array>
#include <utility>

/// What sums and iterations in lanes need beyond `geometry/Lanes.h`.
namespace Quorlan::Tools {

using GeometryObjectLib::Float4;

/// A decision per lane, for algorithms whose lanes take different ways.
using LaneMask = decltype(std::declval<Float4>() < std::declval<Float4>());

#if QUORLAN_HAS_SSE2

inline bool IsAny(LaneMask a) { return _mm_movemask_ps(a.v) != 0; }

/// Lanes x, y, z, w become y, z, x, w.
inline Float4 NextAxis(Float4 a) { return _mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(3, 0, 2, 1)); }

#else

inline bool IsAny(LaneMask const& a) { return a.lane[0] || a.lane[1] || a.lane[2] || a.lane[3]; }
inline Float4 NextAxis(Float4 const& a) { return {a.lane[1], a.lane[2], a.lane[0], a.lane[3]}; }

#endif

inline LaneMask IsZero(Float4 const& a) { return Abs(a) <= Float4(0.0F); }

inline std::array<float, 4> ToArray(Float4 const& a) {
    std::array<float, 4> lanes;
    Store(a, lanes.data());
    return lanes;
}

}  // namespace Quorlan::Tools
