#pragma once

#include <GeometryObjectLib/GraphicsContainer.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "shape/Chords.h"
#include "shape/Shape.h"
#include "step/IndexedCurve.h"

class IfcRepresentationItem;

namespace QuorlanProgram::Import {

using GeometryObjectLib::GraphicsContainer;

/// Reads curves as lines and arcs: polylines, circles and arcs of circles, composite curves, indexed curves, sets of
/// curves and the outlines of fill areas. Ellipses, and what else the geometry kernel knows, become lines.
class CurveReader {
public:
    using Arcs = std::unordered_map<std::uint32_t, std::vector<CurveSegment>>;
    /// The points of a curve that is none of the kinds above, in metres; none where it is not understood.
    using Fallback = std::function<Loop(std::shared_ptr<IfcRepresentationItem> const&)>;

    /// `arcs` has the segments of the curves whose arcs the file's repaired text no longer has, by their ids; it must
    /// outlive this object.
    CurveReader(double metresPerUnit, double radiansPerUnit, Chords const& chords, Arcs const& arcs, Fallback fallback)
        : metresPerUnit_(metresPerUnit),
          radiansPerUnit_(radiansPerUnit),
          chords_(chords),
          arcs_(arcs),
          fallback_(std::move(fallback)) {}

    /// Appends what `item` draws, moved by `placement`, in metres.
    /// RETURNS false if it has a part that is not understood; the others are appended.
    bool Read(GraphicsContainer& out, std::shared_ptr<IfcRepresentationItem> const& item,
              Matrix4 const& placement) const;

private:
    double metresPerUnit_;
    double radiansPerUnit_;
    Chords chords_;
    Arcs const& arcs_;
    Fallback fallback_;
};

/// The arc over three points, or the line where they lie on one.
void AddArc(GraphicsContainer& out, Vertex const& start, Vertex const& middle, Vertex const& end);

}  // namespace QuorlanProgram::Import
