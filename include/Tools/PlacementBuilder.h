#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/Matrix4.h>
#include <Tools/Export.h>

#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::Matrix4;

/// One world matrix per geometry instance of a model, for renderers that draw a shared shape once per instance.
///
/// Matrix i maps the definition coordinates of instance i to the buffer's frame or, where a transform is given, to the
/// caller's: transform * entity placement * instance placement. Everything is in double precision; the axes of a
/// placement are made orthonormal. Geometry definitions are not looked at.
///
///     Quorlan::Tools::PlacementBuilder builder;
///     if (!builder.Build(buffer.data())) return;
///     std::vector<Matrix4> worldFromDefinition = std::move(builder.getPlacements());
///
/// COST: one pass over the instances; 128 bytes per instance.
class QUORLAN_TOOLS_API PlacementBuilder {
public:
    /// REQUIRES: the bytes are a trusted model buffer if they carry its identifier; they are not kept after the call.
    /// RETURNS false, with the earlier matrices kept, if it is no model buffer. A model without instances gives true
    /// and no matrices.
    bool Build(void const* buffer);

    /// The same with the matrix of `transform` multiplied from the left.
    bool Build(void const* buffer, AffineTransform const& transform);

    /// Valid until the next `Build`; empty before the first. The matrices may be changed or moved out.
    std::vector<Matrix4>& getPlacements() { return placements_; }
    std::vector<Matrix4> const& getPlacements() const { return placements_; }

private:
    std::vector<Matrix4> placements_;
};

}  // namespace Quorlan::Tools
