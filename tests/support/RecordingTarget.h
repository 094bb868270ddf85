#pragma once

#include <Quorlan/IGeometryDefinitionBuilder.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TestSupport {

/// Keeps every definition it is handed and numbers them from 100 on, so that an index is never mistaken for a count.
struct RecordingTarget : Quorlan::IGeometryDefinitionBuilder {
    using Index = Quorlan::GeometryDefinitionIndex_t;
    using UVs = std::vector<std::pair<float, float>>;
    using Normals = std::vector<Quorlan::Vertex>;

    static constexpr std::uint32_t kFirstIndex = 100;

    std::vector<Quorlan::FacetedBRep> shapes;
    std::vector<std::pair<Quorlan::FacetedBRep, Normals>> shapesWithNormals;
    std::vector<std::pair<Quorlan::FacetedBRep, UVs>> shapesWithUVs;
    std::vector<Quorlan::GraphicsContainer> graphics;
    bool refuses = false;  ///< answers with the invalid index

    std::size_t GetCount() const {
        return shapes.size() + shapesWithNormals.size() + shapesWithUVs.size() + graphics.size();
    }

    Index AddBRepWithNormals(std::pair<Quorlan::FacetedBRep const*, Normals const*> shape) override {
        shapesWithNormals.emplace_back(*shape.first, *shape.second);
        return MakeIndex();
    }
    Index AddBRepWithUVs(std::pair<Quorlan::FacetedBRep const*, UVs const*> shape) override {
        shapesWithUVs.emplace_back(*shape.first, *shape.second);
        return MakeIndex();
    }
    Index AddGraphicsContainer(Quorlan::GraphicsContainer const& container) override {
        graphics.push_back(container);
        return MakeIndex();
    }
    Index AddBRep(Quorlan::FacetedBRep const& shape) override {
        shapes.push_back(shape);
        return MakeIndex();
    }

private:
    Index MakeIndex() const {
        return Index{refuses ? Quorlan::kInvalidIndex : kFirstIndex + static_cast<std::uint32_t>(GetCount()) - 1};
    }
};

}  // namespace TestSupport
