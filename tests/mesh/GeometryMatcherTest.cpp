#include "mesh/GeometryMatcher.h"

#include "geometry/MatrixInverse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/Shapes.h"
#include "support/Transforms.h"

namespace {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::TransformPoint;
using Quorlan::Tools::ComputeSignature;
using Quorlan::Tools::FindReferencePair;
using Quorlan::Tools::GeometryMatcher;
using Quorlan::Tools::MakeReferenceFrame;
using Quorlan::Tools::ReferencePair;
using TestSupport::AffineTransform;
using TestSupport::FacetedBRep;
using TestSupport::MakeBox;
using TestSupport::MakePlateWithHole;
using TestSupport::MakePrism;
using TestSupport::MakeUnitCube;
using TestSupport::Vertex;

constexpr double kTolerance = 1e-5;

// ---- a plain transcription: every earlier shape is tried in order, with whole matrices ----------------------------

std::uint32_t PlainSignature(FacetedBRep const& shape) {
    std::uint32_t s =
        static_cast<std::uint32_t>((shape.holes.size() * 256 + shape.faces.size()) * 256 + shape.vertices.size());
    auto const fold = [&s](std::uint32_t k) { s = k - s * 0x5AAAAAD7u; };
    for (auto const& outer : shape.faces) {
        for (std::uint32_t const k : outer) fold(k);
        for (auto const& [face, loops] : shape.holes) {
            for (auto const& loop : loops) {
                for (std::uint32_t const k : loop) fold(k);
            }
        }
    }
    return s;
}

bool PlainPair(std::vector<Vertex> const& v, std::size_t& i0, std::size_t& i1) {
    if (v.size() < 3) return false;
    i0 = i1 = 0;
    double best = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        double const distance = Length(v[i] - v[0]);
        if (distance > best) best = distance, i0 = i;
    }
    if (i0 == 0) return false;
    Vertex const u = (v[i0] - v[0]) / Length(v[i0] - v[0]);
    best = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        double const distance = Length(v[i] - (v[0] + u * Dot(v[i] - v[0], u)));
        if (distance > best) best = distance, i1 = i;
    }
    return i1 != 0;
}

bool PlainFrame(std::vector<Vertex> const& v, std::size_t i0, std::size_t i1, Matrix4& frame) {
    if (v.size() <= i1) return false;
    Vertex const x = v[i0] - v[0];
    Vertex const y = v[i1] - v[0];
    Vertex const z = Cross(x, y);
    frame.m = {x.x, y.x, z.x, v[0].x, x.y, y.y, z.y, v[0].y, x.z, y.z, z.z, v[0].z, 0, 0, 0, 1};
    return Determinant(frame) > 1e-15;
}

double PlainSize(std::vector<Vertex> const& v, std::size_t i0, std::size_t i1) {
    return Length(v[i0] - v[0]) + Length(v[i1] - v[0]);
}

struct PlainMatcher {
    struct Entry {
        FacetedBRep shape;
        Matrix4 frame;
        std::size_t i0;
        std::size_t i1;
        bool isRegistered;
        std::uint32_t signature;
    };
    std::vector<Entry> entries;

    static bool Matches(FacetedBRep const& q, Entry const& s, Matrix4& t) {
        if (q.vertices.size() != s.shape.vertices.size()) return false;
        double const size = PlainSize(s.shape.vertices, s.i0, s.i1);
        if (std::abs(size - PlainSize(q.vertices, s.i0, s.i1)) > 2 * kTolerance) return false;
        Matrix4 n;
        Matrix4 inverse;
        if (!PlainFrame(q.vertices, s.i0, s.i1, n) || !TryInverse(n, inverse)) return false;
        t = s.frame * inverse;
        Vertex x = t.GetColumn(0);
        Vertex z = Cross(x, t.GetColumn(1));
        Vertex y = Cross(z, x);
        x = x / Length(x);
        y = y / Length(y);
        z = z / Length(z);
        t.m = {x.x, y.x, z.x, t.m[3], x.y, y.y, z.y, t.m[7], x.z, y.z, z.z, t.m[11], 0, 0, 0, 1};
        for (std::size_t i = 0; i < q.vertices.size(); ++i) {
            Vertex const d = TransformPoint(t, q.vertices[i]) - s.shape.vertices[i];
            if (!(Dot(d, d) <= kTolerance * kTolerance)) return false;
        }
        return q.faces == s.shape.faces && q.holes == s.shape.holes;
    }

