// Boxes and matrices with AVX2 and without, both beside the plain computation, to the bit.

#include "analysis/PlacedInstances.h"

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

template <class Value>
void ExpectSameBits(std::vector<Value> const& values, std::vector<Value> const& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_TRUE(SameBits(values[i], expected[i])) << "instance " << i;
}

void ExpectPlainBits(RawModel const& model, AffineTransform const& caller) {
    auto const buffer = model.Write();
    auto const view = *ModelView::Open(buffer.data());
    auto const boxes = PlainBoxes(model, caller);
    auto const matrices = PlainPlacements(model);
    auto const products = PlainPlacements(model, &caller.matrix);
    for (bool const usesAvx2 : {false, HasAvx2()}) {
        SCOPED_TRACE(usesAvx2);
        std::vector<AxisAlignedBox3> computedBoxes;
        ComputeBoxes(view, Frame(caller), computedBoxes, usesAvx2);
        ExpectSameBits(computedBoxes, boxes);
        std::vector<Matrix4> computed;
        ComputePlacements(view, nullptr, computed, usesAvx2);
        ExpectSameBits(computed, matrices);
        ComputePlacements(view, &caller.matrix, computed, usesAvx2);
        ExpectSameBits(computed, products);
    }
}

/// Counts around the eight instances that are computed at once, the 32 that are fetched ahead and the ends of blocks.
TEST(PlacedInstances, OfAnyCountHaveTheBitsOfThePlainComputation) {
    for (std::uint32_t const count : {1u,   7u,   8u,   31u,  32u,  39u,  40u,  41u,  47u,  48u,  127u,
                                      128u, 129u, 160u, 161u, 335u, 336u, 337u, 367u, 368u, 376u, 1000u}) {
        SCOPED_TRACE(count);
        ExpectPlainBits(MakeRandomModel(count + 7, count), RandomTransform(count));
    }
}

TEST(PlacedInstances, OfAnyStyleHaveTheBitsOfThePlainComputation) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kRotated, RandomPlacements::kMixed}) {
        for (std::uint32_t seed = 0; seed < 5; ++seed) {
            ExpectPlainBits(MakeRandomModel(seed, 400, style), RandomTransform(seed));
            ExpectPlainBits(MakeRandomModel(seed, 400, style), {});
        }
    }
}

/// Each odd number in each place of a placement and of the bounds, in different lanes.
TEST(PlacedInstances, OddNumbersHaveTheBitsOfThePlainComputation) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kTiny = std::numeric_limits<float>::denorm_min();
    RandomNumbers random(5);
    for (float const odd : {0.0F, -0.0F, kInfinity, -kInfinity, kNaN, kTiny, 3e38F}) {
        SCOPED_TRACE(odd);
        RawModel model = MakeRandomModel(11, 96, RandomPlacements::kAligned);
        for (std::size_t i = 0; i < 24; ++i) {
            auto& placement = (random.Below(2) == 0 ? *model.placements : *model.entities)[random.Below(40)];
            std::size_t const axis = i % 3;
            if (i % 4 == 0) placement.origin[axis] = odd;
            if (i % 4 == 1) placement.xAxis[axis] = odd;
            if (i % 4 == 2) placement.yAxis[axis] = odd;
            if (i % 4 == 3) (*model.definitions)[random.Below(12)].lo.y = odd;
        }
        ExpectPlainBits(model, {});
    }
}

TEST(PlacedInstances, ComputedAgainReplaceThoseOfAnyOtherCount) {
    for (bool const usesAvx2 : {false, HasAvx2()}) {
        std::vector<AxisAlignedBox3> boxes;
        std::vector<Matrix4> matrices;
        for (std::uint32_t const count : {700u, 3u, 300u, 1400u, 699u, 700u}) {
            SCOPED_TRACE(count);
            auto const model = MakeRandomModel(count, count);
            auto const buffer = model.Write();
            auto const view = *ModelView::Open(buffer.data());
            ComputeBoxes(view, {}, boxes, usesAvx2);
            ExpectSameBits(boxes, PlainBoxes(model));
            ComputePlacements(view, nullptr, matrices, usesAvx2);
            ExpectSameBits(matrices, PlainPlacements(model));
        }
    }
}

}  // namespace
