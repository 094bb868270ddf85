#include "model/InstanceLanes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

struct Value {
    std::uint64_t words[4];
};

/// Value i holds 7 i + 0 to 7 i + 3.
void Compute(std::uint32_t first, Value* out) {
    for (std::uint32_t lane = 0; lane < Quorlan::kLaneCount; ++lane) {
        for (std::uint64_t k = 0; k < 4; ++k) out[lane].words[k] = (first + lane) * std::uint64_t{7} + k;
    }
}

void ExpectFilled(std::vector<Value> const& values, std::uint32_t count) {
    ASSERT_EQ(values.size(), count);
    for (std::uint32_t i = 0; i < count; ++i) {
        for (std::uint64_t k = 0; k < 4; ++k) ASSERT_EQ(values[i].words[k], i * std::uint64_t{7} + k) << i;
    }
}

TEST(InstanceLanes, StreamedResultsAreThoseOfTheCache) {
    for (std::size_t const streamedSize : {std::size_t{0}, Quorlan::kStreamedSize}) {
        for (std::uint32_t const count : {1u, 5u, 511u, 512u, 513u, 3000u}) {
            std::vector<Value> values;
            for (int build = 0; build < 3; ++build) {  // into new memory, then over what is there
                Quorlan::FillByLanes(values, count, Compute, streamedSize);
                ExpectFilled(values, count);
            }
            Quorlan::FillByLanes(values, count / 2 + 1, Compute, streamedSize);
            ExpectFilled(values, count / 2 + 1);
        }
    }
}

}  // namespace
