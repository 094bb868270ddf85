// Whole models, the sample building and real ones, with AVX2 and without: the same bits, and those of the plain
// computation.

#include "analysis/BRepMeter.h"
#include "analysis/PlacedInstances.h"
#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/ReadRecords.h"
#include "support/RealModels.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>
#include <sample/SampleBuilding.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

class Dispatch : public testing::Test {
protected:
    void SetUp() override {
        if (!HasAvx2()) GTEST_SKIP() << "the processor has no AVX2, or the build no code for it";
    }
};

template <class Value>
void ExpectSameBits(std::vector<Value> const& values, std::vector<Value> const& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_TRUE(SameBits(values[i], expected[i])) << "instance " << i;
}

/// Returns the number of instances.
std::size_t ExpectSamePlaces(std::vector<char> const& buffer) {
    auto const view = *ModelView::Open(buffer.data());
    RawModel const records = ReadRecords(buffer);
    AffineTransform const caller = RandomTransform(3);
    for (bool const usesAvx2 : {false, true}) {
        SCOPED_TRACE(usesAvx2);
        std::vector<AxisAlignedBox3> boxes;
        ComputeBoxes(view, Frame(caller), boxes, usesAvx2);
        ExpectSameBits(boxes, PlainBoxes(records, caller));
        std::vector<Matrix4> matrices;
        ComputePlacements(view, nullptr, matrices, usesAvx2);
        ExpectSameBits(matrices, PlainPlacements(records));
        ComputePlacements(view, &caller.matrix, matrices, usesAvx2);
        ExpectSameBits(matrices, PlainPlacements(records, &caller.matrix));
    }
    return records.instances->size();
}

/// Returns the number of shapes.
std::size_t ExpectSameQuantities(std::vector<char> const& buffer) {
    Schema::Geometry const& geometry = *ModelView::Open(buffer.data())->geometry;
    BRepMeter plain(false);
    BRepMeter wide(true);
    std::size_t count = 0;
    for (std::uint32_t i = 0; i < CountOf(geometry.definitions()); ++i) {
        auto const* const definition = geometry.definitions()->Get(i);
        auto const brep = FindBRep(geometry, definition->kind(), definition->kindIndex());
        if (!brep) continue;
        BRepQuantities const expected = plain.Measure(*brep);
        BRepQuantities const measured = wide.Measure(*brep);
        EXPECT_TRUE(SameBits(measured.area, expected.area) && SameBits(measured.volume, expected.volume) &&
                    SameBits(measured.centroid, expected.centroid))
            << "definition " << i;
        ++count;
    }
    return count;
}

TEST_F(Dispatch, SampleBuildingHasTheSameBits) {
    auto const model = QuorlanSample::BuildSampleBuilding();
    EXPECT_GT(ExpectSamePlaces(model), 2000u);
    EXPECT_GT(ExpectSameQuantities(model), 100u);
}

TEST_F(Dispatch, RealModelsHaveTheSameBits) {
    TestSupport::CheckRealModels([](std::vector<char> const& model) {
        EXPECT_GT(ExpectSamePlaces(model), 0u);
        EXPECT_GT(ExpectSameQuantities(model), 0u);
    });
}

}  // namespace
