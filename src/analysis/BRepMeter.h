#pragma once

#include "analysis/PlanarTriangulator.h"
#include "model/ModelView.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Quorlan {

/// What one shape measures, in its own coordinates.
struct BRepQuantities {
    double area = 0;
    double volume = 0;  ///< positive for a closed surface whose faces run counter-clockwise seen from outside
    Vertex centroid;    ///< not a number for a shape with triangles but no volume; the origin for one without
};

/// Measures faceted BReps, one after the other in the same memory. Loops with indices beyond the vertices are ignored.
class BRepMeter {
public:
    BRepQuantities Measure(BRepView const& brep);

private:
    class Sums;
    struct SmallFaces;

    void ReadHoleOrder(BRepView const& brep);
    void AddSmallFaces(BRepView const& brep, SmallFaces& faces, Sums& sums);
    template <std::size_t CornerCount>
    bool AddInLanes(BRepView const& brep, SmallFaces const& faces, Sums& sums);
    void AddFace(BRepView const& brep, std::uint32_t face, std::size_t holesBegin, std::size_t holesEnd, Sums& sums);
    bool AppendLoop(BRepView const& brep, flatbuffers::Vector<std::uint16_t> const* loop);

    std::vector<std::pair<std::uint32_t, std::uint32_t>> holesByFace_;  ///< (face, hole), ascending
    FaceLoops face_;
    PlanarTriangulator triangulator_;
};

}  // namespace Quorlan
