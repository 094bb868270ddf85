#pragma once

#include <GeometryObjectLib/GraphicsContainer.h>
#include <Quorlan/Guid.h>
#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelTypes.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a model says, free of how its buffer says it: indices are followed, and shapes stand where they are in the
/// world. Two models with equal content are the same model to every caller.
namespace Quorlan::Testing {

struct MaterialContent {
    std::array<std::uint8_t, 4> color{};
    bool twoSided = false;
    std::optional<std::pair<TextureType, std::vector<char>>> texture;

    bool operator==(MaterialContent const& other) const {
        return color == other.color && twoSided == other.twoSided && texture == other.texture;
    }
    bool operator!=(MaterialContent const& other) const { return !(*this == other); }
};

struct InstanceContent {
    std::uint32_t kind = 0;
    std::vector<Vertex> points;                     ///< in the world: vertices, or ends of lines and centres of arcs
    std::vector<Vertex> directions;                 ///< in the world: normals, or axes and start directions of arcs
    std::vector<std::vector<std::uint32_t>> loops;  ///< outer loops, then per hole its face and its loop
    std::vector<std::pair<float, float>> uvs;
    std::vector<double> radii;  ///< of arcs, each with its sweep angle
    std::optional<MaterialContent> material;
    std::optional<std::string> layer;
};

struct EntityContent {
    _GUID guid{};
    std::wstring text;
    PlacementRecord placement;
    OwnerHistoryRecord history;
    OwnerPart owner;
    OwnerHistoryLinkRecord link;
    std::vector<InstanceContent> instances;
    std::vector<PropertyRecord> properties;
};

/// The entities that a GUID identifies, in the order of the model.
std::vector<EntityContent> ReadContent(IModelReader const& reader);

/// The same of a buffer. A buffer that does not open fails the test and reads as empty.
std::vector<EntityContent> ReadContent(std::vector<char> const& buffer);

/// Empty where both say the same, apart from the change action; else what differs. Positions may differ by 1e-5 of the
/// shape's size, or of 1 where that is smaller, and directions by 1e-5.
std::string Compare(EntityContent const& actual, EntityContent const& expected);

/// A GUID of its own for every number.
_GUID MakeGuid(std::uint32_t number);

/// Orders GUIDs, for maps.
struct GuidLess {
    bool operator()(_GUID const& a, _GUID const& b) const;
};

}  // namespace Quorlan::Testing
