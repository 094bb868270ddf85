#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/Vertex.h>

#include <array>
#include <cstdint>
#include <string>
#include <variant>

/// The records and enumerations of the model library.
namespace Quorlan {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::Vertex;

/// Position of an entity in the model's entity records.
enum class EntityIndex_t : std::uint32_t {};

/// Position of a geometry definition in the model.
enum class GeometryDefinitionIndex_t : std::uint32_t {};

/// "None": of every index type, of references, and of the material and the layer of an instance.
constexpr std::uint32_t kInvalidIndex = 0xFFFFFFFF;

/// What happened to an entity, numbered as IFC numbers it. Larger values may occur in data and are carried through.
enum class OwnerHistoryChangeAction : std::uint32_t { NOCHANGE = 0, MODIFIED = 1, ADDED = 2, DELETED = 3 };

enum class TextureType : std::uint32_t { UNKNOWN = 0, PNG = 1, JPEG = 2 };

/// The head of an entity record and the entity's placement.
struct EntityIdentifier {
    std::uint32_t kind = 0;           ///< 0 GUID, 1 and 3 identifier text, 2 geometric key, 4 and above none
    std::uint32_t reference = 0;      ///< into what `kind` selects
    std::uint32_t textReference = 0;  ///< of the entity's wide text; kInvalidIndex for none
    std::uint32_t reserved = 0;
    AffineTransform placement;
};

/// Ties an entity to an owner history.
struct OwnerHistoryLink {
    EntityIndex_t entity{};
    std::uint32_t reference = 0;
};

/// The part of an owner history that says what happened to the entity, and when.
struct OwnerHistoryRecord {
    std::uint32_t state = 0;
    OwnerHistoryChangeAction changeAction{};
    std::int64_t creationDate = 0;      ///< [s] since 1970-01-01 UTC
    std::int64_t lastModifiedDate = 0;  ///< [s] since 1970-01-01 UTC
};

/// The part of an owner history that says whose the entity is. Texts are UTF-8.
struct OwnerPart {
    std::string user;
    std::string organization;
    std::string application;
};

/// What an owner history itself adds to the part and the record that it joins. Texts are UTF-8.
struct OwnerHistoryLinkRecord {
    std::string lastModifyingUser;
    std::string lastModifyingApplication;
};

/// One property of an entity: the set it belongs to, its name and its value. Texts are UTF-8.
struct PropertyRecord {
    std::string set;
    std::string name;
    std::variant<std::string, double, std::int64_t, bool> value;
};

/// Eleven values that identify an entity by where and what it is, in this order.
struct GeometricKey {
    std::array<double, 3> position{};
    std::array<float, 8> shape{};
};

/// One placed shape. The indices lead into the model's placements, entities, definitions, materials and layers.
struct InstanceRecord {
    std::uint32_t placementIndex = 0;
    std::uint32_t entityIndex = 0;
    std::uint32_t definitionIndex = 0;
    std::uint32_t materialIndex = 0;  ///< kInvalidIndex for none
    std::uint32_t layerIndex = 0;     ///< kInvalidIndex for none
};

/// The bounding box of a geometry definition, in definition coordinates.
struct DefinitionBounds {
    Vertex min;
    Vertex max;
};

struct MaterialRecord {
    std::array<std::uint8_t, 4> color{};  ///< R, G, B, A; A is 255 for opaque
    std::int32_t textureIndex = -1;       ///< -1 for none
    bool twoSided = false;                ///< both sides of a face can be seen and picked
};

/// A placement as the buffer stores it: an origin in double precision, two directions in single precision.
///
/// The third axis is their cross product. Copying this record copies a placement exactly; going through
/// `AffineTransform` normalises the axes in double precision and rounds them again.
struct PlacementRecord {
    std::array<double, 3> origin{};
    std::array<float, 3> xAxis{1, 0, 0};
    std::array<float, 3> yAxis{0, 1, 0};
};

}  // namespace Quorlan
