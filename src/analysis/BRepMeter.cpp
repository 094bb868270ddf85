#include "analysis/BRepMeter.h"

#include <algorithm>

namespace Quorlan {
namespace {

/// [square units] a face whose Newell normal is shorter has no area
constexpr double kShortestNormal = 1e-7;

/// The direction of the longest edge of a loop; of equal ones the first.
Vertex ComputeLongestEdgeDirection(Vertex const* corners, std::size_t count) {
    Vertex longest;
    double longestLength = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Vertex const edge = corners[i + 1 == count ? 0 : i + 1] - corners[i];
        double const length = Length(edge);
        if (length > longestLength) {
            longest = edge;
            longestLength = length;
        }
    }
    return longest / longestLength;
}

double ComputeLoopArea(Vertex const* corners, std::size_t count, Vertex const& u, Vertex const& v) {
    double sum = 0;
    for (std::size_t i = 0, previous = count - 1; i < count; previous = i++) {
        Vertex const& p = corners[previous];
        Vertex const& q = corners[i];
        sum += Dot(u, p) * Dot(v, q) - Dot(v, p) * Dot(u, q);
    }
    return 0.5 * sum;
}

/// The signed areas of all loops in the plane of the outer loop, added up as they come.
double ComputeFaceArea(FaceLoops const& face) {
    Vertex const* const corners = face.corners.data();
    std::size_t const outerCount = face.GetSize(0);
    Vertex const normal = ComputeNewellNormal(corners, outerCount);
    double const length = Length(normal);
    if (length < kShortestNormal) return 0;

    Vertex const u = ComputeLongestEdgeDirection(corners, outerCount);
    Vertex const v = Cross(normal / length, u);
    double area = 0;
    for (std::size_t loop = 0; loop < face.ends.size(); ++loop) {
        area += ComputeLoopArea(corners + face.GetBegin(loop), face.GetSize(loop), u, v);
    }
    return area;
}

/// Volume and first moment of the tetrahedra between the triangles of a surface and the first corner of the first.
class TetrahedronSum {
public:
    void Add(Vertex const& p0, Vertex const& p1, Vertex const& p2) {
        if (isEmpty_) apex_ = p0;
        isEmpty_ = false;
        double const volume = Dot(p0 - apex_, Cross(p1 - apex_, p2 - apex_)) / 6;
        volume_ += volume;
        moment_ = moment_ + (apex_ + p0 + p1 + p2) * 0.25 * volume;
    }

    double GetVolume() const { return volume_; }
    Vertex ComputeCentroid() const { return isEmpty_ ? Vertex() : moment_ / volume_; }

private:
    bool isEmpty_ = true;
    Vertex apex_;
    double volume_ = 0;
    Vertex moment_;
};

}  // namespace

BRepQuantities BRepMeter::Measure(BRepView const& brep) {
    positions_.resize(brep.vertexCount);
    for (std::uint32_t i = 0; i < brep.vertexCount; ++i) positions_[i] = ToVertex(brep.GetPosition(i));
    ReadHoleOrder(brep);

    double area = 0;
    TetrahedronSum sum;
    auto hole = holesByFace_.begin();
    for (std::uint32_t f = 0; f < CountOf(brep.faces); ++f) {
        face_.corners.clear();
        face_.ends.clear();
        bool const hasOuterLoop = AppendLoop(brep.faces->Get(f)->outerLoop());
        for (; hole != holesByFace_.end() && hole->first == f; ++hole) {
            if (hasOuterLoop) AppendLoop(brep.holes->Get(hole->second)->innerLoop());
        }
        if (!hasOuterLoop) continue;
        area += ComputeFaceArea(face_);
        auto const& triangles = triangulator_.Triangulate(face_);
        for (std::size_t t = 0; t < triangles.size(); t += 3) {
            sum.Add(face_.corners[triangles[t]], face_.corners[triangles[t + 1]], face_.corners[triangles[t + 2]]);
        }
    }
    return {area, sum.GetVolume(), sum.ComputeCentroid()};
}

/// Holes by ascending face, those of one face in stored order.
void BRepMeter::ReadHoleOrder(BRepView const& brep) {
    holesByFace_.clear();
    for (std::uint32_t h = 0; h < CountOf(brep.holes); ++h) holesByFace_.emplace_back(brep.holes->Get(h)->face(), h);
    std::sort(holesByFace_.begin(), holesByFace_.end());
}

/// Appends the corners of a loop. RETURNS false, with nothing appended, if it is absent, empty or leads nowhere.
bool BRepMeter::AppendLoop(flatbuffers::Vector<std::uint16_t> const* loop) {
    if (CountOf(loop) == 0) return false;
    std::size_t const begin = face_.corners.size();
    for (std::uint16_t const index : *loop) {
        if (index >= positions_.size()) {
            face_.corners.resize(begin);
            return false;
        }
        face_.corners.push_back(positions_[index]);
    }
    face_.ends.push_back(face_.corners.size());
    return true;
}

}  // namespace Quorlan
