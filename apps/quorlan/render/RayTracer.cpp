#include "render/RayTracer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr unsigned kMaxSurfaces = 24;   ///< that one ray goes through, seen or not
constexpr float kStep = 1e-4f;          ///< [m] behind a surface the ray goes on
constexpr float kRelativeStep = 1e-6f;  ///< of the distance that the ray has come
constexpr float kLift = 1e-3f;          ///< [m] above a surface from which rays leave
constexpr float kRelativeLift = 2e-6f;  ///< of the distance that the ray has come
constexpr float kTouch = 1e-3f;         ///< [m] within which glass lies on what is behind it
constexpr float kMinSlant = 0.1f;       ///< cosine; more slanted textures are no further averaged
constexpr float kReachShare = 0.12f;    ///< of the model's half diagonal
constexpr float kMaxReach = 5;          ///< [m]
constexpr float kGlassShade = 0.72f;    ///< of the sunlight that glass lets through
constexpr float kCutShade = 0.35f;      ///< of a colour, where a solid is cut
constexpr Light kCutColor{0.10f, 0.10f, 0.11f};
constexpr Light kGlassLight{0.62f, 0.65f, 0.68f};

Vector3f Narrow(Vertex const& v) { return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)}; }

Vertex Widen(Vector3f const& v) { return {v.x, v.y, v.z}; }

}  // namespace

RayTracer::RayTracer(MeshScene const& scene, std::vector<Surface> const& surfaces, std::vector<Texture> const& textures,
                     Quorlan::Tools::Picking::ViewProjection const& view, MeshPictureOptions const& options)
    : scene_(scene), surfaces_(surfaces), textures_(textures), view_(view), mode_(options.mode) {
    for (auto const& plane : options.clippingPlanes) {
        Vertex const normal{plane[0], plane[1], plane[2]};
        planes_.push_back({normal, plane[3] - Dot(normal, scene.GetOrigin())});
    }
    auto const sun = 0.75 * view.GetUpVector() - 0.6 * view.GetDirection() - 0.5 * view.GetRightVector();
    sun_ = UnitVector(Narrow(sun));
    auto const side = std::max(view.GetSizeX(), view.GetSizeY());
    pixelAngle_ = static_cast<float>(2 * std::tan(view.GetAngle() / 2) / side);
    reach_ = std::min(kMaxReach, kReachShare * scene.GetRadius());
}

/// Shortens the ray to the part that no plane cuts away. `entry` becomes the normal of the plane at its near end, if
/// there is one. RETURNS false if nothing is left.
bool RayTracer::Clip(MeshRay& ray, Vector3f& entry) const {
    for (auto const& plane : planes_) {
        auto const slope = Dot(plane.normal, Widen(ray.direction));
        auto const height = plane.distance - Dot(plane.normal, Widen(ray.origin));  // up to the plane
        if (slope == 0) {
            if (height < 0) return false;
            continue;
        }
        auto const at = static_cast<float>(height / slope);
        if (slope > 0) {
            ray.far = std::min(ray.far, at);
        } else if (at > ray.near) {
            ray.near = at;
            entry = UnitVector(Narrow(plane.normal));
        }
    }
    return ray.near < ray.far;
}

/// The next surface that can be seen, from the ray's near end on. `isCut` says that it is the inside of a solid which a
/// plane cuts open: the surface is then the cut.
bool RayTracer::FindSurface(MeshRay& ray, Vector3f const& entry, MeshHit& hit, bool& isCut) {
    for (unsigned i = 0; i < kMaxSurfaces; ++i) {
        ++rayCount_;
        if (!scene_.Intersect(ray, hit)) return false;
        auto const& surface = surfaces_[hit.instance];
        auto const isBack = Dot(hit.facet, ray.direction) > 0;
        if (!isBack || surface.twoSided || hit.isLine) return true;
        isCut = i == 0 && Dot(entry, entry) > 0 && surface.alpha >= 1;
        if (isCut) {
            hit.distance = ray.near;
            hit.point = ray.origin + ray.near * ray.direction;
            hit.facet = hit.normal = entry;
            return true;
        }
        ray.near = hit.distance + kStep + kRelativeStep * hit.distance;
    }
    return false;
}

/// Glass may lie on something, or something on glass: which of them a ray meets first is left to rounding. What lets no
/// light through is then what is seen.
void RayTracer::FindBehindGlass(MeshRay const& ray, MeshHit& hit) {
    auto close = ray;
    close.near = std::max(ray.near, hit.distance - kTouch);
    close.far = hit.distance + kTouch;
    MeshHit behind;
    ++rayCount_;
    if (!scene_.IntersectOpaque(close, behind)) return;
    if (Dot(behind.facet, ray.direction) <= 0 || surfaces_[behind.instance].twoSided) hit = behind;
}

