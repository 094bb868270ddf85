#include "render/Shading.h"

#include <algorithm>
#include <cmath>

namespace QuorlanProgram {
namespace {

constexpr float kTurn = 6.2831853f;
constexpr float kSunRadius = 0.02f;         ///< [rad] four times the real one: a little haze
constexpr float kGlassReflectance = 0.05f;  ///< of light that meets glass head on
constexpr Light kZenith{0.38f, 0.47f, 0.62f};
constexpr Light kHorizon{0.66f, 0.69f, 0.72f};
constexpr Light kGround{0.34f, 0.31f, 0.28f};
constexpr Light kBounce{0.21f, 0.195f, 0.18f};
constexpr float kShoulder = 0.75f;  ///< what is darker stays as it is

float Fraction(double v) { return static_cast<float>(v - std::floor(v)); }

float Compress(float v) {
    if (v <= kShoulder) return v;
    auto const room = 1 - kShoulder;
    return kShoulder + room * (1 - std::exp((kShoulder - v) / room));
}

/// Two unit vectors perpendicular to `n` and to each other (Duff et al., "Building an Orthonormal Basis, Revisited",
/// 2017).
void MakeBasis(Vector3f const& n, Vector3f& a, Vector3f& b) {
    auto const sign = std::copysign(1.0f, n.z);
    auto const p = -1 / (sign + n.z), q = n.x * n.y * p;
    a = {1 + sign * n.x * n.x * p, sign * q, -sign * n.x};
    b = {q, sign + n.y * n.y * p, -n.y};
}

}  // namespace

Light const kSunlight{0.96f, 0.88f, 0.76f};

Sample2 SampleAt(std::uint32_t n, Sample2 const& shift) {
    return {Fraction(shift[0] + n * 0.7548776662466927), Fraction(shift[1] + n * 0.5698402909980532)};
}

Sample2 ShiftOf(std::uint32_t x, std::uint32_t y) {
    auto h = x * 0x9E3779B1u ^ (y + 0x7F4A7C15u) * 0x85EBCA77u;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    h ^= h >> 15;
    return {static_cast<float>(h & 0xFFFF) / 65536, static_cast<float>(h >> 16) / 65536};
}

Vector3f UnitVector(Vector3f const& v) {
    auto const length = Length(v);
    return length > 0 ? v / length : Vector3f{0, 0, 1};
}

Vector3f DirectionAround(Vector3f const& normal, Sample2 const& sample) {
    Vector3f a, b;
    MakeBasis(normal, a, b);
    auto const radius = std::sqrt(sample[0]), angle = kTurn * sample[1];
    auto const up = std::sqrt(std::max(0.0f, 1 - sample[0]));
    return UnitVector(radius * std::cos(angle) * a + radius * std::sin(angle) * b + up * normal);
}

Vector3f DirectionToSun(Vector3f const& sun, Sample2 const& sample) {
    Vector3f a, b;
    MakeBasis(sun, a, b);
    auto const radius = kSunRadius * std::sqrt(sample[0]), angle = kTurn * sample[1];
    return UnitVector(sun + radius * std::cos(angle) * a + radius * std::sin(angle) * b);
}

Light SkyFrom(Vector3f const& direction) {
    if (direction.z < 0) return Mix(kHorizon, kGround, std::min(1.0f, -6 * direction.z));
    return Mix(kHorizon, kZenith, std::sqrt(direction.z));
}

Light BounceFrom(Vector3f const& direction) { return (1 + 0.25f * direction.z) * kBounce; }

float ReflectedShare(float cosine) {
    auto const grazing = 1 - std::clamp(cosine, 0.0f, 1.0f);
    auto const squared = grazing * grazing;
    return kGlassReflectance + (1 - kGlassReflectance) * squared * squared * grazing;
}

Light Expose(Light light) { return {Compress(light.red), Compress(light.green), Compress(light.blue)}; }

}  // namespace QuorlanProgram
