// Finding rigid copies: the library beside a search by buckets with a least-squares fit, and beside a hash of the plain
// coordinates, which finds exact copies only and is the least that any search can cost.

#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <random>
#include <unordered_map>
#include <vector>

#include "support/Shapes.h"
#include "support/Transforms.h"

#ifdef QUORLAN_HAS_EIGEN
#include <Eigen/Core>
#include <Eigen/Geometry>
#endif

namespace {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::GraphicsContainer;
using GeometryObjectLib::Vertex;
using Quorlan::GeometryDefinitionIndex_t;
using TestSupport::AffineTransform;

constexpr std::size_t kDistinctCount = 1000;
constexpr std::size_t kBatchSize = 500;

/// Counts what it is handed.
struct CountingTarget : Quorlan::IGeometryDefinitionBuilder {
    std::uint32_t count = 0;

    GeometryDefinitionIndex_t Next() { return GeometryDefinitionIndex_t{count++}; }
    GeometryDefinitionIndex_t AddBRepWithNormals(std::pair<FacetedBRep const*, std::vector<Vertex> const*>) override {
        return Next();
    }
    GeometryDefinitionIndex_t AddBRepWithUVs(
        std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*>) override {
        return Next();
    }
    GeometryDefinitionIndex_t AddGraphicsContainer(GraphicsContainer const&) override { return Next(); }
    GeometryDefinitionIndex_t AddBRep(FacetedBRep const&) override { return Next(); }
};

struct Library {
    CountingTarget target;
    Quorlan::Tools::UniqueGeometryDefinitionBuilder unique{target};
    AffineTransform transform;

    void Add(FacetedBRep const& shape) { benchmark::DoNotOptimize(unique.Add(shape, &transform)); }
    std::size_t GetDistinctCount() const { return target.count; }
};

std::uint64_t Mix(std::uint64_t hash, std::uint64_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15;
    return hash ^ hash >> 32;
}

std::uint64_t HashLoops(FacetedBRep const& shape) {
    std::uint64_t hash = Mix(shape.vertices.size(), shape.faces.size());
    auto const add = [&hash](std::vector<std::uint32_t> const& loop) {
        hash = Mix(hash, loop.size());
        for (std::uint32_t const index : loop) hash = Mix(hash, index);
    };
    for (auto const& loop : shape.faces) add(loop);
    for (auto const& [face, loops] : shape.holes) {
        hash = Mix(hash, face);
        for (auto const& loop : loops) add(loop);
    }
    return hash;
}

bool HasSameLoops(FacetedBRep const& a, FacetedBRep const& b) { return a.faces == b.faces && a.holes == b.holes; }

/// Exact copies: everything is hashed and compared bit by bit.
struct ExactHash {
    std::unordered_multimap<std::uint64_t, std::size_t> byHash;
    std::vector<FacetedBRep> stored;

    void Add(FacetedBRep const& shape) {
        std::uint64_t hash = HashLoops(shape);
        for (Vertex const& v : shape.vertices) {
            for (double const value : {v.x, v.y, v.z}) {
                std::uint64_t bits;
                std::memcpy(&bits, &value, sizeof(bits));
                hash = Mix(hash, bits);
            }
        }
        auto const [begin, end] = byHash.equal_range(hash);
        for (auto entry = begin; entry != end; ++entry) {
            FacetedBRep const& other = stored[entry->second];
            std::size_t const size = shape.vertices.size() * sizeof(Vertex);
            bool const isSame = other.vertices.size() == shape.vertices.size() &&
                                std::memcmp(other.vertices.data(), shape.vertices.data(), size) == 0;
            if (isSame && HasSameLoops(shape, other)) return;
        }
        byHash.emplace(hash, stored.size());
        stored.push_back(shape);
    }
    std::size_t GetDistinctCount() const { return stored.size(); }
};

#ifdef QUORLAN_HAS_EIGEN
/// Buckets by the loops, candidates by the mean distance from the centroid, then a least-squares rigid fit of all
/// vertices (Umeyama, "Least-Squares Estimation of Transformation Parameters Between Two Point Patterns", 1991).
struct BucketsAndFit {
    using Points = Eigen::Matrix3Xd;
    struct Entry {
        Points points;
        double radius;
        FacetedBRep shape;
    };
    std::unordered_map<std::uint64_t, std::vector<Entry>> buckets;
    std::size_t count = 0;

