#include "cli/Program.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/BoundingBoxBuilder.h>
#include <gmock/gmock.h>

/// The commands combine and resolve.
namespace {

using ::testing::HasSubstr;
using namespace Quorlan::Testing;

class Combine : public ProgramTest {};

std::vector<GeometryObjectLib::AxisAlignedBox3> BoxesOf(std::string const& path) {
    auto const bytes = ReadBytes(path);
    Quorlan::Tools::BoundingBoxBuilder builder;
    EXPECT_TRUE(builder.Build(bytes.data()));
    return builder.getBoundingBoxes();
}

TEST_F(Combine, EveryModelBecomesOneEntityWithItsShapesWhereTheyWere) {
    auto const sample = WriteSample();
    auto const cubes = WriteTwoCubes(100);
    auto const run = RunQuorlan({"combine", sample, cubes, "-o", PathOf("site.qln"), "--name", "House"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const storage = Quorlan::ModelStorage::FromBuffer(ReadBytes(PathOf("site.qln")));
    ASSERT_FALSE(storage.HasError());
    EXPECT_EQ(storage.GetModelReader().GetEntities().GetCount(), 2u);

    auto expected = BoxesOf(sample);
    auto const others = BoxesOf(cubes);
    expected.insert(expected.end(), others.begin(), others.end());
    auto const boxes = BoxesOf(PathOf("site.qln"));
    ASSERT_EQ(boxes.size(), expected.size());
    // A shape that is stored as a turned copy of another has another box of its own, but the same middle or nearly so.
    for (std::size_t i = boxes.size() - 2; i < boxes.size(); ++i) {
        EXPECT_NEAR(boxes[i].center.x, expected[i].center.x, 1e-5);
        EXPECT_NEAR(boxes[i].halfExtent.z, expected[i].halfExtent.z, 1e-5);
    }
}

TEST_F(Combine, GuidsAreTheCallersAndMoreOfThemThanModelsIsWrongUsage) {
    auto const cubes = WriteTwoCubes();
    auto const run = RunQuorlan({"combine", cubes, "-o", PathOf("site.qln"), "--guid", kFarGuid});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto const found = RunQuorlan({"resolve", PathOf("site.qln"), kFarGuid});
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_THAT(found.out, HasSubstr(kFarGuid));
    EXPECT_EQ(RunQuorlan({"combine", cubes, "-o", PathOf("b.qln"), "--guid", kFarGuid, "--guid", kNearGuid}).exitCode,
              2);
    ExpectFailure(RunQuorlan({"combine", cubes, "-o", cubes}), {cubes});
}

TEST_F(Combine, ResolveNamesTheEntityOfEitherFormOfItsGuid) {
    auto const cubes = WriteTwoCubes();
    auto const found = RunQuorlan({"resolve", cubes, kFarGuid});
    EXPECT_EQ(found.exitCode, 0) << found.err;
    EXPECT_THAT(found.out, HasSubstr("far"));
    auto guid = RunQuorlan({"guid", kFarGuid}).out;
    guid.erase(guid.find_last_not_of('\n') + 1);
    EXPECT_EQ(RunQuorlan({"resolve", cubes, guid}).out, found.out);
    auto const none = RunQuorlan({"resolve", cubes, "nobody"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.out, "");
}

}  // namespace