Light RayTracer::ColorOf(MeshHit const& hit, Surface const& surface, Vector3f const& direction) const {
    if (mode_ == ColorMode::Normal) {
        auto const channel = [](float v) { return 0.5f + 0.45f * v; };
        return {channel(hit.normal.x), channel(hit.normal.y), channel(hit.normal.z)};
    }
    auto const index = static_cast<std::size_t>(surface.texture);
    if (hit.uvSlope <= 0 || surface.texture < 0 || index >= textures_.size() || textures_[index].IsEmpty()) {
        return surface.color;
    }
    auto const pixel = view_.IsPerspective() ? pixelAngle_ * hit.distance : static_cast<float>(view_.GetScale());
    auto const slant = std::max(kMinSlant, std::abs(Dot(hit.facet, direction)));
    return textures_[index].Sample(hit.uv[0], hit.uv[1], pixel * hit.uvSlope / std::sqrt(slant));
}

MeshRay RayTracer::RayFrom(SeenSurface const& surface, Vector3f const& direction, float reach) const {
    auto const lift = kLift + kRelativeLift * surface.distance;
    MeshRay ray{surface.point + lift * surface.facet, direction, 0, reach};
    Vector3f entry;
    if (!Clip(ray, entry)) ray.far = -1;
    return ray;
}

float RayTracer::FindSunlight(SeenSurface const& surface, Sample2 const& sample) {
    if (Dot(surface.normal, sun_) <= 0 || Dot(surface.facet, sun_) <= 0) return 0;
    auto const ray = RayFrom(surface, DirectionToSun(sun_, sample), kInfinity);
    if (ray.far < 0) return 1;
    ++rayCount_;
    if (scene_.IsBlocked(ray)) return 0;
    rayCount_ += scene_.HasGlass();
    return scene_.IsTinted(ray) ? kGlassShade : 1;
}

Light RayTracer::GatherSky(SeenSurface const& surface, std::uint32_t first, std::uint32_t count, Sample2 const& shift) {
    Light sum;
    for (std::uint32_t i = 0; i < count; ++i) {
        auto const direction = DirectionAround(surface.normal, SampleAt(first + i, shift));
        auto const distance = SampleAt(7 * (first + i), shift)[0];
        auto const ray = RayFrom(surface, direction, reach_ * distance);
        rayCount_ += ray.far >= 0;
        auto const isBlocked = Dot(direction, surface.facet) <= 0 || (ray.far >= 0 && scene_.IsBlocked(ray));
        sum = sum + (isBlocked ? BounceFrom(direction) : SkyFrom(direction));
    }
    return (1 / static_cast<float>(count)) * sum;
}

/// Lays glass over what comes behind: its tint and what it mirrors of the sky.
void RayTracer::AddGlass(TracedRay& traced, SeenSurface const& seen, Surface const& surface,
                         Vector3f const& direction) {
    auto const cosine = -Dot(seen.normal, direction);
    auto const mirrored = direction + 2 * cosine * seen.normal;
    auto const share = ReflectedShare(cosine);
    ++rayCount_;
    auto const ray = RayFrom(seen, mirrored, kInfinity);
    auto const isBlocked = ray.far >= 0 && scene_.IsBlocked(ray);
    auto const mirror = isBlocked ? BounceFrom(mirrored) : SkyFrom(mirrored);
    auto const open = 1 - traced.alpha;
    traced.light =
        traced.light + open * (1 - share) * surface.alpha * (surface.color * kGlassLight) + open * share * mirror;
    traced.alpha += open * (share + (1 - share) * surface.alpha);
}

TracedRay RayTracer::Trace(double x, double y, Sample2 const& sample) {
    Vertex origin, direction;
    Quorlan::Tools::Picking::ViewToWorld(view_, x, y, origin, direction);
    MeshRay ray{Narrow(origin - scene_.GetOrigin()), UnitVector(Narrow(direction)), 0, kInfinity};
    TracedRay traced;
    Vector3f entry;
    if (!Clip(ray, entry)) return traced;
    MeshHit hit;
    for (unsigned i = 0; i < kMaxSurfaces; ++i) {
        auto isCut = false;
        if (!FindSurface(ray, entry, hit, isCut)) break;
        if (surfaces_[hit.instance].alpha < 1 && !hit.isLine) FindBehindGlass(ray, hit);
        auto const& surface = surfaces_[hit.instance];
        auto const side = Dot(hit.facet, ray.direction) > 0 ? -1.0f : 1.0f;
        SeenSurface seen{hit.instance, hit.distance, hit.point, side * hit.normal, side * hit.facet};
        if (Dot(seen.normal, ray.direction) > 0) seen.normal = seen.facet;
        if (i == 0) traced.first = seen;
        auto const open = 1 - traced.alpha;
        if (surface.alpha < 1 && !hit.isLine) {
            AddGlass(traced, seen, surface, ray.direction);
            ray.near = hit.distance + kStep + kRelativeStep * hit.distance;
            entry = {};
            continue;
        }
        auto const color = isCut ? Mix(kCutColor, surface.color, kCutShade) : ColorOf(hit, surface, ray.direction);
        traced.last = seen;
        traced.alpha = 1;
        if (mode_ == ColorMode::Entity || hit.isLine || isCut) {
            traced.light = traced.light + open * color;
            break;
        }
        traced.reflected = open * color;
        traced.sunlight = FindSunlight(seen, sample);
        auto const strength = traced.sunlight * std::max(0.0f, Dot(seen.normal, sun_));
        traced.light = traced.light + strength * (traced.reflected * kSunlight);
        break;
    }
    return traced;
}

}  // namespace QuorlanProgram
