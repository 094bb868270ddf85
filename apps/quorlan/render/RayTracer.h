#pragma once

#include "render/MeshRenderer.h"
#include "render/MeshScene.h"
#include "render/Shading.h"
#include "render/Texture.h"

#include <cstdint>
#include <vector>

namespace QuorlanProgram {

/// The surface at which a ray ended, or through which it first went.
struct SeenSurface {
    std::uint32_t instance = Quorlan::kInvalidIndex;
    float distance = 0;
    Vector3f point;   ///< in scene coordinates
    Vector3f normal;  ///< of the smooth surface, towards the eye
    Vector3f facet;   ///< of the triangle, towards the eye
};

/// The light that one ray brought: `light + reflected * sky`, premultiplied by alpha. The light of the sky at the last
/// surface is kept apart, because neighbouring rays may share it.
struct TracedRay {
    SeenSurface first;
    SeenSurface last;
    Light light;
    Light reflected;  ///< what the last surface lets through to the eye of light that comes from all sides
    float alpha = 0;
    float sunlight = 0;  ///< that reaches the last surface, 0 to 1

    bool HasEnd() const { return last.instance != Quorlan::kInvalidIndex; }
};

/// Follows rays through a scene. Any number of threads may use copies; each counts its own rays.
class RayTracer {
public:
    RayTracer(MeshScene const& scene, std::vector<Surface> const& surfaces, std::vector<Texture> const& textures,
              Quorlan::Tools::Picking::ViewProjection const& view, MeshPictureOptions const& options);

    /// The ray at a pixel; `sample` chooses the point of the sun.
    TracedRay Trace(double x, double y, Sample2 const& sample);

    /// The mean light of the sky on a surface, from `count` rays: elements `first` and on of the even sequence.
    Light GatherSky(SeenSurface const& surface, std::uint32_t first, std::uint32_t count, Sample2 const& shift);

    std::uint64_t GetRayCount() const { return rayCount_; }

private:
    struct Plane {
        GeometryObjectLib::Vertex normal;
        double distance;
    };

    bool Clip(MeshRay& ray, Vector3f& entry) const;
    bool FindSurface(MeshRay& ray, Vector3f const& entry, MeshHit& hit, bool& isCut);
    Light ColorOf(MeshHit const& hit, Surface const& surface, Vector3f const& direction) const;
    void FindBehindGlass(MeshRay const& ray, MeshHit& hit);
    float FindSunlight(SeenSurface const& surface, Sample2 const& sample);
    void AddGlass(TracedRay& traced, SeenSurface const& seen, Surface const& surface, Vector3f const& direction);
    MeshRay RayFrom(SeenSurface const& surface, Vector3f const& direction, float reach) const;

    MeshScene const& scene_;
    std::vector<Surface> const& surfaces_;
    std::vector<Texture> const& textures_;
    Quorlan::Tools::Picking::ViewProjection view_;
    ColorMode mode_;
    std::vector<Plane> planes_;  ///< in scene coordinates
    Vector3f sun_;
    float pixelAngle_ = 0;  ///< [rad] of a perspective camera
    float reach_ = 0;       ///< [m] within which surfaces shade each other from the sky
    std::uint64_t rayCount_ = 0;
};

}  // namespace QuorlanProgram
