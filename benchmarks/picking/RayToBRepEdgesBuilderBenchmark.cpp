#include "picking/PlainDistance.h"

#include <Quorlan/ModelBuilder.h>
#include <Tools/Picking/RayToBRepEdgesBuilder.h>
#include <Tools/Picking/RayToFacetedBRepEdgesBuilder.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

/// Edges of a shape per ray, beside the plain search: every edge clipped and measured, every corner read per edge.
namespace {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;
using Quorlan::Benchmarks::PlainDistance;
using Quorlan::Tools::Picking::RayToBRepEdgesBuilder;
using Quorlan::Tools::Picking::RayToFacetedBRepEdgesBuilder;

/// A vaulted roof of `side` x `side` quadrilaterals; neighbours share their edges, as in a building model.
FacetedBRep Roof(std::uint32_t side) {
    FacetedBRep brep;
    for (std::uint32_t i = 0; i <= side; ++i) {
        for (std::uint32_t j = 0; j <= side; ++j) {
            double const x = 20.0 * i / side - 10;
            double const y = 20.0 * j / side - 10;
            brep.vertices.push_back({x, y, 3 + std::cos(0.2 * x) * std::cos(0.15 * y)});
        }
    }
    std::uint32_t const row = side + 1;
    for (std::uint32_t i = 0; i < side; ++i) {
        for (std::uint32_t j = 0; j < side; ++j) {
            std::uint32_t const corner = i * row + j;
            brep.faces.push_back({corner, corner + row, corner + row + 1, corner + 1});
        }
    }
    return brep;
}

Ray3f TestRay(std::uint32_t step) {
    auto const offset = static_cast<float>(step % 64);
    Vector3f const target{-8 + 0.25f * offset, 7 - 0.2f * offset, 3.5f};
    Vector3f const origin{15, -25, 30};
    return {origin, (target - origin) / Length(target - origin)};
}

/// A section box whose sides cut the roof.
std::vector<Plane3f> SectionBox() {
    return {{{1, 0, 0}, 6}, {{-1, 0, 0}, 6}, {{0, 1, 0}, 6}, {{0, -1, 0}, 6}, {{0, 0, 1}, 5}, {{0, 0, -1}, 0}};
}

std::vector<char> BufferOf(FacetedBRep const& brep) {
    Quorlan::ModelBuilder model;
    model.GetGeometryDefinitionBuilder().AddBRep(brep);
    return model.Create();
}

Vector3f Narrow(Vertex const& v) { return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)}; }

bool IsOutside(std::vector<Plane3f> const& planes, Vector3f p, Vector3f q) {
    for (Plane3f const& plane : planes) {
        float const dp = Dot(plane.normal, p) - plane.distance;
        float const dq = Dot(plane.normal, q) - plane.distance;
        if (dp > 0 && dq > 0) return true;
        if ((dp > 0) != (dq > 0)) (dp > 0 ? p : q) = p + (p - q) * (dp / (dq - dp));
    }
    return !(Dot(p - q, p - q) > 1e-7f);
}

bool IsOutside(std::vector<Plane3f> const& planes, Vector3f const& p) {
    for (Plane3f const& plane : planes) {
        if (Dot(plane.normal, p) > plane.distance) return true;
    }
    return false;
}

float PlainSearch(Ray3f const& ray, std::vector<Plane3f> const& clippingPlanes, FacetedBRep const& brep) {
    std::vector<Plane3f> const planes = clippingPlanes;
    float best = std::numeric_limits<float>::max();
    for (auto const& loop : brep.faces) {
        for (std::size_t j = 0; j < loop.size(); ++j) {
            Vector3f const p = Narrow(brep.vertices[loop[j]]);
            Vector3f const q = Narrow(brep.vertices[loop[(j + 1) % loop.size()]]);
            if (IsOutside(planes, p, q)) continue;
            Vector3f point;
            float const distance = PlainDistance(ray, p, q, point);
            if (!IsOutside(planes, point) && best > distance) best = distance;
        }
    }
    return best;
}

void SetEdgeCount(benchmark::State& state, FacetedBRep const& brep) {
    auto const edges = static_cast<double>(4 * brep.faces.size());
    state.counters["edges"] = edges;
    state.counters["time/edge"] =
        benchmark::Counter(edges, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::vector<Plane3f> PlanesOf(benchmark::State const& state) {
    return state.range(1) == 0 ? std::vector<Plane3f>{} : SectionBox();
}

void FacetedBRepEdges(benchmark::State& state) {
    FacetedBRep const brep = Roof(static_cast<std::uint32_t>(state.range(0)));
    auto const planes = PlanesOf(state);
    RayToFacetedBRepEdgesBuilder builder;
    if (!builder.Build(TestRay(0), planes, brep) ||
        std::abs(builder.GetRayParameter() - PlainSearch(TestRay(0), planes, brep)) > 0.05f) {
        state.SkipWithError("not the distance of the plain search");
        return;
    }
    std::uint32_t step = 0;
    for (auto _ : state) benchmark::DoNotOptimize(builder.Build(TestRay(step++), planes, brep));
    SetEdgeCount(state, brep);
}

void StoredBRepEdges(benchmark::State& state) {
    FacetedBRep const brep = Roof(static_cast<std::uint32_t>(state.range(0)));
    auto const buffer = BufferOf(brep);
    std::vector<glm::vec4> planes;
    for (Plane3f const& plane : PlanesOf(state)) {
        planes.emplace_back(plane.normal.x, plane.normal.y, plane.normal.z, plane.distance);
    }
    RayToBRepEdgesBuilder builder;
    std::uint32_t step = 0;
    for (auto _ : state) {
        Ray3f const ray = TestRay(step++);
        bool const found = builder.BuildBRep({ray.origin.x, ray.origin.y, ray.origin.z},
                                             {ray.direction.x, ray.direction.y, ray.direction.z}, planes, buffer, 0);
        if (!found) state.SkipWithError("no edge");
    }
    SetEdgeCount(state, brep);
}

void PlainEdges(benchmark::State& state) {
    FacetedBRep const brep = Roof(static_cast<std::uint32_t>(state.range(0)));
    auto const planes = PlanesOf(state);
    std::uint32_t step = 0;
    for (auto _ : state) benchmark::DoNotOptimize(PlainSearch(TestRay(step++), planes, brep));
    SetEdgeCount(state, brep);
}

void Sizes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"side", "planes"})->ArgsProduct({{5, 16, 50, 158}, {0, 6}});
}

BENCHMARK(StoredBRepEdges)->Apply(Sizes);
BENCHMARK(FacetedBRepEdges)->Apply(Sizes);
BENCHMARK(PlainEdges)->Apply(Sizes);

}  // namespace
