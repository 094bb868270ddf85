#pragma once

#include "Random.h"
#include "SampleBuilding.h"
#include "Solids.h"

#include <GeometryObjectLib/AffineTransform.h>
#include <Quorlan/ModelBuilder.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace QuorlanSample {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::GraphicsContainer;
using Quorlan::EntityIndex_t;
using Quorlan::GeometryDefinitionIndex_t;

// clang-format off
enum class Material : std::uint32_t {
    Plaster, Brick, Concrete, Cladding, Metal, Glass, Accent, Trim, Oak, Steel, Copper, WaterPipe,
    Teal, Mustard, Linen, White, Grass, Paving, Leaves, Trunk, Solar, Ink, Gravel,
};

enum class Layer : std::uint32_t {
    Structure, Walls, Windows, Doors, Stairs, Railings, Pipes, Furniture, Roof, Site, Annotations,
};
// clang-format on

/// A rotation about z by its cosine and sine; quarter turns are exact.
struct Turn {
    double cosine = 1;
    double sine = 0;

    static Turn Quarters(std::uint32_t count);

    /// A turn by 2 * atan(t), without a call whose last bits depend on the platform.
    static Turn FromHalfTangent(double t) { return {(1 - t * t) / (1 + t * t), 2 * t / (1 + t * t)}; }
};

/// The placement that turns about z and then moves to `origin`.
AffineTransform At(Vertex const& origin, Turn turn = {});

/// A placement at `origin` whose x axis points along `x` and whose y axis lies in the plane of `x` and `y`.
AffineTransform Along(Vertex const& origin, Vertex const& x, Vertex const& y);

/// Applies `inner`, then `outer`.
AffineTransform Compose(AffineTransform const& outer, AffineTransform const& inner);

class SampleModel;

/// One entity while it is being given its shapes.
class Element {
public:
    Element(SampleModel& model, EntityIndex_t entity, Layer layer) : model_(&model), entity_(entity), layer_(layer) {}

    /// The box from `lo` to `hi` in the entity's frame. Boxes of one size share one definition.
    Element& AddBox(Vertex const& lo, Vertex const& hi, Material material);
    Element& Add(GeometryDefinitionIndex_t shape, Material material, AffineTransform const& placement = {});
    Element& SetProperty(std::string const& set, std::string const& name,
                         std::variant<std::string, double, std::int64_t, bool> const& value);

private:
    SampleModel* model_;
    EntityIndex_t entity_;
    Layer layer_;
};

/// The model under construction: palette, layers, shared shapes, owner histories.
class SampleModel {
public:
    explicit SampleModel(SampleOptions const& options);

    SampleOptions const& GetOptions() const { return options_; }
    Quorlan::ModelBuilder& GetBuilder() { return builder_; }
    Random& GetRandom() { return random_; }

    /// The definition known as `key`, made by `make` the first time. `make` returns a FacetedBRep, a SolidWithNormals,
    /// a SolidWithUVs or a GraphicsContainer.
    template <class Make>
    GeometryDefinitionIndex_t Shape(std::string const& key, Make const& make) {
        auto const known = shapes_.find(key);
        return known != shapes_.end() ? known->second : shapes_.emplace(key, Write(make())).first->second;
    }

    GeometryDefinitionIndex_t Box(Vertex const& size);
    GeometryDefinitionIndex_t Cylinder(double radius, double length);

    /// A new entity in the frame `placement` of the site. Its GUID comes from its name, so that two samples give the
    /// same building element the same GUID; names are unique. `action` says what its owner history records.
    Element AddEntity(std::string const& name, Layer layer, AffineTransform const& placement,
                      Quorlan::OwnerHistoryChangeAction action = Quorlan::OwnerHistoryChangeAction::ADDED);

    /// The entity of an identifier kind other than the GUID, which the caller has written, as an element.
    Element Adopt(EntityIndex_t entity, Layer layer) { return {*this, entity, layer}; }

    AffineTransform OnSite(AffineTransform const& placement) const;

private:
    GeometryDefinitionIndex_t Write(FacetedBRep const& solid);
    GeometryDefinitionIndex_t Write(SolidWithNormals const& solid);
    GeometryDefinitionIndex_t Write(SolidWithUVs const& solid);
    GeometryDefinitionIndex_t Write(GraphicsContainer const& graphics);
    void WritePalette();
    void WriteOwnerHistories();

    SampleOptions options_;
    Random random_;
    Quorlan::ModelBuilder builder_;
    std::map<std::string, GeometryDefinitionIndex_t> shapes_;
    std::map<std::array<std::int64_t, 3>, GeometryDefinitionIndex_t> boxes_;
    std::array<std::uint32_t, 4> histories_{};  ///< by change action
};

}  // namespace QuorlanSample
