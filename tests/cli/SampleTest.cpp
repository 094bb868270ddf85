#include "cli/Program.h"

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <png.h>
#include <sample/SampleBuilding.h>

#include <array>
#include <map>
#include <set>

namespace Quorlan::Testing {
namespace {

using QuorlanSample::BuildSampleBuilding;
using QuorlanSample::SampleOptions;

using Sample = ProgramTest;

SampleOptions Storeys(std::uint32_t count) {
    SampleOptions options;
    options.storeys = count;
    return options;
}

/// The edges of a solid by their ends' positions, how often they are run through, minus the other way round; and six
/// times the volume.
struct SolidCheck {
    std::map<std::array<double, 6>, int> edges;
    double volume = 0;

    explicit SolidCheck(FacetedBRep const& solid) {
        for (std::size_t face = 0; face < solid.GetFaceCount(); ++face) {
            AddLoop(solid, solid.GetOuterLoop(face));
            for (std::size_t i = 0; i < solid.GetInnerLoopCount(face); ++i) AddLoop(solid, solid.GetInnerLoop(face, i));
        }
    }

    void AddLoop(FacetedBRep const& solid, std::vector<std::uint32_t> const& loop) {
        auto const& vertices = solid.vertices;
        for (std::size_t i = 0; i < loop.size(); ++i) {
            auto const &a = vertices[loop[i]], &b = vertices[loop[(i + 1) % loop.size()]];
            ++edges[{a.x, a.y, a.z, b.x, b.y, b.z}];
            --edges[{b.x, b.y, b.z, a.x, a.y, a.z}];
            volume += Dot(vertices[loop[0]], Cross(a, b));
        }
    }

    bool IsClosed() const {
        for (auto const& [edge, count] : edges) {
            if (count != 0) return false;
        }
        return true;
    }
};

std::set<std::string> GuidsOf(std::vector<char> const& model) {
    auto const storage = ModelStorage::FromBuffer(model);
    auto const& entities = storage.GetModelReader().GetEntities();
    std::set<std::string> guids;
    EntityIdentifier record;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        std::string guid;
        if (entities.GetIdentifier(record, i).kind != 0) continue;
        entities.GetGuidText(guid, record.reference);
        EXPECT_TRUE(guids.insert(guid).second) << guid;
    }
    return guids;
}

TEST_F(Sample, TheProgramWritesWhatTheGeneratorBuilds) {
    auto const run = RunQuorlan({"sample", "-o", PathOf("a.qln"), "--storeys", "2", "--seed", "7"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "");
    auto options = Storeys(2);
    options.seed = 7;
    EXPECT_EQ(ReadBytes(PathOf("a.qln")), BuildSampleBuilding(options));
    EXPECT_EQ(GetFiles(), std::vector<std::string>{"a.qln"});
}

TEST(SampleBuilding, IsASoundModel) {
    ModelValidator validator;
    EXPECT_TRUE(validator.Build(BuildSampleBuilding(Storeys(3)))) << testing::PrintToString(validator.GetProblems());
}

TEST(SampleBuilding, SameOptionsGiveTheSameBytes) {
    EXPECT_EQ(BuildSampleBuilding(Storeys(2)), BuildSampleBuilding(Storeys(2)));
}

TEST(SampleBuilding, AnotherSeedChangesTheModelButNotWhoItsWallsAre) {
    auto options = Storeys(4);
    auto const first = BuildSampleBuilding(options);
    options.seed = 2;
    auto const second = BuildSampleBuilding(options);
    EXPECT_NE(first, second);
    auto const guids = GuidsOf(first), others = GuidsOf(second);
    std::set<std::string> common;
    for (auto const& guid : guids) {
        if (others.count(guid) != 0) common.insert(guid);
    }
    EXPECT_GT(common.size(), guids.size() / 2);
    EXPECT_LT(common.size(), guids.size());
}

TEST(SampleBuilding, EveryStoreyAddsMoreThan500Instances) {
    auto const count = [](std::uint32_t storeys) {
        auto const storage = ModelStorage::FromBuffer(BuildSampleBuilding(Storeys(storeys)));
        return storage.GetModelReader().GetGeometry().GetInstanceCount();
    };
    auto const one = count(1);
    EXPECT_GT(count(11) - one, 5000u);
    EXPECT_GT(one, 500u);
}

TEST(SampleBuilding, AllSolidsAreClosedAndOrientedOutwards) {
    auto const storage = ModelStorage::FromBuffer(BuildSampleBuilding(Storeys(4)));
    auto const& geometry = storage.GetModelReader().GetGeometry();
    FacetedBRep solid;
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
        if (!geometry.GetFacetedBRep(solid, i)) continue;
        SolidCheck const check(solid);
        EXPECT_TRUE(check.IsClosed()) << "definition " << i;
        EXPECT_GT(check.volume, 0) << "definition " << i;
    }
}

TEST(SampleBuilding, NormalsAreUnitVectorsThatPointOutOfTheirFaces) {
    auto const storage = ModelStorage::FromBuffer(BuildSampleBuilding(Storeys(1)));
    auto const& geometry = storage.GetModelReader().GetGeometry();
    FacetedBRep solid;
    std::vector<Vertex> normals;
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
        if (geometry.GetDefinitionKind(i) != 7) continue;
        ASSERT_TRUE(geometry.GetFacetedBRep(solid, i));
        geometry.GetVertexNormals(normals, i);
        ASSERT_EQ(normals.size(), solid.vertices.size());
        for (auto const& loop : solid.faces) {
            auto const& v = solid.vertices;
            auto const faceNormal = Cross(v[loop[1]] - v[loop[0]], v[loop[2]] - v[loop[1]]);
            for (auto const index : loop) {
                EXPECT_NEAR(Length(normals[index]), 1, 1e-6) << "definition " << i;
                EXPECT_GT(Dot(normals[index], faceNormal), 0) << "definition " << i;
            }
        }
    }
}

