#include "cli/Program.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>
#include <gmock/gmock.h>

#include <algorithm>

namespace {

using namespace Quorlan;
using ::testing::HasSubstr;
using Testing::RunQuorlan;

_GUID GuidOf(std::uint32_t number) { return {number, 0, 0, {}}; }

class Quantities : public Testing::ProgramTest {
protected:
    /// Writes one entity per shape, named and layered as given, and returns the rows of `quorlan quantities`.
    struct part_s {
        FacetedBRep shape;
        std::wstring name;
        std::string layer;
    };

    nlohmann::json Bill(std::vector<part_s> const& parts, std::vector<std::string> arguments = {}) {
        ModelBuilder builder;
        std::uint32_t number = 0;
        for (auto const& part : parts) {
            auto const entity = builder.GetEntityWriter().AddEntity(GuidOf(number++), part.name, {});
            auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(part.shape);
            auto const layer = builder.GetLayerWriter().AddLayer(part.layer);
            builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, layer,
                                                    TestSupport::MakeTranslation(10, 0, 0));
        }
        Testing::WriteBytes(PathOf("m.qln"), builder.Create());
        arguments.insert(arguments.begin(), {"quantities", PathOf("m.qln"), "--format", "json"});
        auto const run = RunQuorlan(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return nlohmann::json::parse(run.out);
    }
};

TEST_F(Quantities, AClosedSolidIsTrusted) {
    auto const rows = Bill({{TestSupport::MakePlateWithHole(), L"plate", "slabs"}});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["name"], "plate");
    EXPECT_NEAR(rows[0]["volume"], 12, 1e-9);
    EXPECT_NEAR(rows[0]["area"], 2 * 12 + 16 + 8, 1e-9);
    EXPECT_NEAR(rows[0]["centerX"], 12, 1e-9);
    EXPECT_EQ(rows[0]["trust"], "closed");
}

TEST_F(Quantities, AnOpenBoxIsMarked) {
    auto box = TestSupport::MakeUnitCube();
    box.faces.pop_back();
    EXPECT_EQ(Bill({{box, L"", ""}})[0]["trust"], "open");
}

TEST_F(Quantities, AnInvertedBoxIsMarkedAndItsVolumeNegative) {
    auto box = TestSupport::MakeUnitCube();
    for (auto& loop : box.faces) std::reverse(loop.begin(), loop.end());
    auto const rows = Bill({{box, L"", ""}});
    EXPECT_NEAR(rows[0]["volume"], -1, 1e-9);
    EXPECT_EQ(rows[0]["trust"], "inverted");
}

TEST_F(Quantities, OneFaceTurnedRoundIsMarked) {
    auto box = TestSupport::MakeUnitCube();
    std::reverse(box.faces[0].begin(), box.faces[0].end());
    EXPECT_THAT(Bill({{box, L"", ""}})[0]["trust"].get<std::string>(), HasSubstr("not used once in each direction"));
}

TEST_F(Quantities, VerticesAtOnePositionCountAsOne) {
    auto const cube = TestSupport::MakeUnitCube();
    FacetedBRep soup;
    for (auto const& loop : cube.faces) {
        soup.faces.emplace_back();
        for (auto const index : loop) {
            soup.faces.back().push_back(static_cast<std::uint32_t>(soup.vertices.size()));
            soup.vertices.push_back(cube.vertices[index]);
        }
    }
    EXPECT_EQ(Bill({{soup, L"", ""}})[0]["trust"], "closed");
}

TEST_F(Quantities, LinesAddUpByLayerAndByName) {
    auto const cube = TestSupport::MakeUnitCube();
    std::vector<part_s> const parts = {{cube, L"a", "walls"}, {cube, L"b", "walls"}, {cube, L"a", "doors"}};
    auto const byLayer = Bill(parts, {"--by", "layer"});
    ASSERT_EQ(byLayer.size(), 2u);
    EXPECT_EQ(byLayer[0]["layer"], "walls");
    EXPECT_EQ(byLayer[0]["entities"], 2);
    EXPECT_NEAR(byLayer[0]["volume"], 2, 1e-9);
    auto const byName = Bill(parts, {"--by", "name"});
    ASSERT_EQ(byName.size(), 2u);
    EXPECT_EQ(byName[0]["name"], "a");
    EXPECT_EQ(byName[0]["layer"], "several");
    EXPECT_NEAR(byName[0]["centerX"], 10.5, 1e-9);
}

TEST_F(Quantities, KindsThatDoNotCountAreNamed) {
    ModelBuilder builder;
    auto const cube = TestSupport::MakeUnitCube();
    std::vector<Vertex> const normals(cube.vertices.size(), Vertex{0, 0, 1});
    auto const entity = builder.GetEntityWriter().AddEntity(GuidOf(1), L"", {});
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    for (auto const shape : {definitions.AddBRepWithNormals({&cube, &normals}),
                             definitions.AddGraphicsContainer({{{{0, 0, 0}, {1, 0, 0}}}, {}})}) {
        builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex, {});
    }
    Testing::WriteBytes(PathOf("m.qln"), builder.Create());
    auto const run = RunQuorlan({"quantities", PathOf("m.qln"), "--format", "json"});
    auto const rows = nlohmann::json::parse(run.out);
    EXPECT_EQ(rows[0]["trust"], "lines left out; shapes with normals left out");
    EXPECT_EQ(rows[0]["shapes"], 0);
    EXPECT_EQ(rows[0]["volume"], 0);
}

TEST_F(Quantities, OneEntityCanBeAskedForAndAnUnknownOneIsAnError) {
    auto const model = WriteTwoCubes();
    auto const run = RunQuorlan({"quantities", model, "--entity", Testing::kFarGuid, "--format", "json"});
    auto const rows = nlohmann::json::parse(run.out);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["guid"], Testing::kFarGuid);
    Testing::ExpectFailure(RunQuorlan({"quantities", model, "--entity", "nobody"}), {"m", "nobody", "not there"});
}

TEST_F(Quantities, TextEndsWithTheTotal) {
    auto const run = RunQuorlan({"quantities", WriteTwoCubes()});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.out, HasSubstr("total"));
    EXPECT_THAT(run.out, HasSubstr("2 entities, 2 shapes"));
}

}  // namespace
