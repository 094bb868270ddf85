#pragma once

#include "analysis/BRepMeter.h"

#include "support/MeshShapes.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <vector>

/// The plain sums of a shape, face after face in scalars, which the meter has to equal to the bit.
namespace Quorlan::Testing {

inline double PlainLoopArea(std::vector<Vertex> const& p, Vertex const& u, Vertex const& v) {
    double sum = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        Vertex const& a = p[i == 0 ? p.size() - 1 : i - 1];
        sum += Dot(u, a) * Dot(v, p[i]) - Dot(v, a) * Dot(u, p[i]);
    }
    return 0.5 * sum;
}

/// Of a loop and its holes.
inline double PlainFaceArea(std::vector<std::vector<Vertex>> const& loops) {
    std::vector<Vertex> const& p = loops.front();
    Vertex n;
    Vertex longest;
    double longestLength = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        Vertex const& a = p[i];
        Vertex const& b = p[(i + 1) % p.size()];
        n.x += (b.z + a.z) * (a.y - b.y);
        n.y += (a.z - b.z) * (b.x + a.x);
        n.z += (a.x - b.x) * (a.y + b.y);
        if (Length(b - a) > longestLength) {
            longest = b - a;
            longestLength = Length(b - a);
        }
    }
    if (Length(n) < 1e-7) return 0;
    Vertex const u = longest / longestLength;
    double area = 0;
    for (auto const& loop : loops) area += PlainLoopArea(loop, u, Cross(n / Length(n), u));
    return area;
}

/// Other faces than triangles and convex quadrilaterals go through the triangulator.
/// REQUIRES: every index of the shape is in range.
inline BRepQuantities PlainMeasure(RawBRep const& shape) {
    BRepQuantities q;
    bool isEmpty = true;
    Vertex apex;
    Vertex moment;
    PlanarTriangulator triangulator;
    for (std::size_t f = 0; f < shape.faces->size(); ++f) {
        std::vector<std::vector<Vertex>> loops;
        FaceLoops face;
        auto const addLoop = [&](RawLoop const& loop) {
            if (loop->empty()) return;
            loops.emplace_back();
            for (auto const index : *loop) {
                Vector3f const& v = (*shape.vertices)[index];
                loops.back().push_back({v.x, v.y, v.z});
                face.corners.push_back(loops.back().back());
            }
            face.ends.push_back(face.corners.size());
        };
        addLoop((*shape.faces)[f]);
        if (loops.empty()) continue;
        for (auto const& hole : shape.holes.value_or(std::vector<RawHole>())) {
            if (hole.face == f) addLoop(hole.loop);
        }
        q.area += PlainFaceArea(loops);
        auto const triangles = triangulator.Triangulate(face);
        for (std::size_t t = 0; t < triangles.size(); t += 3) {
            Vertex const& p0 = face.corners[triangles[t]];
            Vertex const& p1 = face.corners[triangles[t + 1]];
            Vertex const& p2 = face.corners[triangles[t + 2]];
            if (isEmpty) apex = p0;
            isEmpty = false;
            double const volume = Dot(p0 - apex, Cross(p1 - apex, p2 - apex)) / 6;
            q.volume += volume;
            moment = moment + (apex + p0 + p1 + p2) * 0.25 * volume;
        }
    }
    if (!isEmpty) q.centroid = moment / q.volume;
    return q;
}

/// With AVX2, where the processor has it, and without.
inline void ExpectPlainBits(RawBRep const& shape) {
    auto const buffer = ModelOf(shape);
    auto const model = *ModelView::Open(buffer.data());
    BRepQuantities const plain = PlainMeasure(shape);
    for (bool const usesAvx2 : {false, HasAvx2()}) {
        BRepQuantities const measured = BRepMeter(usesAvx2).Measure(*FindBRep(*model.geometry, kFacetedBRep, 0));
        EXPECT_TRUE(SameBits(measured.area, plain.area)) << measured.area << " " << plain.area;
        EXPECT_TRUE(SameBits(measured.volume, plain.volume)) << measured.volume << " " << plain.volume;
        EXPECT_TRUE(SameBits(measured.centroid, plain.centroid));
    }
}

}  // namespace Quorlan::Testing
