#include "picking/InstanceRays.h"

#include "geometry/Avx2Vectors.h"

#if QUORLAN_HAS_AVX2

namespace Quorlan::Tools::Picking {
namespace {

struct WideFrames {
    Vectors origin, x, y, z;
};

/// As `InstanceRays::ToWideFrame`.
QUORLAN_AVX2_INLINE WideFrames LoadFrames(std::uint8_t const* const* placements, std::size_t offset) {
    WideFrames frames;
    frames.origin = LoadOrigins(placements, offset);
    LoadWideTriples(placements, offset + kPlacementAxes, frames.x, frames.y);
    frames.z = Cross(frames.x, frames.y);
    __m256d const xSquared = Dot(frames.x, frames.x);
    __m256d const ySquared = Dot(frames.y, frames.y);
    __m256d const zSquared = Dot(frames.z, frames.z);
    __m256d const one = _mm256_set1_pd(1);
    if (AreAll(_mm256_and_pd(_mm256_and_pd(IsEqual(xSquared, one), IsEqual(ySquared, one)), IsEqual(zSquared, one)))) {
        return frames;
    }
    frames.x = Multiply(frames.x, one / _mm256_sqrt_pd(xSquared));
    frames.y = Multiply(frames.y, one / _mm256_sqrt_pd(ySquared));
    frames.z = Multiply(frames.z, one / _mm256_sqrt_pd(zSquared));
    return frames;
}

QUORLAN_AVX2_INLINE void StoreDots(Vectors const& x, Vectors const& y, Vectors const& z, Vectors const& v,
                                   float (&out)[3][kLaneCount]) {
    _mm_storeu_ps(out[0], _mm256_cvtpd_ps(Dot(x, v)));
    _mm_storeu_ps(out[1], _mm256_cvtpd_ps(Dot(y, v)));
    _mm_storeu_ps(out[2], _mm256_cvtpd_ps(Dot(z, v)));
}

}  // namespace

QUORLAN_AVX2 void CarryRayAvx2(InstanceLanes const& instances, ModelRay const& ray, float (&origin)[3][kLaneCount],
                               float (&direction)[3][kLaneCount]) {
    WideFrames const entity = LoadFrames(instances.entities, kEntityPlacement);
    WideFrames const placement = LoadFrames(instances.placements, 0);
    Vectors const frameOrigin = Place(entity.origin, entity.x, entity.y, entity.z, placement.origin);
    Vectors const x = Turn(entity.x, entity.y, entity.z, placement.x);
    Vectors const y = Turn(entity.x, entity.y, entity.z, placement.y);
    Vectors const z = Turn(entity.x, entity.y, entity.z, placement.z);
    Vectors const yz = Cross(y, z);
    __m256d const perDeterminant = _mm256_set1_pd(1) / Dot(x, yz);
    Vectors const inverseX = Multiply(yz, perDeterminant);
    Vectors const inverseY = Multiply(Cross(z, x), perDeterminant);
    Vectors const inverseZ = Multiply(Cross(x, y), perDeterminant);
    StoreDots(inverseX, inverseY, inverseZ, Subtract(Quorlan::Broadcast(ray.origin), frameOrigin), origin);
    StoreDots(inverseX, inverseY, inverseZ, Quorlan::Broadcast(ray.direction), direction);
}

}  // namespace Quorlan::Tools::Picking

#endif
