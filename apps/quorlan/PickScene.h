#pragma once

#include "ModelFile.h"

#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>
#include <Tools/Picking/ModelPicker.h>
#include <CLI/CLI.hpp>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace QuorlanProgram {

/// What can be picked: `--hide`, `--disable-layer`, `--clip`.
struct VisibilityOptions {
    std::vector<std::string> hiddenGuids;
    std::vector<std::string> disabledLayers;
    std::vector<std::array<double, 4>> clippingPlanes;  ///< normal and distance; what lies beyond is cut away

    void Declare(CLI::App& app);
};

/// What a ray meets, in world coordinates.
struct SurfaceHit {
    std::uint32_t instance = 0;
    std::uint32_t face = 0;
    double distance = 0;
    GeometryObjectLib::Vertex point;
    GeometryObjectLib::Vertex normal;
};

/// What shall be found near a pixel: edges of solids, lines and arcs; or lines and arcs alone.
enum class EdgeKind { All, Lines };

/// An edge, a line or an arc near a pixel, in world coordinates.
struct EdgeHit {
    std::uint32_t instance = 0;
    std::uint32_t primitive = 0;  ///< of a solid the face, of line graphics the segment: lines first, then arcs
    double distance = 0;
    GeometryObjectLib::Vertex point;
    double pixels = 0;  ///< between the pixel and where `point` is seen
};

/// A model with its box tree, ready to be picked in. Copies of its picker may run side by side.
///
/// Pickers carry rays in single precision, which far from the origin is coarser than a wall. Where the model stands so
/// far out, the scene picks in a copy of it that is moved to the origin, and moves cameras, planes and hits.
class PickScene {
public:
    /// THROWS Failure for a GUID or a layer that the model does not have. REQUIRES: `model` outlives the scene.
    PickScene(ModelFile const& model, VisibilityOptions const& visibility);

    /// Of everything, hidden or not; empty for a model without instances.
    std::optional<GeometryObjectLib::AxisAlignedBox3> const& GetBounds() const { return bounds_; }

    /// The world boxes of the instances, without those that are nowhere.
    std::vector<GeometryObjectLib::AxisAlignedBox3> const& GetBoxes() const { return boxes_; }

    /// By instance: neither hidden nor on a disabled layer.
    std::vector<bool> FindVisibleInstances() const;

    /// One thread's means to pick with.
    class Picker {
    public:
        Picker(PickScene const& scene, Quorlan::Tools::Picking::ViewProjection const& view);

        /// The nearest surface at a pixel; pixel centres lie at halves.
        std::optional<SurfaceHit> Pick(double x, double y);

        /// The nearest edge within `tolerance` pixels, through surfaces.
        std::optional<EdgeHit> PickEdge(double x, double y, EdgeKind kind, double tolerance);

        /// The nearest surface in `direction` from `origin`.
        std::optional<SurfaceHit> Cast(GeometryObjectLib::Vertex const& origin,
                                       GeometryObjectLib::Vertex const& direction);

    private:
        std::optional<SurfaceHit> PickWith(Quorlan::Tools::Picking::ModelPicker& picker) const;

        std::vector<char> const& GetBuffer() const;

        PickScene const* scene_;
        Quorlan::Tools::Picking::ViewProjection view_;
        Quorlan::Tools::Picking::ModelPicker viewPicker_;
        Quorlan::Tools::Picking::ModelPicker rayPicker_;
    };

private:
    void HideEntities(VisibilityOptions const& visibility);
    void DisableLayers(VisibilityOptions const& visibility);
    void MoveToOrigin();

    ModelFile const& model_;
    std::vector<char> moved_;          ///< the model at the origin; empty where it is picked in place
    GeometryObjectLib::Vertex shift_;  ///< from the place of `moved_` to the world
    std::vector<GeometryObjectLib::AxisAlignedBox3> boxes_;
    std::optional<GeometryObjectLib::AxisAlignedBox3> bounds_;
    GeometryObjectLib::QuantizedAxisAlignedBoxTree tree_;
    std::unordered_set<Quorlan::EntityIndex_t> hidden_;
    std::unordered_set<std::uint32_t> disabledLayers_;
    Quorlan::Tools::Picking::ModelPicker prototype_;  ///< with layers and planes set
};

}  // namespace QuorlanProgram
