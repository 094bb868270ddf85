// The meter of shapes beside the plain sums, face after face in scalars, to the bit.

#include "analysis/BRepMeter.h"

#include "support/MeshShapes.h"
#include "support/RandomModel.h"
#include "support/RawModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

double PlainLoopArea(std::vector<Vertex> const& p, Vertex const& u, Vertex const& v) {
    double sum = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        Vertex const& a = p[i == 0 ? p.size() - 1 : i - 1];
        sum += Dot(u, a) * Dot(v, p[i]) - Dot(v, a) * Dot(u, p[i]);
    }
    return 0.5 * sum;
}

double PlainFaceArea(std::vector<Vertex> const& p) {
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
    return PlainLoopArea(p, u, Cross(n / Length(n), u));
}

/// Faces without holes; other polygons than triangles and convex quadrilaterals go through the triangulator.
BRepQuantities PlainMeasure(RawBRep const& shape) {
    BRepQuantities q;
    bool isEmpty = true;
    Vertex apex;
    Vertex moment;
    PlanarTriangulator triangulator;
    for (auto const& loop : *shape.faces) {
        FaceLoops face;
        for (auto const index : *loop) {
            Vector3f const& v = (*shape.vertices)[index];
            face.corners.push_back({v.x, v.y, v.z});
        }
        face.ends = {face.corners.size()};
        if (face.corners.empty()) continue;
        q.area += PlainFaceArea(face.corners);
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

void ExpectPlainBits(RawBRep const& shape) {
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

TEST(BRepMeter, SolidsHaveTheBitsOfPlainSums) {
    ExpectPlainBits(RawBox({0, 0, 0}, {1, 2, 3}));
    ExpectPlainBits(RawPrism(3));
    ExpectPlainBits(RawPrism(7, 0.3F, 5));
    ExpectPlainBits(RawTorus(13, 9));
}

/// Triangles, quadrilaterals of any form and larger faces in any order, in runs of any length.
TEST(BRepMeter, FacesInAnyOrderHaveTheBitsOfPlainSums) {
    constexpr std::uint32_t kSeed = 31;
    RecordProperty("seed", static_cast<int>(kSeed));
    RandomNumbers random(kSeed);
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
        RawBRep shape;
        bool const isRound = i % 3 == 0;
        for (int v = 0; v < 12; ++v) {
            Vector3f p{random.FloatBetween(-4, 4), random.FloatBetween(-4, 4), random.FloatBetween(-4, 4)};
            if (isRound) p = {std::round(p.x), std::round(p.y), std::round(p.z)};
            shape.vertices->push_back(p);
        }
        for (std::uint32_t run = random.Below(6); run > 0; --run) {
            std::uint32_t const size = random.Below(8) == 0 ? random.Below(7) : 3 + random.Below(2);
            for (std::uint32_t face = random.Below(10); face > 0; --face) {
                std::vector<std::uint16_t> loop(size);
                for (auto& index : loop) index = static_cast<std::uint16_t>(random.Below(12));
                shape.faces->push_back(loop);
            }
        }
        ExpectPlainBits(shape);
    }
}

TEST(BRepMeter, CornersThatAreNotFiniteHaveTheBitsOfPlainSums) {
    for (float const odd : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 3e38F}) {
        for (std::size_t vertex = 0; vertex < 8; ++vertex) {
            RawBRep shape = RawBox({0, 0, 0}, {1, 2, 3});
            (*shape.vertices)[vertex].y = odd;
            ExpectPlainBits(shape);
        }
    }
}

}  // namespace
