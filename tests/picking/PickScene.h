#pragma once

#include "support/RawModel.h"

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <cstdint>
#include <random>
#include <vector>

/// Models for the tests of the pickers, with trees and world matrices made without the library's own tools.
namespace Quorlan::Testing {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::QuantizedAxisAlignedBoxTree;
using GeometryObjectLib::Vertex;

/// The matrix of a placement, each axis normalised by itself.
Matrix4 ToMatrix(PlacementRecord const& placement);

/// Where an instance of the model stands in the model's space.
Matrix4 GetModelFromLocal(RawModel const& model, std::uint32_t instance);

/// The tree over the boxes, its items their indices. Ranges are halved in the middle along the axis on which their
/// centres spread most.
QuantizedAxisAlignedBoxTree MakeTree(std::vector<AxisAlignedBox3> const& boxes);

/// The tree over the instances' boxes, from the eight corners of each definition's bounds.
QuantizedAxisAlignedBoxTree MakeTree(RawModel const& model);

/// The items of a tree in the order of its leaves.
std::vector<unsigned> GetLeafOrder(QuantizedAxisAlignedBoxTree const& tree);

/// A model of one entity and one material, to be filled shape by shape.
class PickScene {
public:
    RawModel model;

    PickScene() { model.AddEntity(); }

    /// Adds the shape as a definition of `kind` (1, 6 or 7) and returns its index.
    std::uint32_t AddShape(FacetedBRep const& shape, std::uint8_t kind = 1);
    std::uint32_t AddGraphics(RawGraphics const& graphics, Vector3f const& lo, Vector3f const& hi);
};

/// Boxes, prisms and plates with holes of all three kinds and lines and arcs, placed at random with rotated entities
/// and instances in a cube of `size`; materials of both sides, layers "a" to "d".
RawModel MakeRandomModel(std::uint32_t seed, std::uint32_t instanceCount, double size);

}  // namespace Quorlan::Testing
