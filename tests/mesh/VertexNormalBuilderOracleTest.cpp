#include "mesh/ExpectPlainMesh.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace Quorlan::Testing;
using Quorlan::Tools::VertexNormalBuilder;

/// Triangles fanned out around a few hubs, all normals within a few 1e-5 of the hub's: many of them are equal to each
/// other by the tree's rule, and many are not only because the tree does not find them.
RawBRep RandomBristles(std::mt19937& random, int count) {
    std::uniform_real_distribution<float> jitter(-6e-5F, 6e-5F);
    RawBRep shape;
    for (int i = 0; i < count; ++i) {
        Vector3f const a{static_cast<float>(i % 3), static_cast<float>(i), 0};
        auto const v = static_cast<std::uint16_t>(shape.vertices->size());
        shape.vertices->push_back(a);
        shape.vertices->push_back(a + Vector3f{1, 0, jitter(random)});
        shape.vertices->push_back(a + Vector3f{0, 1, jitter(random)});
        shape.faces->push_back(
            std::vector<std::uint16_t>{v, static_cast<std::uint16_t>(v + 1), static_cast<std::uint16_t>(v + 2)});
    }
    return shape;
}

/// Any loops over a few vertices on a coarse grid: repeated vertices, degenerate, crossing and non-convex loops, faces
/// of 0 to 12 vertices, holes of any face, listed twice at times.
RawBRep RandomLoops(std::mt19937& random) {
    std::uniform_int_distribution<int> grid(-2, 2);
    std::uniform_int_distribution<int> size(0, 12);
    RawBRep shape;
    int const vertexCount = std::uniform_int_distribution<int>(1, 30)(random);
    for (int i = 0; i < vertexCount; ++i) {
        auto const at = [&] { return static_cast<float>(grid(random)); };
        shape.vertices->push_back({at(), at(), at()});
    }
    auto const randomLoop = [&] {
        std::vector<std::uint16_t> loop(static_cast<std::size_t>(size(random)));
        for (auto& index : loop) {
            index = static_cast<std::uint16_t>(std::uniform_int_distribution<int>(0, vertexCount - 1)(random));
        }
        return loop;
    };
    int const faceCount = std::uniform_int_distribution<int>(1, 20)(random);
    for (int i = 0; i < faceCount; ++i) shape.faces->push_back(randomLoop());
    shape.holes.emplace();
    for (int i = std::uniform_int_distribution<int>(0, 4)(random); i > 0; --i) {
        RawHole const hole{static_cast<std::uint16_t>(std::uniform_int_distribution<int>(0, faceCount - 1)(random)),
                           randomLoop()};
        shape.holes->push_back(hole);
        if (i % 2 == 0) shape.holes->push_back(hole);
    }
    return shape;
}

/// A strip of terrain whose faces meet at all angles.
RawBRep RandomTerrain(std::mt19937& random, std::uint16_t width, float height) {
    std::uniform_real_distribution<float> level(0, height);
    RawBRep shape;
    for (std::uint16_t i = 0; i < width * width; ++i) {
        shape.vertices->push_back({static_cast<float>(i % width), static_cast<float>(i / width), level(random)});
    }
    for (std::uint16_t y = 0; y + 1 < width; ++y) {
        for (std::uint16_t x = 0; x + 1 < width; ++x) {
            auto const at = [&](int dx, int dy) { return static_cast<std::uint16_t>((y + dy) * width + x + dx); };
            if (random() % 2 == 0) {
                shape.faces->push_back(std::vector<std::uint16_t>{at(0, 0), at(1, 0), at(1, 1), at(0, 1)});
            } else {
                shape.faces->push_back(std::vector<std::uint16_t>{at(0, 0), at(1, 0), at(0, 1)});
                shape.faces->push_back(std::vector<std::uint16_t>{at(1, 0), at(1, 1), at(0, 1)});
            }
        }
    }
    return shape;
}

constexpr float kAngles[] = {0, 0.1F, 0.5F, 1, 1.5707964F, 2, 3, 3.1415927F};

TEST(VertexNormalBuilderOracle, RandomLoopsGiveTheSameBits) {
    constexpr unsigned kSeed = 20240611;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    VertexNormalBuilder builder;
    for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        ExpectPlainMesh(builder, RandomLoops(random), kAngles[random() % 8]);
    }
}

