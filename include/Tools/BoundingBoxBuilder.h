#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <Quorlan/IModelReader.h>
#include <Tools/Export.h>

#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::AxisAlignedBox3;

/// One world box per geometry instance of a model, for culling, zoom-to-fit and spatial indexing.
///
/// Box i belongs to instance i, in the buffer's unit and, where a transform is given, in the caller's frame. It is the
/// box of the transformed definition box, not the tightest box of the shape (Arvo, "Transforming Axis-Aligned Bounding
/// Boxes", Graphics Gems, 1990). Axes and local bounds count in single precision, positions in double precision.
///
///     Quorlan::Tools::BoundingBoxBuilder builder;
///     if (!builder.Build(buffer.data())) return;
///     AxisAlignedBox3 const& box = builder.getBoundingBoxes()[instance];
///
/// COST: one pass over the instances; 48 bytes per instance.
class QUORLAN_TOOLS_API BoundingBoxBuilder {
public:
    /// Computes all boxes from a model buffer, each moved by `transform`.
    /// REQUIRES: the bytes are a trusted model buffer if they carry its identifier; they are not kept after the call.
    /// RETURNS false, with the earlier boxes kept, if it is no model buffer or has no instances.
    bool Build(AffineTransform const& transform, void const* buffer);

    /// The same with the identity.
    bool Build(void const* buffer);

    /// Computes all boxes of an opened model, each moved by `transform`. Its placements and bounds are taken as the
    /// reader gives them, in double precision, and narrowed, so that boxes may differ in their last bits from those of
    /// the buffer itself. RETURNS false, with the earlier boxes kept, if the model has no instances.
    bool Build(AffineTransform const& transform, IModelReader const& reader);

    /// The same with the identity.
    bool Build(IModelReader const& reader);

    /// Valid until the next `Build`; empty before the first.
    std::vector<AxisAlignedBox3> const& getBoundingBoxes() const { return boundingBoxes_; }

private:
    std::vector<AxisAlignedBox3> boundingBoxes_;
};

}  // namespace Quorlan::Tools