    void Add(FacetedBRep const& shape) {
        auto const* const coordinates = &shape.vertices[0].x;
        Points const points =
            Eigen::Map<Points const>(coordinates, 3, static_cast<Eigen::Index>(shape.vertices.size()));
        double const radius = (points.colwise() - points.rowwise().mean().eval()).colwise().norm().mean();
        auto& bucket = buckets[HashLoops(shape)];
        for (Entry const& entry : bucket) {
            if (std::abs(entry.radius - radius) > 1e-5) continue;
            Eigen::Matrix4d const fit = Eigen::umeyama(points, entry.points, false);
            Points const mapped = (fit.topLeftCorner<3, 3>() * points).colwise() + fit.topRightCorner<3, 1>().eval();
            bool const isNear = (mapped - entry.points).colwise().squaredNorm().maxCoeff() <= 1e-10;
            if (isNear && HasSameLoops(shape, entry.shape)) return;
        }
        bucket.push_back({points, radius, shape});
        ++count;
    }
    std::size_t GetDistinctCount() const { return count; }
};
#endif

/// Boxes, prisms of 3 to 24 sides and plates with a hole, all of different sizes.
std::vector<FacetedBRep> MakeShapes(std::mt19937& random, std::size_t count) {
    std::uniform_real_distribution<double> length(0.4, 5);
    std::vector<FacetedBRep> shapes;
    for (std::size_t i = 0; i < count; ++i) {
        if (i % 5 < 2) {
            shapes.push_back(TestSupport::MakeBox({0, 0, 0}, {length(random), length(random), length(random)}));
        } else if (i % 5 < 4) {
            auto const sides = 3 + static_cast<std::uint32_t>(random() % 22);
            shapes.push_back(TestSupport::MakePrism(sides, length(random), length(random)));
        } else {
            Vertex const scale{length(random), length(random), length(random)};
            shapes.push_back(TestSupport::MakePlateWithHole());
            for (Vertex& v : shapes.back().vertices) v = {v.x * scale.x, v.y * scale.y, v.z * scale.z};
        }
    }
    return shapes;
}

FacetedBRep PlaceAtRandom(FacetedBRep shape, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(-1, 1);
    auto const turn = TestSupport::MakeRotation({unit(random), unit(random), unit(random)}, 3 * unit(random));
    Vertex const move = Vertex{unit(random), unit(random), unit(random)} * 15.0;
    for (Vertex& v : shape.vertices) v = TransformPoint(turn.matrix, v) + move;
    return shape;
}

/// Adds `count` shapes in batches of which only the adding is timed (processor time), so that the placed shapes need no
/// room.
template <class Search, class MakeShape>
void AddInBatches(benchmark::State& state, MakeShape const& makeShape) {
    auto const count = static_cast<std::size_t>(state.range(0));
    std::size_t distinctCount = 0;
    for (auto _ : state) {
        Search search;
        std::clock_t time = 0;
        std::vector<FacetedBRep> batch;
        for (std::size_t begin = 0; begin < count; begin += kBatchSize) {
            batch.clear();
            for (std::size_t i = begin; i < begin + kBatchSize && i < count; ++i) batch.push_back(makeShape(i));
            auto const start = std::clock();
            for (FacetedBRep const& shape : batch) search.Add(shape);
            time += std::clock() - start;
        }
        state.SetIterationTime(static_cast<double>(time) / CLOCKS_PER_SEC);
        distinctCount = search.GetDistinctCount();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["distinct"] = static_cast<double>(distinctCount);
}

/// 1000 distinct shapes, each placed at random.
template <class Search>
void PlacedCopies(benchmark::State& state) {
    std::mt19937 random(1);
    auto const shapes = MakeShapes(random, kDistinctCount);
    AddInBatches<Search>(state, [&](std::size_t i) { return PlaceAtRandom(shapes[i % kDistinctCount], random); });
}

/// 1000 distinct shapes, each repeated as it is.
template <class Search>
void ExactCopies(benchmark::State& state) {
    std::mt19937 random(1);
    auto const shapes = MakeShapes(random, kDistinctCount);
    AddInBatches<Search>(state, [&](std::size_t i) { return shapes[i % kDistinctCount]; });
}

/// Boxes of one signature, no two of one size.
template <class Search>
void DistinctBoxes(benchmark::State& state) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> length(0.4, 5);
    AddInBatches<Search>(state, [&](std::size_t) {
        return TestSupport::MakeBox({0, 0, 0}, {length(random), length(random), length(random)});
    });
}

#define QUORLAN_UNIQUE_BENCHMARK(scene, search, most) \
    BENCHMARK_TEMPLATE(scene, search)                 \
        ->RangeMultiplier(10)                         \
        ->Range(1000, most)                           \
        ->UseManualTime()                             \
        ->Unit(benchmark::kMillisecond)

QUORLAN_UNIQUE_BENCHMARK(PlacedCopies, Library, 100000);
QUORLAN_UNIQUE_BENCHMARK(ExactCopies, Library, 100000);
QUORLAN_UNIQUE_BENCHMARK(ExactCopies, ExactHash, 100000);
QUORLAN_UNIQUE_BENCHMARK(DistinctBoxes, Library, 100000);
#ifdef QUORLAN_HAS_EIGEN
QUORLAN_UNIQUE_BENCHMARK(PlacedCopies, BucketsAndFit, 100000);
QUORLAN_UNIQUE_BENCHMARK(DistinctBoxes, BucketsAndFit, 10000);
#endif

}  // namespace
