#include "picking/PlainDistance.h"

#include <Quorlan/ModelBuilder.h>
#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

/// Segments and arcs of a drawing per ray; segments beside the plain closed form, arcs beside the search that samples
/// each of them.
namespace {

using GeometryObjectLib::ArcSegment;
using GeometryObjectLib::GraphicsContainer;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;
using Quorlan::Benchmarks::PlainDistance;
using Quorlan::Tools::Picking::RayToGraphicsContainerBuilder;

constexpr int kSamplesPerArc = 64;

/// Outlines spread over a storey of 60 by 40 metres: short strokes, and the arcs of doors and columns.
GraphicsContainer Drawing(std::int64_t lines, std::int64_t arcs) {
    std::mt19937 engine(71);
    auto const between = [&](double lower, double upper) {
        return std::uniform_real_distribution<double>(lower, upper)(engine);
    };
    GraphicsContainer drawing;
    for (std::int64_t i = 0; i < lines; ++i) {
        Vertex const start{between(0, 60), between(0, 40), between(0, 3)};
        drawing.lines.push_back({start, start + Vertex{between(-2, 2), between(-2, 2), 0}});
    }
    for (std::int64_t i = 0; i < arcs; ++i) {
        double const angle = between(0, 6.28);
        drawing.arcs.push_back({{between(0, 60), between(0, 40), between(0, 3)},
                                {0, 0, 1},
                                {std::cos(angle), std::sin(angle), 0},
                                between(0.2, 1.2),
                                i % 3 == 0 ? 6.2831855 : 1.5707964});
    }
    return drawing;
}

std::vector<char> BufferOf(GraphicsContainer const& drawing) {
    Quorlan::ModelBuilder model;
    model.GetGeometryDefinitionBuilder().AddGraphicsContainer(drawing);
    return model.Create();
}

glm::vec3 TargetOf(std::uint32_t step) {
    auto const offset = static_cast<float>(step % 64);
    return {5 + 0.75f * offset, 35 - 0.5f * offset, 1.5f};
}

glm::vec3 const kEye{70, -25, 30};

glm::vec3 DirectionTo(glm::vec3 const& target) {
    glm::vec3 const d = target - kEye;
    return d / std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
}

void SetElementCount(benchmark::State& state) {
    auto const count = static_cast<double>(state.range(0));
    state.counters["time/element"] =
        benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Pick(benchmark::State& state, GraphicsContainer const& drawing) {
    auto const buffer = BufferOf(drawing);
    RayToGraphicsContainerBuilder builder;
    std::uint32_t step = 0;
    for (auto _ : state) {
        if (!builder.Build(kEye, DirectionTo(TargetOf(step++)), {}, buffer, 0)) state.SkipWithError("nothing found");
    }
    SetElementCount(state);
}

void Segments(benchmark::State& state) { Pick(state, Drawing(state.range(0), 0)); }

void PlainSegments(benchmark::State& state) {
    GraphicsContainer const drawing = Drawing(state.range(0), 0);
    auto const narrow = [](Vertex const& v) {
        return Vector3f{static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
    };
    std::uint32_t step = 0;
    for (auto _ : state) {
        glm::vec3 const d = DirectionTo(TargetOf(step++));
        Ray3f const ray{{kEye.x, kEye.y, kEye.z}, {d.x, d.y, d.z}};
        Vector3f point;
        float best = std::numeric_limits<float>::max();
        for (auto const& line : drawing.lines) {
            best = std::min(best, PlainDistance(ray, narrow(line.start), narrow(line.end), point));
        }
        benchmark::DoNotOptimize(best);
    }
    SetElementCount(state);
}

void Arcs(benchmark::State& state) { Pick(state, Drawing(0, state.range(0))); }

double SampledDistance(ArcSegment const& arc, Vertex const& eye, Vertex const& direction) {
    Vertex const side = Cross(arc.axis, arc.startDirection);
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i <= kSamplesPerArc; ++i) {
        double const angle = arc.sweepAngle * i / kSamplesPerArc;
        Vertex const point = arc.center + arc.radius * (std::cos(angle) * arc.startDirection + std::sin(angle) * side);
        best = std::min(best, Length(Cross(point - eye, direction)));
    }
    return best;
}

void SampledArcs(benchmark::State& state) {
    GraphicsContainer const drawing = Drawing(0, state.range(0));
    Vertex const eye{kEye.x, kEye.y, kEye.z};
    std::uint32_t step = 0;
    for (auto _ : state) {
        glm::vec3 const d = DirectionTo(TargetOf(step++));
        double best = std::numeric_limits<double>::max();
        for (ArcSegment const& arc : drawing.arcs) best = std::min(best, SampledDistance(arc, eye, {d.x, d.y, d.z}));
        benchmark::DoNotOptimize(best);
    }
    SetElementCount(state);
}

BENCHMARK(Segments)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(PlainSegments)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(Arcs)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(SampledArcs)->RangeMultiplier(10)->Range(100, 10000);

}  // namespace
