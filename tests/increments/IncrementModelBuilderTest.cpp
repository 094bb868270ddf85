#include <Tools/Increments/IncrementModelBuilder.h>

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"
#include "support/RawModel.h"
#include "support/Shapes.h"

#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Quorlan::Tools::Increments::IncrementModelBuilder;
using Action = OwnerHistoryChangeAction;
using List = std::vector<std::pair<Action, EntityIndex_t>>;

constexpr EntityIndex_t kFirst{0};
constexpr EntityIndex_t kSecond{1};

ModelStorage Open(ModelBuilder const& builder) { return ModelStorage::FromBuffer(builder.Create()); }

List ListAll(IModelReader const& reader, Action action) {
    List list;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); ++i) list.emplace_back(action, EntityIndex_t{i});
    return list;
}

GeometryDefinitionIndex_t AddCube(ModelBuilder& builder, double size = 1) {
    return builder.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakeBox({0, 0, 0}, {size, size, size}));
}

TEST(IncrementModelBuilder, WithoutCallsGivesAnEmptyModel) {
    IncrementModelBuilder const builder;
    auto const result = ModelStorage::FromBuffer(builder.GetResult());
    ASSERT_FALSE(result.HasError());
    EXPECT_EQ(result.GetModelReader().GetEntities().GetCount(), 0u);
    EXPECT_EQ(result.GetModelReader().GetOwnerHistories().GetLinkCount(), 0u);
}

TEST(IncrementModelBuilder, EmptyListWritesNothing) {
    ModelBuilder source;
    SceneWriter(source).AddEntity(1, 0, Action::ADDED);
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(), {});
    EXPECT_EQ(builder.GetResult(), ModelBuilder().Create());
}

TEST(IncrementModelBuilder, CarriesEverythingAnEntityHas) {
    ModelBuilder source;
    SceneWriter writer(source);
    for (std::uint32_t number = 0; number < 60; ++number) writer.AddEntity(number, number % 3, Action::NOCHANGE);
    auto const storage = Open(source);
    auto const expected = ReadContent(storage.GetModelReader());

    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), ListAll(storage.GetModelReader(), Action::MODIFIED));
    auto const actual = ReadContent(builder.GetResult());
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_EQ(Compare(actual[i], expected[i]), "") << i;
        EXPECT_EQ(actual[i].history.changeAction, Action::MODIFIED);
    }
}

TEST(IncrementModelBuilder, EntitiesComeInTheOrderOfTheCallsAndLists) {
    ModelBuilder source;
    SceneWriter writer(source);
    for (std::uint32_t number = 0; number < 4; ++number) writer.AddEntity(number, 0, Action::NOCHANGE);
    auto const storage = Open(source);
    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), {{Action::ADDED, EntityIndex_t{3}}, {Action::MODIFIED, EntityIndex_t{1}}});
    builder.AddAsDeleted({MakeGuid(77)});
    builder.Add(storage.GetModelReader(), {{Action{12}, EntityIndex_t{0}}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.size(), 4u);
    EXPECT_EQ(content[0].guid, MakeGuid(3));
    EXPECT_EQ(content[0].history.changeAction, Action::ADDED);
    EXPECT_EQ(content[1].guid, MakeGuid(1));
    EXPECT_EQ(content[2].guid, MakeGuid(77));
    EXPECT_EQ(content[3].guid, MakeGuid(0));
    EXPECT_EQ(content[3].history.changeAction, Action{12});
}

TEST(IncrementModelBuilder, EntityOfAnotherKindWritesNothing) {
    ModelBuilder source;
    auto& entities = source.GetEntityWriter();
    entities.AddEntityWithIdentifierText("id", L"a", {});
    entities.AddEntityWithGeometricKey({}, L"b", {});
    entities.AddEntityWithoutIdentifier(L"c", {});
    source.GetInstanceWriter().AddInstance(kFirst, AddCube(source), kInvalidIndex, kInvalidIndex, {});
    auto const storage = Open(source);
    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), ListAll(storage.GetModelReader(), Action::ADDED));
    EXPECT_EQ(builder.GetResult(), ModelBuilder().Create());
}

