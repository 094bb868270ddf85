#include <Tools/EntityMerger.h>

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"
#include "support/RawModel.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::EntityMerger;
using Action = OwnerHistoryChangeAction;
using TestSupport::Compose;
using TestSupport::MakeRotation;
using TestSupport::MakeRotationZ;
using TestSupport::MakeTranslation;

ModelStorage Open(ModelBuilder const& builder) { return ModelStorage::FromBuffer(builder.Create()); }

/// Two entities with a cube each, the second moved by 3 along x, both entities at (0, 0, 50).
void WriteTwoCubes(ModelBuilder& builder) {
    auto const cube = builder.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakeUnitCube());
    for (std::uint32_t i = 0; i < 2; ++i) {
        EntityIndex_t const entity =
            builder.GetEntityWriter().AddEntity(MakeGuid(100 + i), L"source", MakeTranslation(0, 0, 50));
        builder.GetPropertyWriter().AddProperty(entity, {"Set", "Name", true});
        builder.GetInstanceWriter().AddInstance(entity, cube, kInvalidIndex, kInvalidIndex,
                                                MakeTranslation(3.0 * i, 0, 0));
    }
}

TEST(EntityMerger, WritesOneEntityWithAllInstancesOfTheSource) {
    ModelBuilder source;
    WriteTwoCubes(source);
    EntityMerger merger;
    merger.Add(Open(source).GetModelReader(), MakeGuid(1), {}, L"both", Action::ADDED);
    auto const content = ReadContent(merger.GetResult());
    ASSERT_EQ(content.size(), 1u);
    EXPECT_EQ(content[0].guid, MakeGuid(1));
    EXPECT_EQ(content[0].text, L"both");
    EXPECT_EQ(content[0].instances.size(), 2u);
    EXPECT_EQ(content[0].history.changeAction, Action::ADDED);
    EXPECT_EQ(content[0].history.state, 0u);
    EXPECT_EQ(content[0].owner.user, "");
    EXPECT_TRUE(content[0].properties.empty());
}

TEST(EntityMerger, PlacementGoesToTheEntityAndInFrontOfEveryInstancePlacement) {
    ModelBuilder source;
    WriteTwoCubes(source);
    auto const placement = Compose(MakeTranslation(10, 20, 30), MakeRotationZ(0.5));
    EntityMerger merger;
    merger.Add(Open(source).GetModelReader(), MakeGuid(1), placement, {}, Action::NOCHANGE);
    auto const storage = ModelStorage::FromBuffer(merger.GetResult());

    EntityIdentifier entity;
    storage.GetModelReader().GetEntities().GetIdentifier(entity, 0);
    AffineTransform instances[2];
    for (std::uint32_t i = 0; i < 2; ++i) storage.GetModelReader().GetGeometry().GetPlacement(instances[i], i);
    auto const expected = Compose(placement, MakeTranslation(3, 0, 0));
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(entity.placement.matrix.m[i], placement.matrix.m[i], 1e-7);
        EXPECT_NEAR(instances[0].matrix.m[i], placement.matrix.m[i], 1e-7);
        EXPECT_NEAR(instances[1].matrix.m[i], expected.matrix.m[i], 1e-7);
    }
    EXPECT_EQ(instances[0].offset.x, 10) << "under an identity placement the caller's origin goes over as it is";
    EXPECT_EQ(instances[0].offset.z, 30);
}

TEST(EntityMerger, IdentityKeepsStoredInstancePlacementsToTheBit) {
    PlacementRecord const odd{{1, 2, 3}, {3, 4, 0}, {-1, 1, 0}};
    ModelBuilder source;
    EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(9), {}, {});
    auto const cube = source.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakeUnitCube());
    source.GetInstanceWriter().AddInstanceAt(entity, cube, kInvalidIndex, kInvalidIndex, odd);
    EntityMerger merger;
    merger.Add(Open(source).GetModelReader(), MakeGuid(1), {}, {}, Action::NOCHANGE);
    auto const storage = ModelStorage::FromBuffer(merger.GetResult());
    PlacementRecord placement;
    storage.GetModelReader().GetGeometry().GetPlacementRecord(placement, 0);
    EXPECT_EQ(placement.origin, odd.origin);
    EXPECT_EQ(placement.xAxis, odd.xAxis);
    EXPECT_EQ(placement.yAxis, odd.yAxis);
}

TEST(EntityMerger, MovedCopiesOfShapesStayWhereTheComposedPlacementShowsThem) {
    auto const placement = Compose(MakeTranslation(-7, 8, 9), MakeRotation({1, 2, 3}, 1));
    ModelBuilder source;
    EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(9), {}, {});
    std::vector<std::vector<Vertex>> expected;
    for (int i = 0; i < 6; ++i) {
        auto const turn = Compose(MakeTranslation(i, i % 2 == 0 ? 5000 : 0, 0), MakeRotation({1, 1, 0.1}, i));
        auto const instance = MakeRotation({0, 1, 1}, 0.3 * i);
        FacetedBRep shape = TestSupport::MakePlateWithHole();
        auto& points = expected.emplace_back();
        for (Vertex& vertex : shape.vertices) {
            Vertex const v = TransformPoint(turn.matrix, vertex);
            vertex = {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
            points.push_back(TransformPoint((placement.matrix * placement.matrix) * instance.matrix, vertex));
        }
        source.GetInstanceWriter().AddInstance(entity, source.GetGeometryDefinitionBuilder().AddBRep(shape),
                                               kInvalidIndex, kInvalidIndex, instance);
    }
    EntityMerger merger;
    merger.Add(Open(source).GetModelReader(), MakeGuid(1), placement, {}, Action::NOCHANGE);
    auto const content = ReadContent(merger.GetResult());
    ASSERT_EQ(content.at(0).instances.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t v = 0; v < expected[i].size(); ++v) {
            // The far shapes are placed by single-precision axes at 5000 from their origin in the source already.
            EXPECT_LT(Length(content[0].instances[i].points[v] - expected[i][v]), i % 2 == 0 ? 1e-2 : 1e-4);
        }
    }
}

