#include "support/RawModel.h"

#include "model/ModelView.h"

#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

TEST(RawModel, WritesWhatAVerifierAccepts) {
    RawModel model;
    model.materials.emplace({RawMaterial{1, -1}});
    model.layers.emplace({std::string("Walls")});
    model.graphicsContainers.emplace(2);
    auto const entity = model.AddEntity(At(1, 2, 3));
    for (std::uint8_t const kind : {kFacetedBRep, kBRepWithUV, kBRepWithNormal}) {
        model.AddInstance(entity, model.AddBRep(RawBox({0, 0, 0}, {1, 2, 3}), kind), At(0, 0, kind), 0, 0);
    }
    auto const buffer = model.Write();

    flatbuffers::Verifier verifier(reinterpret_cast<std::uint8_t const*>(buffer.data()), buffer.size());
    EXPECT_TRUE(Schema::VerifyModelBuffer(verifier));
    auto const view = ModelView::Open(buffer.data());
    ASSERT_TRUE(view);
    EXPECT_EQ(view->records->size(), 1u);
    EXPECT_EQ(view->GetInstanceCount(), 3u);
    EXPECT_EQ(view->geometry->definitions()->Get(0)->boundsMax().z(), 3);
    EXPECT_EQ(view->geometry->materials()->Get(0)->twoSided(), 1);
    EXPECT_EQ(FindBRep(*view->geometry, kBRepWithNormal, 0)->GetPosition(6).y, 2);
}

TEST(RawModel, LeavesOutWhatIsNullopt) {
    RawModel model;
    model.instances = std::nullopt;
    auto const buffer = model.Write();
    auto const view = ModelView::Open(buffer.data());
    ASSERT_TRUE(view);
    EXPECT_EQ(view->geometry->instances(), nullptr);
    EXPECT_NE(view->geometry->placements(), nullptr);
    EXPECT_EQ(view->geometry->facetedBReps(), nullptr);
}

}  // namespace
