#pragma once

#include <GeometryObjectLib/Matrix4.h>
#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

/// A thick line segment in world coordinates.
struct LodLine {
    Vertex start;
    Vertex end;
    double radius = 0;                ///< in definition units: placements move the ends and leave the radius
    std::uint32_t materialIndex = 0;  ///< as the instance has it
};

/// Gives every instance of a model the thick line that stands for it at the coarsest level of detail.
///
/// There are two candidates: the line through the middle of the definition's box along its longest edge (z before y
/// before x among equal ones), with half the box's diagonal across it as radius; and, for BReps, the principal axis of
/// `LodLineBRepBuilder`. The one whose cylinder has the smaller volume in world coordinates is taken; of equal ones,
/// the box's.
class QUORLAN_TOOLS_API LodLineBuilder {
public:
    /// Computes the lines of all instances, placed as the model places them.
    /// REQUIRES: `buffer` is a trusted model buffer; it is not kept after the call.
    /// RETURNS false if it is no model buffer, has no instances vector, or an instance without a definition.
    bool Build(void const* buffer);

    /// The same with placements of the caller's, one per instance: `placements[i]` maps definition coordinates of
    /// instance i to world coordinates. Lines of an earlier call that were not taken away are overwritten one by one;
    /// after a failure those behind the failing instance are still there.
    bool Build(void const* buffer, std::vector<Matrix4> const& placements);

    /// Moves the lines out, one per instance, in instance order; the builder has none afterwards.
    std::vector<LodLine> GetLodLines() { return std::exchange(lines_, {}); }

private:
    std::vector<LodLine> lines_;
};

}  // namespace Quorlan::Tools
