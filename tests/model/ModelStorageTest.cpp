#include "support/RawModel.h"
#include "support/ReadEverything.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <gtest/gtest.h>

#include <random>

namespace {

using namespace Quorlan;
using Testing::RawModel;
using TestSupport::ReadEverything;

std::vector<char> WriteSmallModel() {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({1, 2, 3, {4}}, L"wall", {});
    auto const plate = TestSupport::MakePlateWithHole();
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(plate);
    builder.GetGeometryDefinitionBuilder().AddGraphicsContainer({{{{0, 0, 0}, {1, 2, 3}}}, {}});
    auto const texture = builder.GetTextureWriter().AddTexture(TextureType::PNG, {1, 2, 3});
    auto const material =
        builder.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, static_cast<std::int32_t>(texture), true});
    auto const layer = builder.GetLayerWriter().AddLayer("walls");
    builder.GetInstanceWriter().AddInstance(entity, shape, material, layer, {});
    builder.GetPropertyWriter().AddProperty(entity, {"set", "name", std::string("value")});
    auto& histories = builder.GetOwnerHistoryWriter();
    auto const history =
        histories.AddOwnerHistory(histories.AddOwnerPart({"a", "b", "c"}), histories.AddOwnerHistoryRecord({}), {});
    histories.LinkOwnerHistory(entity, history);
    return builder.Create();
}

TEST(ModelStorage, AnEmptyBufferIsAnError) { EXPECT_TRUE(ModelStorage::FromBuffer({}).HasError()); }

TEST(ModelStorage, AnyOtherIdentifierIsAnError) {
    auto const model = WriteSmallModel();
    ASSERT_FALSE(ModelStorage::FromBuffer(model).HasError());
    for (std::size_t i = 4; i < 8; ++i) {
        auto changed = model;
        changed[i] = static_cast<char>(changed[i] ^ 0x20);
        EXPECT_TRUE(ModelStorage::FromBuffer(changed).HasError()) << i;
    }
}

TEST(ModelStorage, TheReaderOutlivesTheBufferAndMovesWithTheStorage) {
    auto storage = ModelStorage::FromBuffer(WriteSmallModel());
    ASSERT_FALSE(storage.HasError());
    auto const* const reader = &storage.GetModelReader();
    ModelStorage moved = std::move(storage);
    EXPECT_EQ(&moved.GetModelReader(), reader);
    EXPECT_EQ(reader->GetEntities().GetCount(), 1u);
    EXPECT_GT(ReadEverything(*reader), 0u);
}

TEST(ModelStorage, EveryTruncationIsAnErrorOrSafeToRead) {
    auto const model = WriteSmallModel();
    std::size_t opened = 0;
    for (std::size_t size = 0; size < model.size(); ++size) {
        auto const storage = ModelStorage::FromBuffer({model.begin(), model.begin() + static_cast<long>(size)});
        if (storage.HasError()) continue;
        ++opened;
        ReadEverything(storage.GetModelReader());
    }
    EXPECT_LT(opened, 16u);  // only the padding at the end can be missed
}

TEST(ModelStorage, EveryFlippedByteIsAnErrorOrSafeToRead) {
    auto const model = WriteSmallModel();
    std::mt19937 random(7);
    std::size_t errors = 0;
    for (int i = 0; i < 20000; ++i) {
        auto changed = model;
        for (auto flips = 1 + random() % 3; flips > 0; --flips) {
            changed[random() % changed.size()] = static_cast<char>(random());
        }
        auto const storage = ModelStorage::FromBuffer(changed);
        errors += storage.HasError() ? 1 : 0;
        if (!storage.HasError()) ReadEverything(storage.GetModelReader());
    }
    EXPECT_GT(errors, 0u);
    EXPECT_LT(errors, 20000u);
}

TEST(ModelStorage, WithoutEntitiesRecordsOrGeometryThereIsNoModel) {
    RawModel model;
    EXPECT_FALSE(ModelStorage::FromBuffer(model.Write()).HasError());
    model.hasGeometry = false;
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
    model.hasGeometry = true;
    model.entities.reset();
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
    model.hasEntities = false;
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
}

TEST(ModelStorage, ASparseModelOpensAndReadsAsNone) {
    RawModel model;
    model.placements.reset();
    model.definitions.reset();
    model.instances.reset();
    model.AddEntity();
    auto const storage = ModelStorage::FromBuffer(model.Write());
    ASSERT_FALSE(storage.HasError());
    auto const& geometry = storage.GetModelReader().GetGeometry();
    EXPECT_EQ(geometry.GetInstanceCount(), 0u);
    EXPECT_EQ(geometry.GetDefinitionKind(0), 0u);
    _GUID guid{9, 9, 9, {9}};
    storage.GetModelReader().GetEntities().GetGuid(guid, 0);
    EXPECT_EQ(guid, (_GUID{0, 0, 0, {}}));
    FacetedBRep brep = TestSupport::MakeUnitCube();
    EXPECT_FALSE(geometry.GetFacetedBRep(brep, 0));
    EXPECT_TRUE(brep.vertices.empty());
}

