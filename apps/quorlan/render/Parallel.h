#pragma once

#include "Progress.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace QuorlanProgram {

/// Calls `work(y)` for every row of a picture, on all processors, and shows the progress.
template <class Work>
void ForEachRow(std::uint32_t height, Work const& work) {
    std::atomic<std::uint32_t> next{0};
    std::mutex reporting;
    Progress progress(height);
    auto const run = [&] {
        for (auto y = next++; y < height; y = next++) {
            work(y);
            std::lock_guard<std::mutex> const lock(reporting);
            progress.Report(y + 1);
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < std::max(1u, std::thread::hardware_concurrency()); ++i) threads.emplace_back(run);
    run();
    for (auto& thread : threads) thread.join();
}

}  // namespace QuorlanProgram
