#pragma once

#include "support/RawModel.h"

#include <cmath>
#include <cstdint>
#include <random>

namespace Quorlan::Testing {

/// How the placements of a random model look.
enum class RandomPlacements {
    kAligned,  ///< unit axes along the coordinate axes, all 24 right-handed ones, as most of a building
    kRotated,  ///< any directions of any length, not perpendicular
    kMixed,    ///< both, and a few placements a thousand kilometres away
};

/// Numbers of one seeded sequence, the same on every platform.
class RandomNumbers {
public:
    explicit RandomNumbers(std::uint32_t seed) : generator_(seed) {}

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(generator_() % limit); }
    double Between(double lo, double hi) { return lo + (hi - lo) * (static_cast<double>(generator_()) / 4294967296.0); }
    float FloatBetween(double lo, double hi) { return static_cast<float>(Between(lo, hi)); }

private:
    std::mt19937 generator_;
};

inline PlacementRecord RandomPlacement(RandomNumbers& random, RandomPlacements style) {
    PlacementRecord placement;
    bool const isFar = style == RandomPlacements::kMixed && random.Below(20) == 0;
    for (double& coordinate : placement.origin) coordinate = random.Between(-50, 50) * (isFar ? 2e4 : 1.0);
    bool const isAligned =
        style == RandomPlacements::kAligned || (style == RandomPlacements::kMixed && random.Below(2) == 0);
    if (isAligned) {
        std::uint32_t const x = random.Below(3);
        placement.xAxis = placement.yAxis = {0, 0, 0};
        placement.xAxis[x] = random.Below(2) == 0 ? 1.0f : -1.0f;
        placement.yAxis[(x + 1 + random.Below(2)) % 3] = random.Below(2) == 0 ? 1.0f : -1.0f;
        return placement;
    }
    for (std::size_t r = 0; r < 3; ++r) {
        placement.xAxis[r] = random.FloatBetween(-2, 2);
        placement.yAxis[r] = random.FloatBetween(-2, 2);
    }
    return placement;
}

/// A model of boxes without shapes: about two instances per entity and few definitions, in a random order.
inline RawModel MakeRandomModel(std::uint32_t seed, std::uint32_t instanceCount,
                                RandomPlacements style = RandomPlacements::kMixed) {
    RandomNumbers random(seed);
    RawModel model;
    std::uint32_t const entityCount = instanceCount / 2 + 1;
    std::uint32_t const definitionCount = instanceCount / 8 + 1;
    for (std::uint32_t i = 0; i < entityCount; ++i) model.AddEntity(RandomPlacement(random, style));
    for (std::uint32_t i = 0; i < definitionCount; ++i) {
        Vector3f const lo{random.FloatBetween(-5, 0), random.FloatBetween(-5, 0), random.FloatBetween(-5, 5)};
        model.AddDefinition(lo, {lo.x + random.FloatBetween(0, 10), lo.y + random.FloatBetween(0, 1), lo.z + 3.0f});
    }
    for (std::uint32_t i = 0; i < instanceCount; ++i) {
        model.AddInstance(random.Below(entityCount), random.Below(definitionCount), RandomPlacement(random, style));
    }
    return model;
}

/// A map with scale and shear, which a caller may hand to the tools.
inline AffineTransform RandomTransform(std::uint32_t seed) {
    RandomNumbers random(seed);
    AffineTransform transform;
    for (std::size_t i = 0; i < 12; ++i) transform.matrix.m[i] = random.Between(-3, 3);
    return transform;
}

}  // namespace Quorlan::Testing