TEST(ModelStorage, AnInstanceThatLeadsNowhereIsAnError) {
    RawModel good;
    auto const entity = good.AddEntity();
    auto const definition = good.AddDefinition({0, 0, 0}, {1, 1, 1});
    good.AddInstance(entity, definition);
    EXPECT_FALSE(ModelStorage::FromBuffer(good.Write()).HasError());

    RawModel model = good;
    (*model.instances)[0].placementIndex = 1;
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
    model = good;
    (*model.instances)[0].entityIndex = 1;
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
    model = good;
    (*model.instances)[0].definitionIndex = 1;
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
    model = good;
    (*model.instances)[0].materialIndex = 7;
    (*model.instances)[0].layerIndex = 7;
    EXPECT_FALSE(ModelStorage::FromBuffer(model.Write()).HasError());
}

TEST(ModelStorage, AShapeWithALoopBeyondItsVerticesReadsAsNone) {
    RawModel model;
    model.facetedBReps.emplace();
    auto box = Testing::RawBox({0, 0, 0}, {1, 1, 1});
    (*box.faces)[2]->at(1) = 8;
    model.AddBRep(box);
    auto const storage = ModelStorage::FromBuffer(model.Write());
    ASSERT_FALSE(storage.HasError());
    FacetedBRep out;
    EXPECT_FALSE(storage.GetModelReader().GetGeometry().GetFacetedBRep(out, 0));
    EXPECT_TRUE(out.vertices.empty());
}

// A few bytes must not stand for any amount of content in what is copied from the model.
TEST(ModelStorage, AShapeThatIsNamedWithoutEndIsAnError) {
    RawModel model;
    model.facetedBReps.emplace();
    auto shape = Testing::RawBox({0, 0, 0}, {1, 1, 1});
    shape.vertices->resize(10000);
    model.AddInstance(model.AddEntity(), model.AddBRep(shape), {});
    auto const definition = model.definitions->front();
    model.definitions->assign(60, definition);
    EXPECT_FALSE(ModelStorage::FromBuffer(model.Write()).HasError());
    model.definitions->assign(200, definition);
    EXPECT_TRUE(ModelStorage::FromBuffer(model.Write()).HasError());
}

TEST(ModelStorage, WhatTheWriterStoresOnceMayBeNamedWithoutEnd) {
    ModelBuilder builder;
    std::string const text(100000, 'x');
    auto& histories = builder.GetOwnerHistoryWriter();
    auto const part = histories.AddOwnerPart({text, text, text});
    for (int i = 0; i < 200; ++i) {
        auto const entity = builder.GetEntityWriter().AddEntityWithoutIdentifier(L"", {});
        builder.GetPropertyWriter().AddProperty(entity, {"set", "name", text});
        histories.LinkOwnerHistory(entity, histories.AddOwnerHistory(part, histories.AddOwnerHistoryRecord({}), {}));
    }
    EXPECT_FALSE(ModelStorage::FromBuffer(builder.Create()).HasError());
}

TEST(ModelStorage, AnOwnerHistoryThatIsLinkedWithoutEndIsAnError) {
    auto const write = [](int links) {
        ModelBuilder builder;
        auto const entity = builder.GetEntityWriter().AddEntityWithoutIdentifier(L"", {});
        auto& histories = builder.GetOwnerHistoryWriter();
        auto const history = histories.AddOwnerHistory(0, 0, {std::string(100000, 'x'), ""});
        for (int i = 0; i < links; ++i) histories.LinkOwnerHistory(entity, history);
        return builder.Create();
    };
    EXPECT_FALSE(ModelStorage::FromBuffer(write(60)).HasError());
    EXPECT_TRUE(ModelStorage::FromBuffer(write(200)).HasError());
}

TEST(ModelStorage, MoreThanAMillionTablesOpen) {
    FacetedBRep shape;
    shape.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    shape.faces.assign(1'100'000, {0, 1, 2});
    ModelBuilder builder;
    builder.GetGeometryDefinitionBuilder().AddBRep(shape);
    auto const storage = ModelStorage::FromBuffer(builder.Create());
    ASSERT_FALSE(storage.HasError());
    EXPECT_EQ(storage.GetModelReader().GetGeometry().GetDefinitionCount(), 1u);
}

}  // namespace
