#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

/// A point of a face projected to its plane.
using PlanePoint = std::array<float, 2>;

/// Triangulates a ring whose corners all turn left, also after each cut, exactly as earcut does, in linear time.
///
/// In such a ring every corner is an ear, so that earcut cuts every other corner, going round and round, from the last
/// point on. The turns are computed with earcut's own formula, so that both see the same corners.
/// RETURNS false, with `triangles` unchanged, if some corner does not turn left: earcut itself has to decide then.
class ConvexEars {
public:
    bool Cut(PlanePoint const* points, std::uint32_t count, std::vector<std::uint16_t>& triangles);

private:
    bool TurnsLeft(PlanePoint const* points, std::uint16_t corner) const;

    std::vector<std::uint16_t> previous_;
    std::vector<std::uint16_t> next_;
};

}  // namespace Quorlan::Tools