TEST(SampleBuilding, HoldsEveryKindOfContent) {
    auto const storage = ModelStorage::FromBuffer(BuildSampleBuilding(Storeys(2)));
    auto const& reader = storage.GetModelReader();
    auto const& geometry = reader.GetGeometry();

    std::map<std::uint32_t, int> definitionKinds, identifierKinds, actions;
    std::size_t holes = 0;
    FacetedBRep solid;
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
        ++definitionKinds[geometry.GetDefinitionKind(i)];
        if (geometry.GetFacetedBRep(solid, i)) holes += solid.holes.size();
    }
    EXPECT_EQ(definitionKinds.size(), 4u);
    for (std::uint32_t const kind : {1, 5, 6, 7}) EXPECT_GT(definitionKinds[kind], 1) << kind;
    EXPECT_GT(holes, 10u);

    EntityIdentifier record;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); ++i) {
        ++identifierKinds[reader.GetEntities().GetIdentifier(record, i).kind];
    }
    for (std::uint32_t const kind : {0, 1, 2, 4}) EXPECT_GT(identifierKinds[kind], 0) << kind;

    auto const& histories = reader.GetOwnerHistories();
    OwnerHistoryLink link;
    OwnerHistoryRecord history;
    for (std::uint32_t i = 0; i < histories.GetLinkCount(); ++i) {
        histories.GetLink(link, i);
        histories.GetOwnerHistory(history, histories.GetOwnerHistoryIndex(link.reference));
        ++actions[static_cast<std::uint32_t>(history.changeAction)];
    }
    EXPECT_EQ(actions.size(), 4u);
    EXPECT_EQ(geometry.GetExtraContentCount(), 11u);
    EXPECT_GT(geometry.GetMaterialCount(), 10u);
}

TEST(SampleBuilding, GlassAloneIsTwoSided) {
    auto const storage = ModelStorage::FromBuffer(BuildSampleBuilding(Storeys(1)));
    auto const& geometry = storage.GetModelReader().GetGeometry();
    MaterialRecord material;
    int count = 0;
    for (std::uint32_t i = 0; i < geometry.GetMaterialCount(); ++i) {
        geometry.GetMaterial(material, i);
        EXPECT_EQ(material.twoSided, material.color[3] < 255);
        count += material.twoSided ? 1 : 0;
    }
    EXPECT_EQ(count, 1);
}

TEST(SampleBuilding, TexturesArePngImages) {
    auto const storage = ModelStorage::FromBuffer(BuildSampleBuilding(Storeys(1)));
    auto const& geometry = storage.GetModelReader().GetGeometry();
    ASSERT_EQ(geometry.GetTextureCount(), 2u);
    for (std::uint32_t i = 0; i < 2; ++i) {
        Texture texture;
        geometry.GetTexture(texture, i);
        EXPECT_EQ(texture.getType(), TextureType::PNG);
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        ASSERT_NE(png_image_begin_read_from_memory(&image, texture.getData().data(), texture.getData().size()), 0);
        EXPECT_EQ(image.width, 32u);
        EXPECT_EQ(image.height, 32u);
        png_image_free(&image);
    }
}

}  // namespace
}  // namespace Quorlan::Testing
