#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/GraphicsContainer.h>
#include <Quorlan/ModelTypes.h>
#include <Tools/Export.h>

#include <utility>
#include <vector>

namespace Quorlan {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;

/// Receives the geometry definitions of a model that is being written.
///
/// Every operation returns the index of the definition it wrote. The target of a model buffer narrows positions to
/// single precision and refuses, with the index `kInvalidIndex`, what a buffer cannot hold: a shape of more than 65,536
/// vertices, a loop index beyond the vertices, a hole of a face beyond 65,535, or a normal or texture coordinate list
/// whose length is not that of the vertices.
class QUORLAN_TOOLS_API IGeometryDefinitionBuilder {
public:
    virtual ~IGeometryDefinitionBuilder() = default;

    /// A shape with one unit normal per vertex, in the order of the vertices (kind 7).
    virtual GeometryDefinitionIndex_t AddBRepWithNormals(
        std::pair<FacetedBRep const*, std::vector<Vertex> const*> shape) = 0;

    /// A shape with one texture coordinate pair (u, v) per vertex, in the order of the vertices (kind 6).
    virtual GeometryDefinitionIndex_t AddBRepWithUVs(
        std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*> shape) = 0;

    /// Line graphics (kind 5).
    virtual GeometryDefinitionIndex_t AddGraphicsContainer(GraphicsContainer const& graphics) = 0;

    /// A plain shape (kind 1).
    virtual GeometryDefinitionIndex_t AddBRep(FacetedBRep const& shape) = 0;
};

}  // namespace Quorlan
