// Picks in whole models, the sample building and real ones, with AVX2 and without, beside the plain rules: the same
// candidates in the same order, and the same nearest surface to the bit.

#include "picking/PlainPick.h"
#include "picking/PlainTreeWalk.h"
#include "picking/SurfacePick.h"
#include "support/RealModels.h"
#include "support/SameBits.h"

#include <Tools/BoundingBoxBuilder.h>
#include <Tools/QaabBuilder.h>
#include <sample/SampleBuilding.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace Quorlan::Testing;
using Quorlan::HasAvx2;

/// Rays in and around a model.
class Rays {
public:
    explicit Rays(std::vector<GeometryObjectLib::AxisAlignedBox3> const& boxes) : boxes_(boxes) {}

    /// From beside one instance, or from outside the model, towards another instance or past it.
    ModelRay Next() {
        Vertex const target = GetCenter() + Point(0.4);
        Vertex const origin = random_() % 2 == 0 ? GetCenter() + Point(3) : GetCenter() + Point(60);
        Vertex const direction = target - origin;
        return {origin, direction / Length(direction)};
    }

private:
    Vertex GetCenter() { return boxes_[random_() % boxes_.size()].center; }
    Vertex Point(double size) {
        std::uniform_real_distribution<double> between(-size, size);
        double const x = between(random_), y = between(random_);
        return {x, y, between(random_)};
    }

    std::vector<GeometryObjectLib::AxisAlignedBox3> const& boxes_;
    std::mt19937 random_{29};
};

void ExpectSamePick(std::optional<SurfacePick> const& pick, PlainHit const& plain) {
    ASSERT_EQ(pick.has_value(), plain.instance != Quorlan::kInvalidIndex);
    if (!pick) return;
    EXPECT_EQ(pick->instance, plain.instance);
    EXPECT_EQ(pick->face, plain.primitive);
    EXPECT_TRUE(SameBits(pick->distance, double{plain.t}));
}

/// Returns the share of rays that hit.
double ExpectPlainPicks(std::vector<char> const& buffer) {
    auto const model = *ModelView::Open(buffer.data());
    Quorlan::Tools::BoundingBoxBuilder boxes;
    Quorlan::Tools::QaabBuilder nodes;
    EXPECT_TRUE(boxes.Build(buffer.data()) && nodes.Build(buffer.data()));
    QuantizedAxisAlignedBoxTree const tree(nodes.getOrigin(), nodes.getBvhQuantization(), nodes.getNodes());
    Rays rays(boxes.getBoundingBoxes());
    constexpr int kRays = 1000;
    int hits = 0;
    for (int i = 0; i < kRays && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE(i);
        ModelRay const ray = rays.Next();
        auto const candidates = FindInScalars(tree, ray);
        auto const plain = PlainPickSurfaces(model, ray, {}, candidates);
        for (bool const usesAvx2 : {false, HasAvx2()}) {
            EXPECT_EQ(FindItemsAlongRay(tree, ray, {}, usesAvx2), candidates);
            ExpectSamePick(FindNearestSurface(model, {}, ray, {}, candidates, usesAvx2), plain);
        }
        hits += plain.instance != Quorlan::kInvalidIndex ? 1 : 0;
    }
    return double(hits) / kRays;
}

TEST(WholeModelPick, SampleBuildingIsPickedAsByThePlainRules) {
    EXPECT_GT(ExpectPlainPicks(QuorlanSample::BuildSampleBuilding()), 0.7);
}

TEST(WholeModelPick, RealModelsArePickedAsByThePlainRules) {
    TestSupport::CheckRealModels([](std::vector<char> const& model) { EXPECT_GT(ExpectPlainPicks(model), 0.5); });
}

}  // namespace
