#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Vector3f.h>
#include <Quorlan/ModelTypes.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Model buffers written field by field, the odd ones included: whatever a tool may be handed, and `ModelBuilder` would
/// not write, can be written here. Every vector may be left out by assigning `std::nullopt`.
namespace Quorlan::Testing {

using GeometryObjectLib::Vector3f;

/// An index loop; nullopt leaves the vector out of its table.
using RawLoop = std::optional<std::vector<std::uint16_t>>;

struct RawHole {
    std::uint16_t face = 0;
    RawLoop loop;
};

/// One table of any of the three BRep vectors; what the vector's vertex struct lacks is not written. Normals and
/// texture coordinates that are missing at the end are zero.
struct RawBRep {
    std::optional<std::vector<Vector3f>> vertices{std::in_place};
    std::optional<std::vector<RawLoop>> faces{std::in_place};
    std::optional<std::vector<RawHole>> holes{};
    std::vector<Vector3f> normals{};
    std::vector<std::pair<float, float>> uvs{};
};

struct RawLine {
    Vector3f start;
    Vector3f end;
};

struct RawArc {
    Vector3f center;
    Vector3f axis;
    Vector3f startDirection;
    float radius = 0;
    float sweepAngle = 0;
};

struct RawGraphics {
    std::optional<std::vector<RawLine>> segments{std::in_place};
    std::optional<std::vector<RawArc>> arcs{std::in_place};
};

/// A geometry definition's summary.
struct RawDefinition {
    std::uint8_t kind = 0;
    std::uint32_t kindIndex = 0;
    Vector3f lo;
    Vector3f hi;
};

struct RawMaterial {
    std::uint8_t twoSided = 0;  ///< the byte as it stands; only 1 means two-sided
    std::int32_t textureIndex = -1;
};

struct RawModel {
    std::string identifier = "QLN8";  ///< four characters
    bool hasEntities = true;
    bool hasGeometry = true;
    std::uint32_t entityKind = 4;  ///< of all entities; their identifiers lead nowhere

    std::optional<std::vector<PlacementRecord>> entities{std::in_place};  ///< one record per entity, no identifiers
    std::optional<std::vector<PlacementRecord>> placements{std::in_place};
    std::optional<std::vector<RawDefinition>> definitions{std::in_place};
    std::optional<std::vector<InstanceRecord>> instances{std::in_place};
    std::optional<std::vector<RawMaterial>> materials;
    std::optional<std::vector<std::string>> layers;
    std::optional<std::vector<RawBRep>> facetedBReps;
    std::optional<std::vector<RawBRep>> brepsWithUV;
    std::optional<std::vector<RawBRep>> brepsWithNormal;
    std::optional<std::vector<RawGraphics>> graphicsContainers;

    /// Append one element and return its index. REQUIRES: the vectors they append to are present.
    std::uint32_t AddEntity(PlacementRecord const& placement = {});
    std::uint32_t AddDefinition(Vector3f const& lo, Vector3f const& hi, std::uint8_t kind = 0,
                                std::uint32_t kindIndex = 0);

    /// Appends `shape` to the vector that `kind` (1, 6 or 7) selects, and its definition with the shape's bounds.
    std::uint32_t AddBRep(RawBRep const& shape, std::uint8_t kind = 1);

    /// Appends a placement of its own and the instance that uses it.
    std::uint32_t AddInstance(std::uint32_t entity, std::uint32_t definition, PlacementRecord const& placement = {},
                              std::uint32_t material = kInvalidIndex, std::uint32_t layer = kInvalidIndex);

    /// The buffer. It can be written again after changes.
    std::vector<char> Write() const;
};

/// A placement that only moves.
inline PlacementRecord At(double x, double y, double z) { return {{x, y, z}, {1, 0, 0}, {0, 1, 0}}; }

/// A shape as a buffer stores it.
RawBRep ToRawBRep(GeometryObjectLib::FacetedBRep const& shape);

/// The axis-aligned box with outward counter-clockwise faces.
RawBRep RawBox(Vector3f const& lo, Vector3f const& hi);

}  // namespace Quorlan::Testing