    bool Query(FacetedBRep const& shape, std::uint64_t& key, Matrix4& t) {
        std::uint32_t const signature = PlainSignature(shape);
        for (key = 0; key < entries.size(); ++key) {
            bool const isCandidate = entries[key].isRegistered && entries[key].signature == signature;
            if (isCandidate && Matches(shape, entries[key], t)) return true;
        }
        Entry entry{shape, Matrix4(), 0, 0, false, signature};
        entry.isRegistered = PlainPair(shape.vertices, entry.i0, entry.i1) &&
                             PlainFrame(shape.vertices, entry.i0, entry.i1, entry.frame);
        entries.push_back(entry);
        t = Matrix4();
        return false;
    }
};

// ---- signature ----------------------------------------------------------------------------------------------------

TEST(GeometryMatcher, TheSignatureFoldsCountsAndLoops) {
    FacetedBRep triangle;
    triangle.vertices.resize(3);
    triangle.faces = {{0, 1, 2}};
    std::uint32_t const counts = 1 * 256 + 3;
    std::uint32_t const factor = 1521134295;
    EXPECT_EQ(ComputeSignature(triangle, 3), 2 - (1 - (0 - counts * factor) * factor) * factor);
    EXPECT_EQ(ComputeSignature(FacetedBRep(), 0), 0u);
}

TEST(GeometryMatcher, TheSignatureFoldsTheInnerLoopsOncePerFace) {
    FacetedBRep shape = MakePlateWithHole();
    EXPECT_EQ(ComputeSignature(shape, shape.vertices.size()), PlainSignature(shape));
    shape.holes[3] = {{1, 2, 3}, {}, {9}};
    EXPECT_EQ(ComputeSignature(shape, shape.vertices.size()), PlainSignature(shape));
}

TEST(GeometryMatcher, TheSignatureOfRandomLoopsFollowsTheTranscription) {
    std::mt19937 random(12);
    for (int round = 0; round < 200; ++round) {
        FacetedBRep shape;
        shape.vertices.resize(random() % 1000);
        auto const makeLoop = [&] {
            std::vector<std::uint32_t> loop(random() % 6);
            for (auto& index : loop) index = static_cast<std::uint32_t>(random());
            return loop;
        };
        for (auto faces = random() % 10; faces > 0; --faces) shape.faces.push_back(makeLoop());
        for (auto holes = random() % 4; holes > 0; --holes) shape.holes[random() % 10].push_back(makeLoop());
        ASSERT_EQ(ComputeSignature(shape, shape.vertices.size()), PlainSignature(shape)) << round;
    }
}

// ---- reference pair and frame -------------------------------------------------------------------------------------

TEST(GeometryMatcher, TheFirstOfEquallyFarVerticesIsTaken) {
    EXPECT_TRUE(FindReferencePair({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}}) == (ReferencePair{1, 2}));
    EXPECT_TRUE(FindReferencePair({{0, 0, 0}, {0, -1, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}}) == (ReferencePair{1, 2}));
}

TEST(GeometryMatcher, LengthsThatRoundToTheSameNumberAreEquallyFar) {
    // The squares 1 and 1 + 2^-52 differ, their roots do not.
    double const tiny = std::ldexp(1.0, -26);
    ASSERT_GT(1 + tiny * tiny, 1.0);
    ASSERT_EQ(std::sqrt(1 + tiny * tiny), 1.0);
    EXPECT_TRUE(FindReferencePair({{0, 0, 0}, {0, 1, 0}, {1, 0, tiny}}) == (ReferencePair{1, 2}));
}

TEST(GeometryMatcher, NoPairForFewPointsForCoincidentAndForCollinearOnes) {
    EXPECT_FALSE(FindReferencePair({}));
    EXPECT_FALSE(FindReferencePair({{0, 0, 0}, {1, 0, 0}}));
    EXPECT_FALSE(FindReferencePair({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}));
    EXPECT_FALSE(FindReferencePair({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}));
}

