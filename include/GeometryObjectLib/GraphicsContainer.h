#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <vector>

namespace GeometryObjectLib {

/// A straight segment.
struct LineSegment {
    Vertex start;
    Vertex end;
};

/// A circular arc that starts at center + radius * startDirection and runs counter-clockwise about `axis`.
struct ArcSegment {
    Vertex center;
    Vertex axis;            ///< unit normal of the arc's plane
    Vertex startDirection;  ///< unit direction from the centre to the first point, perpendicular to `axis`
    double radius = 0;
    double sweepAngle = 0;  ///< [rad]
};

/// Line graphics of one geometry definition: annotations and outlines.
struct GraphicsContainer {
    std::vector<LineSegment> lines;
    std::vector<ArcSegment> arcs;
};

}  // namespace GeometryObjectLib
