#pragma once

#include <optional>

#include "shape/Shape.h"

/// Faces that lie in one plane, and the polygons that they make.
namespace QuorlanProgram::Import {

using Indices = std::vector<std::uint32_t>;

/// The faces of one plane that hang together, and the plane.
struct PlaneGroup {
    std::vector<std::size_t> faces;
    Vertex origin;
    Vertex normal;
    Vertex u;  ///< with v, axes of the plane
    Vertex v;
};

/// Indices into the vertices of a shape.
struct Polygon {
    Indices outer;
    std::vector<Indices> holes;
};

/// Groups the faces of a shape without holes, each group grown from its largest face over shared edges.
///
/// A kernel that cuts an opening which ends in a face may leave a skin over it: the face as if it were not cut, and on
/// it, looking inward, the end of the opening. A group that lies on another one in this way is added to it.
std::vector<PlaneGroup> FindPlaneGroups(FacetedBRep const& shape);

/// The polygons of a group, edges that two of its faces walk in both directions being inside; several only where none
/// has holes, none where all faces cancel. RETURNS nothing if the outline is not made of simple loops.
std::optional<std::vector<Polygon>> TraceOutline(FacetedBRep const& shape, PlaneGroup const& group);

/// Twice the area times the unit normal.
Vertex GetAreaVector(FacetedBRep const& shape, Indices const& loop);

}  // namespace QuorlanProgram::Import