TEST(EntityMerger, SameSourceTwiceGivesTwoEntitiesThatShareTheirShapes) {
    ModelBuilder source;
    SceneWriter(source).AddEntity(4, 0, Action::NOCHANGE);
    WriteTwoCubes(source);
    auto const storage = Open(source);
    EntityMerger merger;
    merger.Add(storage.GetModelReader(), MakeGuid(1), {}, {}, Action::ADDED);
    auto const once = ModelStorage::FromBuffer(merger.GetResult());
    merger.Add(storage.GetModelReader(), MakeGuid(2), MakeTranslation(1, 0, 0), {}, Action::ADDED);
    auto const twice = ModelStorage::FromBuffer(merger.GetResult());
    IGeometryReader const& before = once.GetModelReader().GetGeometry();
    IGeometryReader const& after = twice.GetModelReader().GetGeometry();
    EXPECT_EQ(twice.GetModelReader().GetEntities().GetCount(), 2u);
    EXPECT_EQ(after.GetInstanceCount(), 2 * before.GetInstanceCount());
    EXPECT_EQ(after.GetDefinitionCount(), before.GetDefinitionCount());
    EXPECT_EQ(after.GetMaterialCount(), before.GetMaterialCount());
    EXPECT_EQ(after.GetTextureCount(), before.GetTextureCount());
    EXPECT_EQ(after.GetExtraContentCount(), before.GetExtraContentCount());
    EXPECT_EQ(twice.GetModelReader().GetOwnerHistories().GetReferenceCount(), 2u);
}

TEST(EntityMerger, SourceWithoutInstancesStillGivesAnEntityWithItsOwnerHistory) {
    EntityMerger merger;
    merger.Add(Open(ModelBuilder()).GetModelReader(), MakeGuid(1), {}, L"empty", Action{5});
    auto const content = ReadContent(merger.GetResult());
    ASSERT_EQ(content.size(), 1u);
    EXPECT_EQ(content[0].history.changeAction, Action{5});
    EXPECT_TRUE(content[0].instances.empty());
}

TEST(EntityMerger, SameGuidTwiceGivesTwoEntities) {
    ModelBuilder source;
    WriteTwoCubes(source);
    auto const storage = Open(source);
    EntityMerger merger;
    merger.Add(storage.GetModelReader(), MakeGuid(1), {}, L"a", Action::ADDED);
    merger.Add(storage.GetModelReader(), MakeGuid(1), {}, L"b", Action::ADDED);
    auto const content = ReadContent(merger.GetResult());
    ASSERT_EQ(content.size(), 2u);
    EXPECT_EQ(content[0].guid, content[1].guid);
}

TEST(EntityMerger, CopiesAllContentAlsoWhatNoInstanceUses) {
    ModelBuilder source;
    auto const texture = static_cast<std::int32_t>(source.GetTextureWriter().AddTexture(TextureType::PNG, {'p'}));
    source.GetTextureWriter().AddTexture(TextureType::JPEG, {'j'});
    source.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, texture, true});
    source.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, -1, true});
    source.GetLayerWriter().AddLayer("unused");
    source.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakeUnitCube());
    EntityMerger merger;
    merger.Add(Open(source).GetModelReader(), MakeGuid(1), {}, {}, Action::ADDED);
    auto const storage = ModelStorage::FromBuffer(merger.GetResult());
    IGeometryReader const& geometry = storage.GetModelReader().GetGeometry();
    EXPECT_EQ(geometry.GetDefinitionCount(), 1u);
    EXPECT_EQ(geometry.GetExtraContentCount(), 1u);
    ASSERT_EQ(geometry.GetMaterialCount(), 2u);
    MaterialRecord material;
    geometry.GetMaterial(material, 0);
    EXPECT_EQ(material.textureIndex, 0);
    geometry.GetMaterial(material, 1);
    EXPECT_EQ(material.textureIndex, -1);
}

TEST(EntityMerger, InstancesWhoseShapeIsNoneAreLeftOut) {
    RawModel raw;
    raw.AddEntity();
    raw.AddInstance(0, raw.AddDefinition({}, {}, 1, 99));
    raw.AddInstance(0, raw.AddBRep(RawBox({0, 0, 0}, {1, 1, 1})), {}, 12, 13);
    auto const storage = ModelStorage::FromBuffer(raw.Write());
    ASSERT_FALSE(storage.HasError());
    EntityMerger merger;
    merger.Add(storage.GetModelReader(), MakeGuid(1), {}, {}, Action::ADDED);
    auto const content = ReadContent(merger.GetResult());
    ASSERT_EQ(content.at(0).instances.size(), 1u);
    EXPECT_FALSE(content[0].instances[0].material);
    EXPECT_FALSE(content[0].instances[0].layer);
}

TEST(EntityMerger, RecordsDeletedGuidsUnderOneOwnerHistory) {
    EntityMerger merger;
    merger.AddAsDeleted({MakeGuid(3), MakeGuid(2)});
    auto const storage = ModelStorage::FromBuffer(merger.GetResult());
    auto const content = ReadContent(storage.GetModelReader());
    ASSERT_EQ(content.size(), 2u);
    EXPECT_EQ(content[0].guid, MakeGuid(3));
    EXPECT_EQ(content[1].history.changeAction, Action::DELETED);
    EXPECT_EQ(storage.GetModelReader().GetOwnerHistories().GetReferenceCount(), 1u);
}

}  // namespace
