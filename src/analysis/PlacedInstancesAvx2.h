#pragma once

#include "geometry/Avx2.h"

#include <cstddef>
#include <cstdint>

namespace Quorlan {

/// The arrays of a model buffer that instances lead into, as bytes.
struct InstanceBytes {
    std::uint8_t const* instances;
    std::uint8_t const* placements;
    std::uint8_t const* entities;
    std::uint8_t const* definitions;
};

/// What of the buffer's layout the code for AVX2, which includes none of the generated, goes by. [bytes]
struct InstanceLayout {
    static constexpr std::size_t kInstanceSize = 20;  ///< placement, entity and definition index come first
    static constexpr std::size_t kPlacementSize = 48;
    static constexpr std::size_t kEntitySize = 64;
    static constexpr std::size_t kEntityPlacement = 16;
    static constexpr std::size_t kDefinitionSize = 32;
    static constexpr std::size_t kDefinitionBounds = 8;
};

/// How many instances ahead what they name is fetched into the cache.
constexpr std::size_t kAvx2PrefetchDistance = 32;

#if QUORLAN_HAS_AVX2

/// Centre and half edge lengths of the boxes of the instances from `first` on: the operations of `FrameLanes`, eight
/// instances at a time, in the same order and without fused multiplications, and so with the same bits. The caller's
/// frame is given by its origin and by its axes, one after the other. `destination` is where `out` will be moved to, or
/// `out` itself: it is fetched into the cache.
/// REQUIRES: HasAvx2(); `count` is a multiple of 8 and kAvx2PrefetchDistance instances follow the last.
void ComputeBoxesAvx2(InstanceBytes const& bytes, double const (&callerOrigin)[3], float const (&callerAxes)[9],
                      std::size_t first, std::size_t count, double* out, double const* destination);

/// The matrices of the instances from `first` on, row by row: the operations of `DoubleFrameLanes`, likewise. Where
/// `transform`, 16 numbers row by row, is not null, its products with them.
/// REQUIRES: HasAvx2(); `count` is a multiple of 4 and kAvx2PrefetchDistance instances follow the last.
void ComputePlacementsAvx2(InstanceBytes const& bytes, double const* transform, std::size_t first, std::size_t count,
                           double* out, double const* destination);

#endif

}  // namespace Quorlan
