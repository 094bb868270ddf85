#pragma once

#include <GeometryObjectLib/Vertex.h>
#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace QuorlanProgram {

/// A geometry definition in the form that comparing takes: what moves with a placement, and what does not.
struct PlainShape {
    std::uint32_t kind = 0;
    std::vector<GeometryObjectLib::Vertex> points;      ///< vertices; ends of lines; centre, start and pole of arcs
    std::vector<GeometryObjectLib::Vertex> directions;  ///< normals
    std::vector<double> scalars;                        ///< texture coordinates; sweep angles
    std::vector<std::uint32_t> structure;               ///< faces, loops and their indices, each with its count
    double size = 0;                                    ///< the diagonal of the box around the points
};

PlainShape ReadShape(Quorlan::IGeometryReader const& geometry, std::uint32_t definition);

/// Shapes and materials of several models, each distinct one held once: those with the same number are the same to the
/// bit.
class ShapeStore {
public:
    static constexpr std::uint32_t kNoShape = 0xFFFFFFFF;

    /// The number of each definition; `kNoShape` for one that no copy of a model keeps: no shape, or fewer than 3
    /// vertices, or line graphics without lines.
    std::vector<std::uint32_t> AddShapes(Quorlan::IGeometryReader const& geometry);

    /// The number of each material.
    std::vector<std::uint32_t> AddMaterials(Quorlan::IGeometryReader const& geometry);

    PlainShape const& GetShape(std::uint32_t shape) const { return shapes_[shape]; }
    Quorlan::MaterialRecord const& GetMaterial(std::uint32_t material) const { return materials_[material]; }

private:
    std::uint32_t AddShape(PlainShape shape);

    std::vector<PlainShape> shapes_;
    std::unordered_multimap<std::uint64_t, std::uint32_t> shapesByHash_;
    std::vector<Quorlan::MaterialRecord> materials_;
    std::map<std::tuple<std::array<std::uint8_t, 4>, std::int32_t, bool>, std::uint32_t> materialIndex_;
    std::map<std::pair<std::uint32_t, std::vector<char>>, std::int32_t> textureIndex_;
};

}  // namespace QuorlanProgram
