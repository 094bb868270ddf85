#include "cli/Program.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <Tools/BoundingBoxBuilder.h>
#include <gmock/gmock.h>

#include <sstream>
#include <variant>

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

/// Two entities, one twice under its GUID, with a property each, and one with two owner histories.
std::vector<char> WriteHistoried() {
    Quorlan::ModelBuilder builder;
    auto const wall = builder.GetEntityWriter().AddEntity({1, 2, 3, {4}}, L"Wall \u00e4", {});
    auto const twin = builder.GetEntityWriter().AddEntity({1, 2, 3, {4}}, L"Twin", {});
    builder.GetEntityWriter().AddEntityWithIdentifierText("door-7", L"", {});
    auto& histories = builder.GetOwnerHistoryWriter();
    auto const part = histories.AddOwnerPart({"ann", "office", "editor"});
    auto const record = histories.AddOwnerHistoryRecord({5, Quorlan::OwnerHistoryChangeAction::MODIFIED, 100, 200});
    histories.LinkOwnerHistory(wall, histories.AddOwnerHistory(part, record, {"early", ""}));
    histories.LinkOwnerHistory(wall, histories.AddOwnerHistory(part, record, {"bob", "viewer"}));
    builder.GetPropertyWriter().AddProperty(wall, {"Common", "Mark", std::string("W1")});
    builder.GetPropertyWriter().AddProperty(twin, {"Common", "Length", 2.5});
    return builder.Create();
}

std::vector<std::string> PropertiesOf(std::string const& path, std::uint32_t entity) {
    auto const storage = Quorlan::ModelStorage::FromBuffer(ReadBytes(path));
    auto const& properties = storage.GetModelReader().GetProperties();
    std::vector<std::string> lines;
    Quorlan::PropertyRecord property;
    for (std::uint32_t i = 0; i < properties.GetPropertyCount(Quorlan::EntityIndex_t{entity}); ++i) {
        properties.GetProperty(property, Quorlan::EntityIndex_t{entity}, i);
        std::ostringstream value;
        std::visit([&value](auto const& v) { value << v; }, property.value);
        lines.push_back(property.set + "|" + property.name + "|" + value.str());
    }
    return lines;
}

TEST_F(Combine, NamesPropertiesAndOwnerHistoriesBecomePropertySets) {
    WriteBytes(PathOf("a.qln"), WriteHistoried());
    auto const cubes = WriteTwoCubes();
    auto const run = RunQuorlan({"combine", cubes, PathOf("a.qln"), "-o", PathOf("site.qln")});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto guid = RunQuorlan({"guid", "00000001-0002-0003-0400-000000000000"}).out;
    guid.erase(guid.find_last_not_of('\n') + 1);
    auto const history = guid + "/OwnerHistory";
    EXPECT_THAT(PropertiesOf(PathOf("site.qln"), 1),
                ::testing::ElementsAre(guid + "|Name|Wall \u00e4", guid + "/Common|Mark|W1", history + "|User|ann",
                                       history + "|Organization|office", history + "|Application|editor",
                                       history + "|LastModifyingUser|bob", history + "|LastModifyingApplication|viewer",
                                       history + "|State|5", history + "|ChangeAction|1", history + "|CreationDate|100",
                                       history + "|LastModifiedDate|200", guid + " (2)|Name|Twin",
                                       guid + " (2)/Common|Length|2.5", "door-7|Name|"));
    EXPECT_THAT(PropertiesOf(PathOf("site.qln"), 0),
                ::testing::IsSupersetOf(
                    {std::string(kNearGuid) + "|Name|near", std::string(kFarGuid) + "|Name|far, \"behind\""}));
    EXPECT_THAT(run.err, HasSubstr("a.qln: 3 entities became one; which shape was whose is not kept\n"));
    EXPECT_THAT(run.err, HasSubstr("a.qln: 3 entities have no shape; where they stood is not kept\n"));
    EXPECT_THAT(run.err, HasSubstr("a.qln: 1 older owner histories are not kept\n"));
    EXPECT_THAT(run.err, ::testing::Not(HasSubstr("were left out")));
}

TEST_F(Combine, LayersAndMaterialsOfInstancesStay) {
    auto const cubes = WriteTwoCubes();
    ASSERT_EQ(RunQuorlan({"combine", cubes, cubes, "-o", PathOf("site.qln")}).exitCode, 0);
    auto const looksOf = [](std::string const& path) {
        auto const storage = Quorlan::ModelStorage::FromBuffer(ReadBytes(path));
        auto const& geometry = storage.GetModelReader().GetGeometry();
        std::vector<std::string> looks;
        Quorlan::InstanceRecord instance;
        Quorlan::MaterialRecord material;
        std::string layer;
        for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
            geometry.GetInstance(instance, i);
            geometry.GetMaterial(material, instance.materialIndex);
            geometry.GetLayerName(layer, instance.layerIndex);
            looks.push_back(layer + std::to_string(material.color[0]) + "," + std::to_string(material.color[2]));
        }
        return looks;
    };
    auto expected = looksOf(cubes);
    auto const again = expected;
    expected.insert(expected.end(), again.begin(), again.end());
    EXPECT_EQ(looksOf(PathOf("site.qln")), expected);
}

TEST_F(Combine, InstancesWithoutAShapeAreCounted) {
    Quorlan::ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({7, 0, 0, {}}, L"dot", {});
    Quorlan::FacetedBRep dot;
    dot.vertices = {{0, 0, 0}, {1, 0, 0}};
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(dot);
    builder.GetInstanceWriter().AddInstance(entity, shape, Quorlan::kInvalidIndex, Quorlan::kInvalidIndex, {});
    WriteBytes(PathOf("dot.qln"), builder.Create());
    auto const run = RunQuorlan({"combine", PathOf("dot.qln"), "-o", PathOf("out.qln")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err, HasSubstr("out.qln: 1 instances have no shape and were left out\n"));
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