TEST(VertexNormalBuilderOracle, NormalsNearTheLimitOfEqualityGiveTheSameBits) {
    constexpr unsigned kSeed = 7;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    VertexNormalBuilder builder;
    for (int round = 0; round < 8; ++round) ExpectPlainMesh(builder, RandomBristles(random, 1500), 0.5F);
}

TEST(VertexNormalBuilderOracle, TerrainsGiveTheSameBits) {
    constexpr unsigned kSeed = 99;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    VertexNormalBuilder builder;
    for (float const height : {1e-4F, 1e-2F, 0.3F, 3.0F}) {
        for (float const angle : {0.1F, 0.5F, 2.0F}) ExpectPlainMesh(builder, RandomTerrain(random, 40, height), angle);
    }
}

TEST(VertexNormalBuilderOracle, RegularShapesGiveTheSameBits) {
    VertexNormalBuilder builder;
    for (float const angle : kAngles) {
        ExpectPlainMesh(builder, RawBox({0, 0, 0}, {1, 2, 3}), angle);
        ExpectPlainMesh(builder, RawPrism(129), angle);
        ExpectPlainMesh(builder, RawPlate(8), angle);
        ExpectPlainMesh(builder, RawTorus(40, 25), angle);
    }
    ExpectPlainMesh(builder, RawTorus(160, 100), 0.5F);
}

TEST(VertexNormalBuilderOracle, ValuesThatAreNotNumbersGiveTheSameBits) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    auto shape = RawBox({0, 0, 0}, {1, 1, 1});
    (*shape.vertices)[2].x = nan;
    (*shape.vertices)[5].y = 3e38F;
    VertexNormalBuilder builder;
    ExpectPlainMesh(builder, shape, 0.5F);
    ExpectPlainMesh(builder, RawBox({0, 0, 0}, {1, 1, 1}), nan);
}

TEST(VertexNormalBuilderOracle, BeyondTheLimitOfCornersOnlyNewCornersAreLost) {
    // 22500 triangles of all directions over 3000 vertices, in the midst of a mesh that is otherwise in order.
    constexpr unsigned kSeed = 5;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    RawBRep shape;
    std::uniform_real_distribution<float> coordinate(-1, 1);
    for (int i = 0; i < 3000; ++i) {
        shape.vertices->push_back({coordinate(random), coordinate(random), coordinate(random)});
    }
    std::uniform_int_distribution<int> vertex(0, 2998);
    for (int i = 0; i < 22500; ++i) {
        auto const at = [&] { return static_cast<std::uint16_t>(vertex(random)); };
        shape.faces->push_back(std::vector<std::uint16_t>{at(), at(), at()});
    }
    shape.faces->push_back(std::vector<std::uint16_t>{0, 1, 2999});  // 2999 still has its free slot
    VertexNormalBuilder builder;
    ExpectPlainMesh(builder, shape, 0);
    EXPECT_EQ(builder.GetCorners().size(), 65535u);
    EXPECT_EQ(builder.GetTriangles().size(), 22501u);
    EXPECT_EQ(builder.GetTriangles().back().c, 2999);
    ExpectPlainMesh(builder, RawBox({0, 0, 0}, {1, 1, 1}), 0.5F);
}

TEST(VertexNormalBuilderOracle, MoreThan65535FacesAndVerticesAreNoLimit) {
    RawBRep shape;
    for (std::uint32_t i = 0; i < 65536; ++i) {
        shape.vertices->push_back({static_cast<float>(i % 256), static_cast<float>(i / 256), 0});
    }
    for (std::uint32_t i = 0; i < 70000; ++i) {
        auto const a = static_cast<std::uint16_t>(i % 65000);
        shape.faces->push_back(
            std::vector<std::uint16_t>{a, static_cast<std::uint16_t>(a + 1), static_cast<std::uint16_t>(a + 257)});
    }
    VertexNormalBuilder builder;
    ExpectPlainMesh(builder, shape, 0.5F);
    EXPECT_EQ(builder.GetTriangles().size(), 70000u);
}

}  // namespace
