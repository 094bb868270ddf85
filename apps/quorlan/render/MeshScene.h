#pragma once

#include "PickScene.h"
#include "render/Surfaces.h"

#include <GeometryObjectLib/Vector3f.h>
#include <Tools/Picking/ViewProjection.h>
#include <embree3/rtcore.h>

#include <array>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace QuorlanProgram {

struct Mesh;

/// The part of a half line between two distances, in scene coordinates. `direction` is of unit length.
struct MeshRay {
    GeometryObjectLib::Vector3f origin;
    GeometryObjectLib::Vector3f direction;
    float near = 0;
    float far = 0;
};

/// What a ray meets, in scene coordinates.
struct MeshHit {
    std::uint32_t instance = Quorlan::kInvalidIndex;
    bool isLine = false;
    float distance = 0;
    GeometryObjectLib::Vector3f point;
    GeometryObjectLib::Vector3f facet;   ///< unit normal of the triangle, outwards
    GeometryObjectLib::Vector3f normal;  ///< unit normal of the smooth surface
    std::array<float, 2> uv{};
    float uvSlope = 0;  ///< [1/m] repeats of the texture; 0 for a shape without texture coordinates
};

/// The render meshes and lines of a model's visible instances, for casting rays with Embree: one scene per geometry
/// definition and one instance of it per model instance.
///
/// Scene coordinates are world coordinates less `GetOrigin()`, which is near the middle of the model, so that single
/// precision serves models far out as well. Any number of threads may cast rays.
class MeshScene {
public:
    /// `surfaces` has one surface per instance. Lines are as wide as they are far from `view`'s camera.
    /// THROWS Failure if Embree cannot hold the scene.
    MeshScene(ModelFile const& model, PickScene const& visible, std::vector<Surface> const& surfaces,
              Quorlan::Tools::Picking::ViewProjection const& view);
    ~MeshScene();

    GeometryObjectLib::Vertex const& GetOrigin() const { return origin_; }
    float GetRadius() const { return radius_; }  ///< [m] of a sphere around the model
    bool HasGlass() const { return hasGlass_; }

    /// The nearest face, from either side, or line.
    bool Intersect(MeshRay const& ray, MeshHit& hit) const { return Intersect(ray, hit, ~0u); }

    /// The same, through glass.
    bool IntersectOpaque(MeshRay const& ray, MeshHit& hit) const { return Intersect(ray, hit, kOpaque | kLine); }

    /// Whether a face that lets no light through stands in the way; lines never do.
    bool IsBlocked(MeshRay const& ray) const { return IsOccluded(ray, kOpaque); }

    /// Whether glass stands in the way.
    bool IsTinted(MeshRay const& ray) const { return hasGlass_ && IsOccluded(ray, kGlass); }

private:
    enum Mask : unsigned { kOpaque = 1, kGlass = 2, kLine = 4 };

    struct DeviceDeleter {
        void operator()(RTCDevice device) const { rtcReleaseDevice(device); }
    };
    struct SceneDeleter {
        void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
    };
    using Device = std::unique_ptr<std::remove_pointer_t<RTCDevice>, DeviceDeleter>;
    using Scene = std::unique_ptr<std::remove_pointer_t<RTCScene>, SceneDeleter>;

    /// A definition that is used, or a placed one.
    struct Shape;
    struct Placed;

    Shape const& ShapeOf(std::uint32_t definition, std::uint32_t kind, class MeshMaker& maker);
    void AddInstance(std::uint32_t instance, Shape const& shape, std::array<float, 12> const& columns, unsigned mask);
    void AddLines(std::uint32_t instance, GeometryObjectLib::GraphicsContainer const& graphics,
                  GeometryObjectLib::Matrix4 const& placement, Quorlan::Tools::Picking::ViewProjection const& view);
    bool Intersect(MeshRay const& ray, MeshHit& hit, unsigned mask) const;
    bool IsOccluded(MeshRay const& ray, unsigned mask) const;

    GeometryObjectLib::Vertex origin_;
    Device device_;
    Scene scene_;
    std::unordered_map<std::uint32_t, std::unique_ptr<Shape>> shapes_;  ///< by definition
    std::vector<Placed> placed_;                                        ///< by instance
    float radius_ = 0;
    bool hasGlass_ = false;
};

}  // namespace QuorlanProgram
