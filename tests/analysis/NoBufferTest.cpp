// What the tools over a whole model make of no bytes at all, such as the data of an empty vector.

#include <Tools/BoundingBoxBuilder.h>
#include <Tools/GraphicsContainerBuilder.h>
#include <Tools/InstancesByEntitiesBuilder.h>
#include <Tools/LodLineBRepBuilder.h>
#include <Tools/LodLineBuilder.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/QaabBuilder.h>
#include <Tools/QuantificationBuilder.h>

#include "support/RawModel.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

constexpr char const* kNoBuffer = nullptr;

template <class Tool>
class NoBuffer : public testing::Test {};

using Tools_t = testing::Types<Tools::BoundingBoxBuilder, Tools::PlacementBuilder, Tools::GraphicsContainerBuilder,
                               Tools::InstancesByEntitiesBuilder, Tools::QaabBuilder, Tools::LodLineBuilder,
                               Tools::LodLineBRepBuilder>;

struct ToolNumbers {
    template <class Tool>
    static std::string GetName(int number) {
        return std::to_string(number);
    }
};
TYPED_TEST_SUITE(NoBuffer, Tools_t, ToolNumbers);

TYPED_TEST(NoBuffer, FailsAsAnyOtherBytesThatAreNoModelDo) {
    TypeParam tool;
    EXPECT_FALSE(tool.Build(kNoBuffer));
}

TEST(NoBufferAfterAModel, KeepsWhatAFailureKeeps) {
    RawModel model;
    model.AddInstance(model.AddEntity(), model.AddDefinition({0, 0, 0}, {1, 1, 1}));
    auto const buffer = model.Write();
    Tools::BoundingBoxBuilder boxes;
    ASSERT_TRUE(boxes.Build(buffer.data()));
    EXPECT_FALSE(boxes.Build({}, kNoBuffer));
    EXPECT_EQ(boxes.getBoundingBoxes().size(), 1u);
    Tools::PlacementBuilder placements;
    ASSERT_TRUE(placements.Build(buffer.data()));
    EXPECT_FALSE(placements.Build(kNoBuffer, {}));
    EXPECT_EQ(placements.getPlacements().size(), 1u);
    Tools::LodLineBuilder lines;
    ASSERT_TRUE(lines.Build(buffer.data()));
    EXPECT_FALSE(lines.Build(kNoBuffer, {}));
    EXPECT_EQ(lines.GetLodLines().size(), 1u);
    EXPECT_FALSE(Tools::QuantificationBuilder(kNoBuffer).Build(0));
}

}  // namespace
