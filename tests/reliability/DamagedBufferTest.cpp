// What is cut off or flipped in a buffer may make it unreadable, and nothing else. The sanitizers of the debug build
// see what goes wrong without a wrong result.

#include "support/ReadEverything.h"
#include "support/RunEveryTool.h"
#include "support/SeedModels.h"

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools;

/// Hands a buffer to everything that takes buffers from outside. RETURNS whether it opened.
bool Survive(std::vector<char> const& buffer, std::vector<char> const& other) {
    auto const storage = ModelStorage::FromBuffer(buffer);
    bool const isValid = ModelValidator().Build(buffer);
    EXPECT_FALSE(isValid && storage.HasError());
    Increments::Merge merge;
    Increments::Squash squash;
    EXPECT_EQ(merge.Build(other, buffer), !storage.HasError());
    EXPECT_EQ(squash.Build(other, buffer), !storage.HasError());
    return !storage.HasError();
}

std::vector<char> GetOther() { return TestSupport::MakeSeedModels()[3].buffer; }

TEST(DamagedBuffer, TruncatedAtEveryLength) {
    auto const model = TestSupport::MakeFullSeedModel();
    auto const other = GetOther();
    std::size_t opened = 0;
    for (std::size_t length = 0; length <= model.size(); ++length) {
        // An empty increment is no buffer; an empty base is a model without entities.
        opened += Survive(std::vector<char>(model.begin(), model.begin() + static_cast<std::ptrdiff_t>(length)), other);
    }
    EXPECT_GE(opened, 1u);
    EXPECT_LT(opened, 16u) << "only padding may be missing";
}

/// Ten thousand models with one to four flipped bytes each, read and put into increments.
class FlippedBytes : public ::testing::TestWithParam<unsigned> {};

TEST_P(FlippedBytes, AreReadOrRefused) {
    auto const full = TestSupport::MakeFullSeedModel();
    auto const box = TestSupport::MakeSeedModels()[1].buffer;
    auto const other = GetOther();
    std::mt19937 random(GetParam());
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    std::size_t opened = 0;
    for (int round = 0; round < 10000; ++round) {
        auto flipped = round % 4 == 0 ? full : box;
        for (unsigned flips = 1 + random() % 4; flips > 0; --flips) {
            flipped[random() % flipped.size()] = static_cast<char>(random());
        }
        auto const storage = ModelStorage::FromBuffer(flipped);
        bool const isValid = ModelValidator().Build(flipped);
        ASSERT_FALSE(isValid && storage.HasError());
        if (storage.HasError()) continue;
        ++opened;
        TestSupport::ReadEverything(storage.GetModelReader());
        if (round % 32 == 0) Survive(flipped, other);
        if (isValid && round % 32 == 1) TestSupport::RunEveryTool(flipped);
    }
    EXPECT_GT(opened, 1000u) << "the flips hardly ever get past the gate";
}

INSTANTIATE_TEST_SUITE_P(Seeds, FlippedBytes, ::testing::Range(1u, 11u));

}  // namespace
