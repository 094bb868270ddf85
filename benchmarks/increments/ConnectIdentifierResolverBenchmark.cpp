// Resolving boxes in models of three sizes: the library's search tree beside a scan of all boxes.

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <Tools/ConnectIdentifierResolver.h>
#include <Tools/Identifiers.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools;

constexpr double kTolerance = 1e-3;

/// Boxes of a building of floors: many share their lower and upper height.
std::vector<EntityBox_t> MakeBoxes(std::int64_t count) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> coordinate(0, 200);
    std::uniform_real_distribution<double> size(0.1, 6);
    std::vector<EntityBox_t> boxes;
    for (std::int64_t i = 0; i < count; ++i) {
        double const x = coordinate(random);
        double const y = coordinate(random);
        double const z = 3.0 * static_cast<double>(random() % 12);
        boxes.push_back({x, y, z, x + size(random), y + size(random), z + 2.75});
    }
    return boxes;
}

std::vector<std::string> MakeIdentifiers(std::vector<EntityBox_t> const& boxes) {
    std::vector<std::string> identifiers;
    for (EntityBox_t const& box : boxes) {
        std::vector<char> bytes(sizeof(box));
        std::memcpy(bytes.data(), box.data(), bytes.size());
        identifiers.push_back(Base64Encode(bytes));
    }
    return identifiers;
}

ModelStorage MakeModel(std::int64_t count) {
    ModelBuilder builder;
    for (std::int64_t i = 0; i < count; ++i)
        builder.GetEntityWriter().AddEntityWithoutIdentifier(L"", AffineTransform());
    return ModelStorage::FromBuffer(builder.Create());
}

void ResolveBox(benchmark::State& state) {
    auto const boxes = MakeBoxes(state.range(0));
    auto const identifiers = MakeIdentifiers(boxes);
    ModelStorage const model = MakeModel(state.range(0));
    auto const resolver = CreateConnectIdentifierResolver(model.GetModelReader(), boxes, kTolerance, 1).resolver;
    std::vector<EntityIndex_t> found;
    std::size_t i = 0;
    for (auto _ : state) {
        found.clear();
        if (!resolver->Resolve(identifiers[i], found)) state.SkipWithError("not found");
        i = (i + 7919) % identifiers.size();
    }
}
BENCHMARK(ResolveBox)->RangeMultiplier(10)->Range(1000, 100000);

void ResolveBoxPlain(benchmark::State& state) {
    auto const boxes = MakeBoxes(state.range(0));
    auto const identifiers = MakeIdentifiers(boxes);
    std::vector<double> values;
    std::vector<std::size_t> found;
    std::size_t i = 0;
    for (auto _ : state) {
        values.clear();
        found.clear();
        DecodeDoubles(identifiers[i], values);
        for (std::size_t box = 0; box < boxes.size(); ++box) {
            bool matches = true;
            for (std::size_t k = 0; k < 6 && matches; ++k) matches = std::abs(boxes[box][k] - values[k]) <= kTolerance;
            if (matches) found.push_back(box);
        }
        if (found.empty()) state.SkipWithError("not found");
        i = (i + 7919) % identifiers.size();
    }
}
BENCHMARK(ResolveBoxPlain)->RangeMultiplier(10)->Range(1000, 100000);

void CreateResolver(benchmark::State& state) {
    auto const boxes = MakeBoxes(state.range(0));
    ModelStorage const model = MakeModel(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            CreateConnectIdentifierResolver(model.GetModelReader(), boxes, kTolerance, 1).resolver);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CreateResolver)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

}  // namespace
