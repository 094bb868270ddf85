#pragma once

#include "analysis/PlanarTriangulator.h"
#include "analysis/SmallFaces.h"
#include "geometry/Avx2.h"
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
    /// Without AVX2 the results are the same; tests ask for both.
    explicit BRepMeter(bool usesAvx2 = HasAvx2()) : usesAvx2_(usesAvx2) {}

    BRepQuantities Measure(BRepView const& brep);

private:
    class Sums;

    void ReadHoleOrder(BRepView const& brep);
    void AddSmallFaces(BRepView const& brep, SmallFaces const& faces, Sums& sums);
    bool MeasureFaces(BRepView const& brep, SmallFaces const& faces, Vertex const& apex,
                      SmallFaceMeasures& measures) const;
    void AddFace(BRepView const& brep, std::uint32_t face, std::size_t holesBegin, std::size_t holesEnd, Sums& sums);
    bool AddConvexFace(BRepView const& brep, std::uint32_t face, Sums& sums);
    bool AppendLoop(BRepView const& brep, flatbuffers::Vector<std::uint16_t> const* loop);

    bool usesAvx2_;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> holesByFace_;  ///< (face, hole), ascending
    FaceLoops face_;
    PlanarTriangulator triangulator_;
    std::vector<double> scratch_;
};

}  // namespace Quorlan