TEST(IncrementModelBuilder, EntityBeyondTheModelWritesNothing) {
    ModelBuilder source;
    source.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(),
                {{Action::ADDED, EntityIndex_t{1}}, {Action::ADDED, EntityIndex_t{~0u}}});
    EXPECT_EQ(builder.GetResult(), ModelBuilder().Create());
}

TEST(IncrementModelBuilder, DeletedEntitiesAreBareAndShareOneOwnerHistory) {
    IncrementModelBuilder builder;
    builder.AddAsDeleted({MakeGuid(1), MakeGuid(2)});
    auto const storage = ModelStorage::FromBuffer(builder.GetResult());
    auto const content = ReadContent(storage.GetModelReader());
    ASSERT_EQ(content.size(), 2u);
    EntityContent bare;
    bare.guid = MakeGuid(1);
    EXPECT_EQ(Compare(content[0], bare), "");
    EXPECT_EQ(content[0].history.changeAction, Action::DELETED);
    EXPECT_EQ(content[1].guid, MakeGuid(2));

    auto const& histories = storage.GetModelReader().GetOwnerHistories();
    ASSERT_EQ(histories.GetLinkCount(), 2u);
    OwnerHistoryLink links[2];
    for (std::uint32_t i = 0; i < 2; ++i) histories.GetLink(links[i], i);
    EXPECT_EQ(links[0].reference, links[1].reference);
    EXPECT_EQ(histories.GetReferenceCount(), 1u);
}

TEST(IncrementModelBuilder, EmptyListOfDeletedStillWritesTheOwnerHistory) {
    IncrementModelBuilder builder;
    builder.AddAsDeleted({});
    auto const storage = ModelStorage::FromBuffer(builder.GetResult());
    auto const& histories = storage.GetModelReader().GetOwnerHistories();
    EXPECT_EQ(histories.GetLinkCount(), 0u);
    ASSERT_EQ(histories.GetReferenceCount(), 1u);
    OwnerHistoryRecord record;
    histories.GetOwnerHistory(record, histories.GetOwnerHistoryIndex(0));
    EXPECT_EQ(record.changeAction, Action::DELETED);
    EXPECT_EQ(record.state, 0u);
}

TEST(IncrementModelBuilder, EntityWithoutLinkGetsADefaultOwnerHistoryWithTheAction) {
    ModelBuilder source;
    source.GetEntityWriter().AddEntity(MakeGuid(1), L"text", {});
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(), {{Action::ADDED, kFirst}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.size(), 1u);
    EXPECT_EQ(content[0].history.changeAction, Action::ADDED);
    EXPECT_EQ(content[0].history.creationDate, 0);
    EXPECT_EQ(content[0].owner.user, "");
    EXPECT_EQ(content[0].link.lastModifyingUser, "");
}

TEST(IncrementModelBuilder, LastOfSeveralLinksWins) {
    ModelBuilder source;
    auto& histories = source.GetOwnerHistoryWriter();
    source.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    for (std::uint32_t i = 0; i < 3; ++i) {
        std::uint32_t const part = histories.AddOwnerPart({std::to_string(i), {}, {}});
        std::uint32_t const record = histories.AddOwnerHistoryRecord({i, Action::ADDED, i, 0});
        histories.LinkOwnerHistory(kFirst, histories.AddOwnerHistory(part, record, {std::to_string(10 + i), {}}));
    }
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(), {{Action::NOCHANGE, kFirst}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.size(), 1u);
    EXPECT_EQ(content[0].owner.user, "2");
    EXPECT_EQ(content[0].history.state, 2u);
    EXPECT_EQ(content[0].link.lastModifyingUser, "12");
}

TEST(IncrementModelBuilder, EntityListedTwiceIsWrittenTwiceEachWithItsInstances) {
    ModelBuilder source;
    SceneWriter(source).AddEntity(6, 0, Action::NOCHANGE);
    source.GetInstanceWriter().AddInstance(kFirst, AddCube(source), kInvalidIndex, kInvalidIndex, {});
    auto const storage = Open(source);
    auto const expected = ReadContent(storage.GetModelReader());
    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), {{Action::ADDED, kFirst}, {Action::DELETED, kFirst}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.size(), 2u);
    EXPECT_EQ(Compare(content[0], expected[0]), "");
    EXPECT_EQ(Compare(content[1], expected[0]), "");
    EXPECT_EQ(content[0].history.changeAction, Action::ADDED);
    EXPECT_EQ(content[1].history.changeAction, Action::DELETED);
}

