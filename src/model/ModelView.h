#pragma once

#include "geometry/Frame.h"

#include <model_generated.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

/// A thin view of a model buffer for the tools: pointers into the caller's bytes, nothing checked beyond presence.
namespace Quorlan {

using GeometryObjectLib::DoubleFrame;
using GeometryObjectLib::Frame;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;

/// Bytes 4 to 7 hold the identifier of the format. False for null, which is what an empty vector's data may be.
/// REQUIRES: any other buffer has at least 8 bytes.
inline bool HasModelIdentifier(void const* buffer) {
    return buffer != nullptr && std::memcmp(static_cast<char const*>(buffer) + 4, Schema::ModelIdentifier(), 4) == 0;
}

/// The same; false also for a buffer too short to hold an identifier.
inline bool HasModelIdentifier(std::vector<char> const& buffer) {
    return buffer.size() >= 8 && HasModelIdentifier(buffer.data());
}

/// The geometry table of a buffer whose identifier the caller has tested or does not ask about; null where it is
/// absent or the buffer is too short to hold a root.
inline Schema::Geometry const* FindGeometry(std::vector<char> const& buffer) {
    if (buffer.size() < 8) return nullptr;
    return Schema::GetModel(buffer.data())->geometry();
}

inline Vector3f ToVector3f(Schema::Vector3 const& v) { return {v.x(), v.y(), v.z()}; }

inline Frame ToFrame(Schema::Placement const& placement) {
    return Frame::FromAxes({placement.x(), placement.y(), placement.z()}, ToVector3f(placement.xAxis()),
                           ToVector3f(placement.yAxis()));
}

inline DoubleFrame ToDoubleFrame(Schema::Placement const& placement) {
    return DoubleFrame::FromAxes({placement.x(), placement.y(), placement.z()}, ToVector3f(placement.xAxis()),
                                 ToVector3f(placement.yAxis()));
}

/// The number of elements of a vector that may be absent.
template <class Vector>
std::uint32_t CountOf(Vector const* vector) {
    return vector == nullptr ? 0 : vector->size();
}

/// The tables that every tool over a whole model starts from.
struct ModelView {
    flatbuffers::Vector<Schema::EntityRecord const*> const* records;
    Schema::Geometry const* geometry;

    /// The opening sequence of the tools: identifier, root, entities, their records, geometry. Empty at the first that
    /// is missing. The buffer is trusted once its identifier matches.
    static std::optional<ModelView> Open(void const* buffer) {
        if (!HasModelIdentifier(buffer)) return std::nullopt;
        auto const* const root = Schema::GetModel(buffer);
        auto const* const entities = root->entities();
        if (entities == nullptr || entities->records() == nullptr || root->geometry() == nullptr) return std::nullopt;
        return ModelView{entities->records(), root->geometry()};
    }

    /// The same for a buffer that is not asked for its identifier. Empty also where there can be no instances.
    static std::optional<ModelView> OpenTrusted(std::vector<char> const& buffer) {
        auto const* const geometry = FindGeometry(buffer);
        if (geometry == nullptr || geometry->instances() == nullptr) return std::nullopt;
        auto const* const entities = Schema::GetModel(buffer.data())->entities();
        if (entities == nullptr || entities->records() == nullptr) return std::nullopt;
        return ModelView{entities->records(), geometry};
    }

    std::uint32_t GetInstanceCount() const { return CountOf(geometry->instances()); }
};

/// One faceted BRep of a buffer. The three stored forms differ only in their vertex stride.
struct BRepView {
    void const* table = nullptr;                                                         ///< of one of the three forms
    flatbuffers::Vector<flatbuffers::Offset<Schema::FaceTable>> const* faces = nullptr;  ///< may be absent
    flatbuffers::Vector<flatbuffers::Offset<Schema::HoleTable>> const* holes = nullptr;  ///< may be absent
    std::uint8_t const* vertices = nullptr;                                              ///< absent: null
    std::uint32_t vertexCount = 0;
    std::uint32_t vertexStride = 0;  ///< [bytes]

    BRepView() = default;

    template <class Table>
    explicit BRepView(Table const& brep) : table(&brep), faces(brep.faces()), holes(brep.holes()) {
        if (brep.vertices() == nullptr) return;
        vertices = brep.vertices()->Data();
        vertexCount = brep.vertices()->size();
        vertexStride = static_cast<std::uint32_t>(sizeof(*brep.vertices()->Get(0)));
    }

    /// REQUIRES: `index` is below the vertex count.
    Vector3f GetPosition(std::uint32_t index) const {
        Vector3f position;
        std::memcpy(&position, vertices + std::size_t{index} * vertexStride, sizeof(position));
        return position;
    }
};

/// The BRep at `index` of one of the three vectors; empty where the vector or the vertices are absent.
template <class Vector>
std::optional<BRepView> FindBRep(Vector const* vector, std::uint32_t index) {
    if (vector == nullptr) return std::nullopt;
    auto const* const table = vector->Get(index);
    if (table == nullptr || table->vertices() == nullptr) return std::nullopt;
    return BRepView(*table);
}

/// Representation kinds of geometry definitions.
enum DefinitionKind : std::uint8_t {
    kFacetedBRep = 1,
    kGraphicsContainer = 5,
    kBRepWithUV = 6,
    kBRepWithNormal = 7,
};

/// The BRep that a definition names; empty for kinds without one and where it is absent.
inline std::optional<BRepView> FindBRep(Schema::Geometry const& geometry, std::uint8_t kind, std::uint32_t kindIndex) {
    switch (kind) {
        case kFacetedBRep: return FindBRep(geometry.facetedBReps(), kindIndex);
        case kBRepWithUV: return FindBRep(geometry.brepsWithUV(), kindIndex);
        case kBRepWithNormal: return FindBRep(geometry.brepsWithNormal(), kindIndex);
        default: return std::nullopt;
    }
}

}  // namespace Quorlan
