// The meter of shapes beside the plain sums, face after face in scalars, to the bit.

#include "analysis/PlainMeter.h"

#include "support/MeshShapes.h"
#include "support/RandomModel.h"
#include "support/RawModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

/// A prism over any ring of points of a plane, which is turned and moved.
RawBRep PrismOver(std::vector<Vector3f> const& ring, RandomNumbers& random) {
    Vector3f const x{random.FloatBetween(-1, 1), random.FloatBetween(-1, 1), random.FloatBetween(-1, 1)};
    Vector3f const y{random.FloatBetween(-1, 1), random.FloatBetween(-1, 1), random.FloatBetween(-1, 1)};
    Vector3f const origin{random.FloatBetween(-9, 9), random.FloatBetween(-9, 9), random.FloatBetween(-9, 9)};
    RawBRep shape;
    auto const size = static_cast<std::uint16_t>(ring.size());
    std::vector<std::uint16_t> top;
    std::vector<std::uint16_t> bottom;
    for (std::uint16_t i = 0; i < size; ++i) {
        Vector3f const p = origin + x * ring[i].x + y * ring[i].y;
        shape.vertices->push_back(p);
        shape.vertices->push_back(p + Cross(x, y));
        auto const next = static_cast<std::uint16_t>((i + 1) % size);
        auto const low = static_cast<std::uint16_t>(2 * i);
        auto const nextLow = static_cast<std::uint16_t>(2 * next);
        shape.faces->push_back(std::vector<std::uint16_t>{low, nextLow, static_cast<std::uint16_t>(nextLow + 1),
                                                          static_cast<std::uint16_t>(low + 1)});
        top.push_back(static_cast<std::uint16_t>(low + 1));
        bottom.insert(bottom.begin(), low);
    }
    shape.faces->insert(shape.faces->begin() + random.Below(size), top);
    shape.faces->push_back(bottom);
    return shape;
}

TEST(BRepMeter, SolidsHaveTheBitsOfPlainSums) {
    ExpectPlainBits(RawBox({0, 0, 0}, {1, 2, 3}));
    ExpectPlainBits(RawPrism(3));
    ExpectPlainBits(RawPrism(7, 0.3F, 5));
    ExpectPlainBits(RawTorus(13, 9));
    ExpectPlainBits(RawPlate(3));
}

TEST(BRepMeter, TorusHasTheBitsOfPlainSums) { ExpectPlainBits(RawTorus(160, 100)); }

TEST(BRepMeter, ConvexFacesOfAnySizeHaveTheBitsOfPlainSums) {
    constexpr std::uint32_t kSeed = 32;
    RecordProperty("seed", static_cast<int>(kSeed));
    RandomNumbers random(kSeed);
    for (std::uint16_t size = 3; size < 140 && !HasFailure(); ++size) {
        ExpectPlainBits(RawPrism(size, random.FloatBetween(0.1, 40), random.FloatBetween(0.1, 40)));
        std::vector<Vector3f> ring;
        for (std::uint16_t i = 0; i < size; ++i) {
            double const angle = 6.283185307 * (i + random.Between(0, 0.9)) / size;
            ring.push_back({static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0});
        }
        ExpectPlainBits(PrismOver(ring, random));
    }
}

/// Stars that turn left everywhere but run round more than once, corners in a line, twice the same corner, slivers.
TEST(BRepMeter, FacesThatAreNearlyConvexHaveTheBitsOfPlainSums) {
    constexpr std::uint32_t kSeed = 33;
    RecordProperty("seed", static_cast<int>(kSeed));
    RandomNumbers random(kSeed);
    for (int round = 0; round < 400 && !HasFailure(); ++round) {
        std::uint32_t const size = 5 + random.Below(30);
        std::uint32_t const turns = random.Below(4) == 0 ? 2 : 1;
        float const width = random.Below(4) == 0 ? std::pow(10.0F, random.FloatBetween(-9, 0)) : 1.0F;
        std::vector<Vector3f> ring;
        for (std::uint32_t i = 0; i < size; ++i) {
            double const angle = 6.283185307 * turns * i / size;
            ring.push_back({static_cast<float>(std::cos(angle)), width * static_cast<float>(std::sin(angle)), 0});
        }
        std::uint32_t const odd = random.Below(size - 2);
        if (random.Below(3) == 0) ring[odd + 1] = (ring[odd] + ring[odd + 2]) * 0.5F;
        if (random.Below(6) == 0) ring[odd + 1] = ring[odd];
        if (random.Below(6) == 0) ring[odd + 1] = ring[odd] * 0.7F;
        if (random.Below(3) == 0) {
            for (auto& p : ring) p = {std::round(4 * p.x), std::round(4 * p.y), 0};
        }
        ExpectPlainBits(PrismOver(ring, random));
    }
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