TEST(GeometryMatcher, AFrameNeedsBothVerticesAndADeterminantAboveTheBound) {
    std::vector<Vertex> const triangle{{1, 1, 1}, {3, 1, 1}, {1, 4, 1}};
    EXPECT_FALSE(MakeReferenceFrame(triangle, {1, 3}));
    EXPECT_FALSE(MakeReferenceFrame(triangle, {1, 1}));
    auto const frame = MakeReferenceFrame(triangle, {1, 2});
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->z.z, 6);
    EXPECT_EQ(frame->origin.x, 1);
}

// ---- queries ------------------------------------------------------------------------------------------------------

TEST(GeometryMatcher, KeysCountTheNewShapesFromZeroAlsoThoseWithoutAFrame) {
    GeometryMatcher matcher(kTolerance);
    FacetedBRep needle;
    needle.vertices = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    std::uint64_t key = 99;
    AffineTransform transform;
    EXPECT_FALSE(matcher.Query(needle, key, transform));
    EXPECT_EQ(key, 0u);
    EXPECT_FALSE(matcher.Query(needle, key, transform));
    EXPECT_EQ(key, 1u);
    EXPECT_FALSE(matcher.Query(MakeUnitCube(), key, transform));
    EXPECT_EQ(key, 2u);
    EXPECT_TRUE(matcher.Query(MakeUnitCube(), key, transform));
    EXPECT_EQ(key, 2u);
    EXPECT_EQ(matcher.GetCallCount(), 4u);
    EXPECT_EQ(matcher.GetNewShapeCount(), 3u);
}

TEST(GeometryMatcher, ShapesWithoutFacesAreComparedByTheirVertices) {
    GeometryMatcher matcher(kTolerance);
    FacetedBRep points;
    points.vertices = MakeUnitCube().vertices;
    std::uint64_t key = 0;
    AffineTransform transform;
    EXPECT_FALSE(matcher.Query(points, key, transform));
    EXPECT_TRUE(matcher.Query(points, key, transform));
    EXPECT_FALSE(matcher.Query(MakeUnitCube(), key, transform));
}

TEST(GeometryMatcher, AnEmptyListOfHolesOfAFaceChangesTheSignature) {
    GeometryMatcher matcher(kTolerance);
    FacetedBRep cube = MakeUnitCube();
    std::uint64_t key = 0;
    AffineTransform transform;
    matcher.Query(cube, key, transform);
    cube.holes[2] = {};
    EXPECT_FALSE(matcher.Query(cube, key, transform));
}

TEST(GeometryMatcher, HugeAndInfiniteShapesAreNewAndEndTheQuery) {
    GeometryMatcher matcher(kTolerance);
    std::uint64_t key = 0;
    AffineTransform transform;
    for (double const size : {1e9, 1e12, 1e15, 1e20, 1e60, 1e160, 1e300, std::numeric_limits<double>::infinity()}) {
        FacetedBRep const box = MakeBox({0, 0, 0}, {size, size, size / 2});
        EXPECT_FALSE(matcher.Query(box, key, transform)) << size;
        PlainMatcher plain;
        Matrix4 matrix;
        plain.Query(box, key, matrix);
        EXPECT_EQ(matcher.Query(box, key, transform), plain.Query(box, key, matrix)) << size;
    }
}

constexpr std::uint32_t kFactor = 1521134295;

TEST(GeometryMatcher, AnEqualSignatureOfOtherLoopsIsNoMatch) {
    // (b - f (a - f s)) stays the same where a grows by 1 and b by f.
    FacetedBRep shape;
    shape.vertices = MakeUnitCube().vertices;
    shape.faces = {{0, 1, 2}, {3, 4}};
    FacetedBRep other = shape;
    other.faces = {{0, 2, 2 + kFactor}, {3, 4}};
    ASSERT_EQ(ComputeSignature(shape, 8), ComputeSignature(other, 8));
    GeometryMatcher matcher(kTolerance);
    std::uint64_t key = 0;
    AffineTransform transform;
    matcher.Query(shape, key, transform);
    EXPECT_FALSE(matcher.Query(other, key, transform));
    EXPECT_TRUE(matcher.Query(shape, key, transform));
    EXPECT_EQ(key, 0u);
    EXPECT_TRUE(matcher.Query(other, key, transform));
    EXPECT_EQ(key, 1u);
}