TEST(IncrementModelBuilder, WritesOnlyWhatTheChosenEntitiesUse) {
    ModelBuilder source;
    for (std::uint32_t number = 0; number < 2; ++number) {
        char const tag = static_cast<char>('a' + number);
        EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(number), {}, {});
        auto const texture = static_cast<std::int32_t>(source.GetTextureWriter().AddTexture(TextureType::PNG, {tag}));
        std::uint32_t const material = source.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, texture, false});
        std::uint32_t const layer = source.GetLayerWriter().AddLayer(std::string(1, tag));
        source.GetInstanceWriter().AddInstance(entity, AddCube(source, 1 + number), material, layer, {});
    }
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(), {{Action::ADDED, kSecond}});
    auto const storage = ModelStorage::FromBuffer(builder.GetResult());
    IGeometryReader const& geometry = storage.GetModelReader().GetGeometry();
    EXPECT_EQ(geometry.GetInstanceCount(), 1u);
    EXPECT_EQ(geometry.GetDefinitionCount(), 1u);
    EXPECT_EQ(geometry.GetMaterialCount(), 1u);
    EXPECT_EQ(geometry.GetTextureCount(), 1u);
    EXPECT_EQ(geometry.GetExtraContentCount(), 1u);
    auto const content = ReadContent(storage.GetModelReader());
    EXPECT_EQ(content[0].instances[0].layer, "b");
    EXPECT_EQ(content[0].instances[0].material->texture->second, std::vector<char>{'b'});
}

TEST(IncrementModelBuilder, EqualContentIsWrittenOnceOverAllCalls) {
    IncrementModelBuilder builder;
    for (std::uint32_t number = 0; number < 3; ++number) {
        ModelBuilder source;
        EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(number), {}, {});
        for (std::uint32_t i = 0; i < number; ++i) source.GetTextureWriter().AddTexture(TextureType::JPEG, {});
        auto const texture =
            static_cast<std::int32_t>(source.GetTextureWriter().AddTexture(TextureType::PNG, {'x', 'y'}));
        std::uint32_t const material = source.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, texture, true});
        std::uint32_t const oneSided = source.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, texture, false});
        std::uint32_t const layer = source.GetLayerWriter().AddLayer("Walls");
        auto const cube = AddCube(source);
        source.GetInstanceWriter().AddInstance(entity, cube, material, layer, {});
        source.GetInstanceWriter().AddInstance(entity, cube, oneSided, layer, {});
        builder.Add(Open(source).GetModelReader(), {{Action::ADDED, entity}});
    }
    auto const storage = ModelStorage::FromBuffer(builder.GetResult());
    IGeometryReader const& geometry = storage.GetModelReader().GetGeometry();
    EXPECT_EQ(geometry.GetInstanceCount(), 6u);
    EXPECT_EQ(geometry.GetDefinitionCount(), 1u);
    EXPECT_EQ(geometry.GetMaterialCount(), 2u);
    EXPECT_EQ(geometry.GetTextureCount(), 1u);
    EXPECT_EQ(geometry.GetExtraContentCount(), 1u);
}

TEST(IncrementModelBuilder, TexturesOfOneTypeOrOneContentAreTwo) {
    ModelBuilder source;
    EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    auto const cube = AddCube(source);
    for (auto const& [type, data] :
         {std::pair{TextureType::PNG, 'x'}, {TextureType::JPEG, 'x'}, {TextureType::PNG, 'y'}}) {
        auto const texture = static_cast<std::int32_t>(source.GetTextureWriter().AddTexture(type, {data}));
        std::uint32_t const material = source.GetMaterialWriter().AddMaterial({{}, texture, false});
        source.GetInstanceWriter().AddInstance(entity, cube, material, kInvalidIndex, {});
    }
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(), {{Action::ADDED, entity}});
    auto const storage = ModelStorage::FromBuffer(builder.GetResult());
    EXPECT_EQ(storage.GetModelReader().GetGeometry().GetTextureCount(), 3u);
    EXPECT_EQ(storage.GetModelReader().GetGeometry().GetMaterialCount(), 3u);
}

