#pragma once

#include <Tools/Export.h>

#include <array>
#include <vector>

namespace Quorlan::Tools {

/// Line graphics of one geometry definition, annotations and outlines, with the numbers of the buffer as they stand.
struct GraphicsContainer {
    struct line_s {
        std::array<float, 3> start;
        std::array<float, 3> end;
    };

    /// A circular arc from center + radius * startDirection, counter-clockwise about `axis`.
    struct arc_s {
        std::array<float, 3> center;
        std::array<float, 3> axis;            ///< unit normal of the arc's plane
        std::array<float, 3> startDirection;  ///< unit direction from the centre to the first point
        float radius;
        float sweepAngle;  ///< [rad]
    };

    std::vector<line_s> lines;
    std::vector<arc_s> arcs;
};

/// Access to the line graphics of a model buffer, one container at a time.
///
///     Quorlan::Tools::GraphicsContainerBuilder containers;
///     Quorlan::Tools::GraphicsContainer container;  // one record serves the whole loop
///     if (!containers.Build(buffer.data())) return;
///     for (unsigned i = 0; i < containers.GetCount(); ++i) {
///         if (containers.GetGraphicsContainer(i, container)) Draw(container);
///     }
///
/// Nothing is copied by `Build`: the tool points into the buffer, which must outlive every later call.
class QUORLAN_TOOLS_API GraphicsContainerBuilder {
public:
    /// Finds the containers of a model buffer, in constant time.
    /// REQUIRES: the bytes are a trusted model buffer if they carry its identifier.
    /// RETURNS false, with the earlier containers kept, if it is no model buffer or has no vector of containers.
    bool Build(void const* buffer);

    /// 0 before the first `Build` that succeeded.
    unsigned int GetCount() const { return count_; }

    /// Decodes container `index` into `out`, whose memory is used again.
    /// RETURNS false, with `out` unchanged, if there is no such container or it has no lines; false also, with its
    /// lines delivered and `out.arcs` unchanged, if it has no arcs. An empty vector counts as present.
    bool GetGraphicsContainer(unsigned int index, GraphicsContainer& out) const;

private:
    void const* containers_ = nullptr;  ///< the vector, within the caller's buffer
    unsigned int count_ = 0;
};

}  // namespace Quorlan::Tools
