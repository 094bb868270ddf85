#include "analysis/BRepMeter.h"

#include "analysis/ConvexFaceAvx2.h"
#include "analysis/SmallFaceLanes.h"
#include "analysis/SmallFacesAvx2.h"

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

/// Whether a loop has `count` corners, three or four, all of which exist.
bool IsSmall(BRepView const& brep, flatbuffers::Vector<std::uint16_t> const* loop, std::uint32_t count) {
    if (CountOf(loop) != count) return false;
    std::uint16_t const* const indices = loop->data();
    std::uint32_t const highest = std::max({indices[0], indices[1], indices[2], indices[count - 1]});
    return highest < brep.vertexCount;
}

/// Collects faces from `begin` on that are small and alike, none if the first is not or `end` is `begin`.
void CollectSmallFaces(BRepView const& brep, std::uint32_t begin, std::uint32_t end, SmallFaces& faces) {
    faces.size = 0;
    faces.firstFace = begin;
    std::uint32_t const cornerCount = CountOf(brep.faces->Get(begin)->outerLoop());
    if (cornerCount != 3 && cornerCount != 4) return;
    faces.cornerCount = cornerCount;
    std::size_t size = 0;
    std::uint32_t const most = std::min<std::uint32_t>(end - begin, kSmallFaceCount);
    for (; size < most; ++size) {
        auto const* const loop = brep.faces->Get(begin + static_cast<std::uint32_t>(size))->outerLoop();
        if (!IsSmall(brep, loop, cornerCount)) break;
        faces.loops[size] = loop->data();
    }
    faces.size = size;
    for (; size % 4 != 0; ++size) faces.loops[size] = faces.loops[size - 1];
}

template <std::size_t CornerCount>
bool MeasureInLanes(BRepView const& brep, SmallFaces const& faces, std::size_t at, Vertex const& apexOfAll,
                    SmallFaceMeasures& measures) {
    SmallFaceLanes<CornerCount> const lanes(brep, faces.loops + at);
    if constexpr (CornerCount == 4) {
        if (!lanes.AreConvex()) return false;
    }
    if (!lanes.CanCompareSquares()) return false;

    Store(lanes.ComputeAreas(kShortestNormal), measures.areas + at);
    auto const apex = Broadcast(apexOfAll);
    for (std::size_t t = 0; t < CornerCount - 2; ++t) {
        Double4 volumes(0.0);
        VectorLanes<Double4> moments;
        lanes.ComputeTetrahedra(apex, t + 1, volumes, moments);
        Store(volumes, measures.volumes[t] + at);
        Store(moments.x, measures.moments[t][0] + at);
        Store(moments.y, measures.moments[t][1] + at);
        Store(moments.z, measures.moments[t][2] + at);
    }
    return true;
}

}  // namespace

/// What is summed face by face: the area, and volume and first moment of the tetrahedra between the triangles of the
/// surface and the first corner of the first.
class BRepMeter::Sums {
public:
    void AddArea(double area) { area_ += area; }

    void AddTriangle(Vertex const& p0, Vertex const& p1, Vertex const& p2) {
        if (isEmpty_) apex_ = p0;
        isEmpty_ = false;
        double const volume = Dot(p0 - apex_, Cross(p1 - apex_, p2 - apex_)) / 6;
        AddTetrahedron(volume, (apex_ + p0 + p1 + p2) * 0.25 * volume);
    }

    /// REQUIRES: it was computed with the apex.
    void AddTetrahedron(double volume, Vertex const& moment) {
        volume_ += volume;
        moment_ = moment_ + moment;
    }

    /// The apex, which will be `p0` if no triangle was added yet.
    Vertex GetApex(Vertex const& p0) const { return isEmpty_ ? p0 : apex_; }
    void SetApex(Vertex const& apex) {
        isEmpty_ = false;
        apex_ = apex;
    }

    BRepQuantities GetQuantities() const { return {area_, volume_, isEmpty_ ? Vertex() : moment_ / volume_}; }

private:
    double area_ = 0;
    bool isEmpty_ = true;
    Vertex apex_;
    double volume_ = 0;
    Vertex moment_;
};

BRepQuantities BRepMeter::Measure(BRepView const& brep) {
    ReadHoleOrder(brep);
    Sums sums;
    SmallFaces small;
    std::uint32_t const faceCount = CountOf(brep.faces);
    std::size_t hole = 0;
    for (std::uint32_t f = 0; f < faceCount;) {
        std::uint32_t const nextWithHoles = hole == holesByFace_.size() ? faceCount : holesByFace_[hole].first;
        CollectSmallFaces(brep, f, std::min(nextWithHoles, faceCount), small);
        if (small.size != 0) {
            AddSmallFaces(brep, small, sums);
            f += static_cast<std::uint32_t>(small.size);
            continue;
        }
        std::size_t const holesBegin = hole;
        while (hole != holesByFace_.size() && holesByFace_[hole].first == f) ++hole;
        AddFace(brep, f++, holesBegin, hole, sums);
    }
    return sums.GetQuantities();
}