TEST(IncrementModelBuilder, MaterialLayerAndTextureThatLeadNowhereBecomeNone) {
    ModelBuilder source;
    EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(1), {}, {});
    source.GetMaterialWriter().AddMaterial({{9, 9, 9, 9}, 5, false});
    source.GetMaterialWriter().AddMaterial({{9, 9, 9, 8}, -7, false});
    auto const cube = AddCube(source);
    for (std::uint32_t const material : {0u, 1u, 17u}) {
        source.GetInstanceWriter().AddInstance(entity, cube, material, 17, {});
    }
    IncrementModelBuilder builder;
    builder.Add(Open(source).GetModelReader(), {{Action::ADDED, entity}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.at(0).instances.size(), 3u);
    EXPECT_FALSE(content[0].instances[0].material->texture);
    EXPECT_FALSE(content[0].instances[1].material->texture);
    EXPECT_FALSE(content[0].instances[2].material);
    EXPECT_FALSE(content[0].instances[0].layer);
}

TEST(IncrementModelBuilder, InstanceWithoutAShapeIsLeftOutAndBringsNoMaterial) {
    RawModel raw;
    raw.entityKind = 0;
    raw.materials.emplace({RawMaterial{}});
    raw.layers.emplace({std::string("L")});
    raw.AddEntity();
    raw.AddInstance(0, raw.AddDefinition({}, {}, 1, 99), {}, 0, 0);             // no such BRep
    raw.AddInstance(0, raw.AddDefinition({}, {}, 16, 0), {}, 0, 0);             // a kind without a vector
    raw.AddInstance(0, raw.AddBRep({{{{0, 0, 0}, {1, 0, 0}}}, {}}), {}, 0, 0);  // too few vertices
    IncrementModelBuilder builder;
    auto const storage = ModelStorage::FromBuffer(raw.Write());
    ASSERT_FALSE(storage.HasError());
    builder.Add(storage.GetModelReader(), {{Action::ADDED, kFirst}});
    auto const result = ModelStorage::FromBuffer(builder.GetResult());
    IGeometryReader const& geometry = result.GetModelReader().GetGeometry();
    EXPECT_EQ(result.GetModelReader().GetEntities().GetCount(), 1u);
    EXPECT_EQ(geometry.GetInstanceCount(), 0u);
    EXPECT_EQ(geometry.GetDefinitionCount(), 0u);
    EXPECT_EQ(geometry.GetMaterialCount(), 0u);
    EXPECT_EQ(geometry.GetExtraContentCount(), 0u);
}

TEST(IncrementModelBuilder, SparseModelGivesBareEntities) {
    RawModel raw;
    raw.entityKind = 0;
    raw.AddEntity(At(1, 2, 3));
    raw.placements = std::nullopt;
    raw.definitions = std::nullopt;
    raw.instances = std::nullopt;
    auto const storage = ModelStorage::FromBuffer(raw.Write());
    ASSERT_FALSE(storage.HasError());
    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), {{Action::ADDED, kFirst}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.size(), 1u);
    EXPECT_EQ(content[0].guid, _GUID{});
    EXPECT_EQ(content[0].text, L"");
    EXPECT_EQ(content[0].placement.origin[2], 3);
}

TEST(IncrementModelBuilder, OwnerPartsThatEntitiesShareStayShared) {
    ModelBuilder source;
    auto& histories = source.GetOwnerHistoryWriter();
    std::uint32_t const part = histories.AddOwnerPart({"a", "b", "c"});
    for (std::uint32_t number = 0; number < 5; ++number) {
        EntityIndex_t const entity = source.GetEntityWriter().AddEntity(MakeGuid(number), {}, {});
        std::uint32_t const record = histories.AddOwnerHistoryRecord({});
        histories.LinkOwnerHistory(entity, histories.AddOwnerHistory(part, record, {}));
    }
    auto const storage = Open(source);
    IncrementModelBuilder builder;
    builder.Add(storage.GetModelReader(), ListAll(storage.GetModelReader(), Action::MODIFIED));
    auto const result = ModelStorage::FromBuffer(builder.GetResult());
    auto const& written = result.GetModelReader().GetOwnerHistories();
    EXPECT_EQ(written.GetReferenceCount(), 5u);
    for (std::uint32_t i = 0; i < 5; ++i) EXPECT_EQ(written.GetOwnerPartIndex(i), 0u);
}

}  // namespace
