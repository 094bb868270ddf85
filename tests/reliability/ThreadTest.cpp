// Distinct tools on distinct threads over one buffer. ThreadSanitizer (preset thread) sees a race where there is one;
// without it, the results of all threads must at least agree.

#include "support/ReadEverything.h"
#include "support/RunEveryTool.h"
#include "support/SeedModels.h"

#include <GeometryObjectLib/InvalidCurve3D.h>
#include <GeometryObjectLib/Polyline3D.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <set>
#include <thread>
#include <vector>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools;

constexpr std::size_t kThreadCount = 8;

/// Runs `work(thread number)` on all threads at once.
template <class Work>
void RunOnThreads(Work const& work) {
    std::atomic<std::size_t> waiting{kThreadCount};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreadCount; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting != 0) std::this_thread::yield();
            work(i);
        });
    }
    for (auto& thread : threads) thread.join();
}

// First, so that its threads are the first to ask.
TEST(Threads, TheStaticPointsOfCurvesAreMadeOnce) {
    GeometryObjectLib::InvalidCurve3D const invalid;
    GeometryObjectLib::Polyline3D const empty{std::vector<Vertex>()};
    std::vector<std::set<Vertex const*>> points(kThreadCount);
    RunOnThreads([&](std::size_t i) {
        points[i] = {&invalid.GetStartPoint(), &invalid.GetEndPoint(), &empty.GetStartPoint(), &empty.GetEndPoint()};
        for (auto const* point : points[i]) EXPECT_EQ(point->x, 0);
    });
    for (auto const& seen : points) EXPECT_EQ(seen, points[0]);
}

TEST(Threads, PicksOnOneBufferAndOneTree) {
    auto const model = TestSupport::MakeFullSeedModel();
    RunOnThreads([&](std::size_t) { TestSupport::RunPicks(model); });
}

TEST(Threads, EveryToolOnOneBuffer) {
    auto const model = TestSupport::MakeFullSeedModel();
    RunOnThreads([&](std::size_t) {
        EXPECT_TRUE(ModelValidator().Build(model));
        TestSupport::RunEveryTool(model);
    });
}

TEST(Threads, ManyThreadsReadThroughOneReader) {
    auto const storage = ModelStorage::FromBuffer(TestSupport::MakeFullSeedModel());
    std::vector<std::size_t> sums(kThreadCount);
    RunOnThreads([&](std::size_t i) {
        sums[i] = TestSupport::ReadEverything(storage.GetModelReader());
        TestSupport::RunAnalysis(TestSupport::MakeFullSeedModel(), storage.GetModelReader());
    });
    EXPECT_EQ(std::set<std::size_t>(sums.begin(), sums.end()).size(), 1u);
}

TEST(Threads, WritersOnOneReaderWriteTheSame) {
    auto const storage = ModelStorage::FromBuffer(TestSupport::MakeFullSeedModel());
    std::vector<std::vector<char>> results(kThreadCount);
    RunOnThreads([&](std::size_t i) {
        EntityMerger merger;
        merger.Add(storage.GetModelReader(), {}, {}, L"all", OwnerHistoryChangeAction::ADDED);
        results[i] = merger.GetResult();
    });
    for (auto const& result : results) EXPECT_EQ(result, results[0]);
}

TEST(Threads, MergeAndSquashOnOnePairOfBuffers) {
    auto const seeds = TestSupport::MakeSeedModels();
    RunOnThreads([&](std::size_t i) {
        auto const& first = seeds[i % seeds.size()].buffer;
        auto const& second = seeds[(i + 1) % seeds.size()].buffer;
        EXPECT_TRUE(Increments::Merge().Build(first, second));
        EXPECT_TRUE(Increments::Squash().Build(first, second));
    });
}

}  // namespace