/// Adds the faces in their order.
void BRepMeter::AddSmallFaces(BRepView const& brep, SmallFaces const& faces, Sums& sums) {
    std::size_t const size = faces.size;
    SmallFaceMeasures measures;
    Vertex const apex = sums.GetApex(ToVertex(brep.GetPosition(faces.loops[0][0])));
    if (!MeasureFaces(brep, faces, apex, measures)) {
        for (std::uint32_t i = 0; i < size; ++i) AddFace(brep, faces.firstFace + i, 0, 0, sums);
        return;
    }
    sums.SetApex(apex);
    for (std::size_t i = 0; i < size; ++i) {
        sums.AddArea(measures.areas[i]);
        for (std::size_t t = 0; t < faces.cornerCount - 2; ++t) {
            auto const& moment = measures.moments[t];
            sums.AddTetrahedron(measures.volumes[t][i], {moment[0][i], moment[1][i], moment[2][i]});
        }
    }
}

/// RETURNS false where a quadrilateral needs its ears cut or lengths have to be compared by roots.
bool BRepMeter::MeasureFaces(BRepView const& brep, SmallFaces const& faces, Vertex const& apex,
                             SmallFaceMeasures& measures) const {
#if QUORLAN_HAS_AVX2
    if (usesAvx2_ && brep.vertexStride == kPositionSize) {
        return MeasureSmallFacesAvx2(brep.vertices, faces, {apex.x, apex.y, apex.z}, kShortestNormal, measures);
    }
#endif
    for (std::size_t at = 0; at < faces.size; at += 4) {
        bool const areMeasured = faces.cornerCount == 3 ? MeasureInLanes<3>(brep, faces, at, apex, measures)
                                                        : MeasureInLanes<4>(brep, faces, at, apex, measures);
        if (!areMeasured) return false;
    }
    return true;
}

/// Adds any face with the holes at these places of `holesByFace_`.
void BRepMeter::AddFace(BRepView const& brep, std::uint32_t face, std::size_t holesBegin, std::size_t holesEnd,
                        Sums& sums) {
    if (holesBegin == holesEnd && AddConvexFace(brep, face, sums)) return;
    face_.corners.clear();
    face_.ends.clear();
    if (!AppendLoop(brep, brep.faces->Get(face)->outerLoop())) return;
    for (std::size_t h = holesBegin; h < holesEnd; ++h) {
        AppendLoop(brep, brep.holes->Get(holesByFace_[h].second)->innerLoop());
    }
    sums.AddArea(ComputeFaceArea(face_));
    auto const& triangles = triangulator_.Triangulate(face_);
    for (std::size_t t = 0; t < triangles.size(); t += 3) {
        sums.AddTriangle(face_.corners[triangles[t]], face_.corners[triangles[t + 1]], face_.corners[triangles[t + 2]]);
    }
}

/// A shortcut for large faces without holes. RETURNS false, with nothing added, where it cannot be taken.
bool BRepMeter::AddConvexFace(BRepView const& brep, std::uint32_t face, Sums& sums) {
#if QUORLAN_HAS_AVX2
    auto const* const loop = brep.faces->Get(face)->outerLoop();
    std::size_t const size = CountOf(loop);
    if (!usesAvx2_ || size < 5) return false;
    if (*std::max_element(loop->data(), loop->data() + size) >= brep.vertexCount) return false;
    scratch_.resize(std::max(scratch_.size(), GetConvexFaceScratchSize(size)));
    Vertex const apex = sums.GetApex(ToVertex(brep.GetPosition(loop->Get(static_cast<std::uint32_t>(size - 2)))));
    ConvexFaceMeasures measures;
    if (!MeasureConvexFaceAvx2({brep.vertices, brep.vertexStride, loop->data(), size}, apex, kShortestNormal,
                               scratch_.data(), measures)) {
        return false;
    }
    sums.SetApex(apex);
    sums.AddArea(measures.area);
    auto const& moments = measures.moments;
    for (std::size_t t = 0; t + 2 < size; ++t) {
        sums.AddTetrahedron(measures.volumes[t], {moments[0][t], moments[1][t], moments[2][t]});
    }
    return true;
#else
    static_cast<void>(brep), static_cast<void>(face), static_cast<void>(sums);
    return false;
#endif
}

/// Holes by ascending face, those of one face in stored order.
void BRepMeter::ReadHoleOrder(BRepView const& brep) {
    holesByFace_.clear();
    for (std::uint32_t h = 0; h < CountOf(brep.holes); ++h) holesByFace_.emplace_back(brep.holes->Get(h)->face(), h);
    std::sort(holesByFace_.begin(), holesByFace_.end());
}

/// Appends the corners of a loop. RETURNS false, with nothing appended, if it is absent, empty or leads nowhere.
bool BRepMeter::AppendLoop(BRepView const& brep, flatbuffers::Vector<std::uint16_t> const* loop) {
    if (CountOf(loop) == 0) return false;
    std::size_t const begin = face_.corners.size();
    for (std::uint16_t const index : *loop) {
        if (index >= brep.vertexCount) {
            face_.corners.resize(begin);
            return false;
        }
        face_.corners.push_back(ToVertex(brep.GetPosition(index)));
    }
    face_.ends.push_back(face_.corners.size());
    return true;
}

}  // namespace Quorlan