TEST(GeometryMatcher, AnEqualSignatureOfAnotherVertexCountIsNoMatch) {
    FacetedBRep four;
    four.vertices = {{0, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0}};
    four.faces = {{kFactor, 1, 2}};
    FacetedBRep three = four;
    three.vertices.pop_back();
    three.faces = {{0, 1, 2}};
    ASSERT_EQ(ComputeSignature(three, 3), ComputeSignature(four, 4));
    for (bool const isFourFirst : {false, true}) {
        GeometryMatcher matcher(kTolerance);
        std::uint64_t key = 0;
        AffineTransform transform;
        matcher.Query(isFourFirst ? four : three, key, transform);
        EXPECT_FALSE(matcher.Query(isFourFirst ? three : four, key, transform));
    }
}

TEST(GeometryMatcher, AReferencePairBeyondTheVerticesOfAnEqualSignatureIsNoMatch) {
    FacetedBRep four;
    four.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 1, 0}};
    four.faces = {{kFactor, 1, 2}};
    ASSERT_EQ(FindReferencePair(four.vertices)->first, 3u);
    FacetedBRep three = four;
    three.vertices.pop_back();
    three.faces = {{0, 1, 2}};
    GeometryMatcher matcher(kTolerance);
    std::uint64_t key = 0;
    AffineTransform transform;
    matcher.Query(four, key, transform);
    EXPECT_FALSE(matcher.Query(three, key, transform));
}

/// Shapes of one kind come in a few sizes; vertices are moved by about the tolerance, so that sizes, cells of sizes,
/// first matches and near misses all occur.
FacetedBRep MakeRandomShape(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(-1, 1);
    double const step = 1e-5 * static_cast<double>(random() % 4);
    auto const length = [&] { return 1 + 0.5 * static_cast<double>(random() % 3) + step; };
    FacetedBRep shape = random() % 4 == 0 ? MakePlateWithHole()
                        : random() % 2 == 0
                            ? MakePrism(3 + static_cast<std::uint32_t>(random() % 3), length(), length())
                            : MakeBox({0, 0, 0}, {length(), length(), length()});
    if (random() % 4 == 0) {
        for (Vertex& v : shape.vertices) v.x = -v.x;
    }
    for (auto moves = random() % 3; moves > 0; --moves) {
        shape.vertices[random() % shape.vertices.size()].y += 1.2e-5 * unit(random);
    }
    if (random() % 8 == 0) std::swap(shape.vertices[1], shape.vertices[2]);
    if (random() % 8 == 0) shape.faces.back().pop_back();
    if (random() % 2 == 0) return shape;
    auto const turn = TestSupport::MakeRotation({unit(random), unit(random), unit(random)}, 3 * unit(random));
    Vertex const move = Vertex{unit(random), unit(random), unit(random)} * 20;
    for (Vertex& v : shape.vertices) v = TransformPoint(turn.matrix, v) + move;
    return shape;
}

TEST(GeometryMatcher, AnswersAsTheTranscriptionDoes) {
    unsigned const seed = 20260101;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    int known = 0;
    for (int run = 0; run < 3; ++run) {
        GeometryMatcher matcher(kTolerance);
        PlainMatcher plain;
        for (int i = 0; i < 400; ++i) {
            FacetedBRep const shape = MakeRandomShape(random);
            std::uint64_t key = 0;
            std::uint64_t plainKey = 0;
            AffineTransform transform;
            Matrix4 plainMatrix;
            bool const isKnown = matcher.Query(shape, key, transform);
            ASSERT_EQ(isKnown, plain.Query(shape, plainKey, plainMatrix)) << run << " " << i;
            ASSERT_EQ(key, plainKey) << run << " " << i;
            for (std::size_t k = 0; k < 16; ++k) ASSERT_NEAR(transform.matrix.m[k], plainMatrix.m[k], 1e-9) << i;
            known += isKnown ? 1 : 0;
        }
    }
    EXPECT_GT(known, 200);
    EXPECT_LT(known, 1100);
}

}  // namespace
