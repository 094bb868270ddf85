// The sample building, cut off or with flipped bytes: as large as what users open, with all that a model can hold.

#include "support/ReadEverything.h"
#include "support/SeedModels.h"

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>
#include <gtest/gtest.h>
#include <sample/SampleBuilding.h>

#include <random>
#include <string>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools;

std::vector<char> const& GetSample() {
    static auto const sample = [] {
        QuorlanSample::SampleOptions options;
        options.storeys = 1;
        return QuorlanSample::BuildSampleBuilding(options);
    }();
    return sample;
}

/// Hands a buffer to everything that takes buffers from outside. RETURNS whether it opened.
bool Survive(std::vector<char> const& buffer) {
    bool const opens = !ModelStorage::FromBuffer(buffer).HasError();
    EXPECT_FALSE(ModelValidator().Build(buffer) && !opens);
    static auto const base = TestSupport::MakeFullSeedModel();
    EXPECT_EQ(Increments::Merge().Build(base, buffer), opens);
    EXPECT_EQ(Increments::Squash().Build(base, buffer), opens);
    return opens;
}

constexpr unsigned kShards = 10;

class DamagedSample : public ::testing::TestWithParam<unsigned> {};

TEST_P(DamagedSample, TruncatedAtEveryLength) {
    auto const& sample = GetSample();
    for (std::size_t length = GetParam(); length < sample.size(); length += kShards) {
        std::vector<char> const cut(sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_FALSE(Survive(cut) && length + 16 < sample.size()) << "more than padding is missing";
    }
}

/// Ten thousand flipped bytes, one at a time.
TEST_P(DamagedSample, AFlippedByteIsReadOrRefused) {
    auto flipped = GetSample();
    std::mt19937 random(GetParam());
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    std::size_t refused = 0;
    for (int round = 0; round < 10000; ++round) {
        auto& byte = flipped[random() % flipped.size()];
        auto const original = byte;
        byte = static_cast<char>(random());
        auto const storage = ModelStorage::FromBuffer(flipped);
        bool const isValid = ModelValidator().Build(flipped);
        ASSERT_FALSE(isValid && storage.HasError());
        refused += storage.HasError() ? 1 : 0;
        if (round % 128 == 0) Survive(flipped);
        if (round % 128 == 1 && !storage.HasError()) TestSupport::ReadEverything(storage.GetModelReader());
        byte = original;
    }
    EXPECT_GT(refused, 10u) << "the gate hardly ever sees what is wrong";
    EXPECT_LT(refused, 9000u) << "the flips hardly ever get past the gate";
}

INSTANTIATE_TEST_SUITE_P(Shards, DamagedSample, ::testing::Range(0u, kShards));

}  // namespace
