#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace Quorlan;
using TestSupport::MakePlateWithHole;
using TestSupport::MakeUnitCube;

constexpr _GUID kGuid{0x01234567, 0x89AB, 0xCDEF, {1, 2, 3, 4, 5, 6, 7, 8}};

GeometryDefinitionIndex_t const kRefused = static_cast<GeometryDefinitionIndex_t>(kInvalidIndex);

ModelStorage Open(ModelBuilder const& builder) {
    auto storage = ModelStorage::FromBuffer(builder.Create());
    EXPECT_FALSE(storage.HasError());
    return storage;
}

TEST(ModelBuilder, EmptyBuilderCreatesAnEmptyModel) {
    auto const storage = Open(ModelBuilder());
    auto const& reader = storage.GetModelReader();
    EXPECT_EQ(reader.GetEntities().GetCount(), 0u);
    EXPECT_EQ(reader.GetGeometry().GetMaterialCount(), 0u);
    EXPECT_EQ(reader.GetGeometry().GetInstanceCount(), 0u);
    EXPECT_EQ(reader.GetOwnerHistories().GetLinkCount(), 0u);
}

TEST(ModelBuilder, BufferCarriesTheIdentifier) {
    auto const buffer = ModelBuilder().Create();
    ASSERT_GE(buffer.size(), 8u);
    EXPECT_EQ(std::memcmp(buffer.data() + 4, "QLN8", 4), 0);
}

TEST(ModelBuilder, CreateCanBeCalledBetweenWritesAndGivesTheSameBytesForTheSameContent) {
    ModelBuilder builder;
    builder.GetEntityWriter().AddEntity(kGuid, L"first", {});
    auto const first = builder.Create();
    EXPECT_EQ(builder.Create(), first);
    builder.GetEntityWriter().AddEntity(kGuid, L"second", {});
    auto const storage = Open(builder);
    EXPECT_EQ(storage.GetModelReader().GetEntities().GetCount(), 2u);
    EXPECT_NE(builder.Create(), first);
}

TEST(ModelBuilder, EntitiesOfEveryIdentifierKindReadBack) {
    ModelBuilder builder;
    GeometricKey const key{{1, 2, 3}, {4, 5, 6, 7, 8, 9, 10, 11}};
    auto& writer = builder.GetEntityWriter();
    EXPECT_EQ(writer.AddEntity(kGuid, L"W\u00E4nde \U0001F3E0", {}), EntityIndex_t{0});
    EXPECT_EQ(writer.AddEntityWithIdentifierText("pump-7", L"", {}), EntityIndex_t{1});
    EXPECT_EQ(writer.AddEntityWithGeometricKey(key, L"c", {}), EntityIndex_t{2});
    EXPECT_EQ(writer.AddEntityWithoutIdentifier(L"d", {}), EntityIndex_t{3});

    auto const storage = Open(builder);
    auto const& entities = storage.GetModelReader().GetEntities();
    EntityIdentifier identifier;
    std::wstring text;
    _GUID guid;
    std::string string;
    GeometricKey keyOut;

    EXPECT_EQ(&entities.GetIdentifier(identifier, 0), &identifier);
    EXPECT_EQ(identifier.kind, 0u);
    entities.GetGuid(guid, identifier.reference);
    EXPECT_EQ(guid, kGuid);
    entities.GetGuidText(string, identifier.reference);
    EXPECT_EQ(string.size(), 22u);
    entities.GetText(text, identifier.textReference);
    EXPECT_EQ(text, L"W\u00E4nde \U0001F3E0");

    entities.GetIdentifier(identifier, 1);
    EXPECT_EQ(identifier.kind, 1u);
    entities.GetIdentifierString(string, identifier.reference);
    EXPECT_EQ(string, "pump-7");
    EXPECT_STREQ(entities.GetIdentifierText(identifier.reference), "pump-7");
    entities.GetText(text, identifier.textReference);
    EXPECT_EQ(text, L"");

    entities.GetIdentifier(identifier, 2);
    EXPECT_EQ(identifier.kind, 2u);
    entities.GetGeometricKey(keyOut, identifier.reference);
    EXPECT_EQ(keyOut.position, key.position);
    EXPECT_EQ(keyOut.shape, key.shape);

    EXPECT_EQ(entities.GetIdentifier(identifier, 3).kind, 4u);
}

TEST(ModelBuilder, WideTextsThatAreNoUnicodeReadBackUnchanged) {
    std::wstring odd = L"a";
    odd.push_back(L'\0');
    odd.push_back(static_cast<wchar_t>(0xD800));
    odd.push_back(static_cast<wchar_t>(0xDC00));
    if (sizeof(wchar_t) == 4) {
        for (std::uint32_t const value : {0x7FFu, 0x800u, 0xFFFFu, 0x10000u, 0x10FFFFu, 0x110000u, 0x7FFFFFFFu, ~0u}) {
            odd.push_back(static_cast<wchar_t>(value));
        }
    }
    ModelBuilder builder;
    builder.GetEntityWriter().AddEntity(kGuid, odd, {});
    auto const storage = Open(builder);
    std::wstring text;
    storage.GetModelReader().GetEntities().GetText(text, 0);
    EXPECT_EQ(text, odd);
}

TEST(ModelBuilder, StoredPlacementsReadBackBitForBit) {
    PlacementRecord const placement{{1e6 + 0.1, -2, 3}, {0.6f, 0.8000001f, 0}, {-0.8f, 0.6f, 1e-8f}};
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntityAt(kGuid, L"", placement);
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(MakeUnitCube());
    builder.GetInstanceWriter().AddInstanceAt(entity, shape, kInvalidIndex, kInvalidIndex, placement);
    auto const storage = Open(builder);
    PlacementRecord out;
    storage.GetModelReader().GetEntities().GetPlacementRecord(out, 0);
    EXPECT_EQ(std::memcmp(&out, &placement, sizeof(out)), 0);
    storage.GetModelReader().GetGeometry().GetPlacementRecord(out, 0);
    EXPECT_EQ(std::memcmp(&out, &placement, sizeof(out)), 0);
}

TEST(ModelBuilder, TransformsAreStoredAsOriginAndTwoAxes) {
    auto const transform =
        TestSupport::Compose(TestSupport::MakeTranslation(1e6, 2, 3), TestSupport::MakeRotation({1, 2, 3}, 0.7));
    ModelBuilder builder;
    builder.GetEntityWriter().AddEntity(kGuid, L"", transform);
    auto const storage = Open(builder);
    EntityIdentifier identifier;
    storage.GetModelReader().GetEntities().GetIdentifier(identifier, 0);
    for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(identifier.placement.matrix.m[i], transform.matrix.m[i], 1e-7);
    EXPECT_EQ(identifier.placement.offset.x, 1e6);
    EXPECT_NEAR(identifier.placement.angle, 0.7, 1e-6);
    EXPECT_NEAR(identifier.placement.axis.x, 1 / std::sqrt(14.0), 1e-6);
}

TEST(ModelBuilder, ShapesOfEveryKindReadBack) {
    auto const plate = MakePlateWithHole();
    std::vector<Vertex> const normals(plate.vertices.size(), Vertex{0, 0, 1});
    std::vector<std::pair<float, float>> const uvs(plate.vertices.size(), {0.25f, 0.75f});
    GraphicsContainer const graphics{{{{0, 0, 0}, {1, 2, 3}}}, {{{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, 2, 1.5}}};

    ModelBuilder builder;
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    EXPECT_EQ(definitions.AddBRep(plate), GeometryDefinitionIndex_t{0});
    EXPECT_EQ(definitions.AddBRepWithUVs({&plate, &uvs}), GeometryDefinitionIndex_t{1});
    EXPECT_EQ(definitions.AddBRepWithNormals({&plate, &normals}), GeometryDefinitionIndex_t{2});
    EXPECT_EQ(definitions.AddGraphicsContainer(graphics), GeometryDefinitionIndex_t{3});

    auto const storage = Open(builder);
    auto const& geometry = storage.GetModelReader().GetGeometry();
    ASSERT_EQ(geometry.GetDefinitionCount(), 4u);
    EXPECT_EQ(geometry.GetDefinitionKind(0), 1u);
    EXPECT_EQ(geometry.GetDefinitionKind(1), 6u);
    EXPECT_EQ(geometry.GetDefinitionKind(2), 7u);
    EXPECT_EQ(geometry.GetDefinitionKind(3), 5u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        FacetedBRep out;
        ASSERT_TRUE(geometry.GetFacetedBRep(out, i));
        EXPECT_EQ(out.faces, plate.faces);
        EXPECT_EQ(out.holes, plate.holes);
        ASSERT_EQ(out.vertices.size(), plate.vertices.size());
        DefinitionBounds bounds;
        geometry.GetDefinitionBounds(bounds, i);
        EXPECT_EQ(bounds.min.z, 0);
        EXPECT_EQ(bounds.max.x, 4);
    }
    std::vector<Vertex> normalsOut;
    geometry.GetVertexNormals(normalsOut, 2);
    EXPECT_EQ(normalsOut.size(), normals.size());
    geometry.GetVertexNormals(normalsOut, 1);
    EXPECT_TRUE(normalsOut.empty());
    std::vector<std::pair<float, float>> uvsOut;
    geometry.GetTextureCoordinates(uvsOut, 1);
    EXPECT_EQ(uvsOut, uvs);
    GraphicsContainer graphicsOut;
    FacetedBRep none;
    EXPECT_FALSE(geometry.GetFacetedBRep(none, 3));
    EXPECT_FALSE(geometry.GetGraphicsContainer(graphicsOut, 0));
    ASSERT_TRUE(geometry.GetGraphicsContainer(graphicsOut, 3));
    EXPECT_EQ(graphicsOut.lines.at(0).end.z, 3);
    EXPECT_EQ(graphicsOut.arcs.at(0).sweepAngle, 1.5);
}

TEST(ModelBuilder, ShapesThatABufferCannotHoldAreRefused) {
    ModelBuilder builder;
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    FacetedBRep large;
    large.vertices.resize(65536);
    EXPECT_EQ(definitions.AddBRep(large), GeometryDefinitionIndex_t{0});
    large.vertices.resize(65537);
    EXPECT_EQ(definitions.AddBRep(large), kRefused);

    auto wrongLoop = MakeUnitCube();
    wrongLoop.faces[0][0] = 8;
    EXPECT_EQ(definitions.AddBRep(wrongLoop), kRefused);

    auto wrongHole = MakePlateWithHole();
    wrongHole.holes[0][0][0] = 16;
    EXPECT_EQ(definitions.AddBRep(wrongHole), kRefused);

    auto farHole = MakePlateWithHole();
    farHole.holes[65535] = farHole.holes[1];
    EXPECT_EQ(definitions.AddBRep(farHole), GeometryDefinitionIndex_t{1});
    farHole.holes[65536] = farHole.holes[1];
    EXPECT_EQ(definitions.AddBRep(farHole), kRefused);

    auto const cube = MakeUnitCube();
    std::vector<Vertex> const normals(7);
    std::vector<std::pair<float, float>> const uvs(9);
    EXPECT_EQ(definitions.AddBRepWithNormals({&cube, &normals}), kRefused);
    EXPECT_EQ(definitions.AddBRepWithUVs({&cube, &uvs}), kRefused);
    EXPECT_EQ(Open(builder).GetModelReader().GetGeometry().GetDefinitionCount(), 2u);
}

TEST(ModelBuilder, AnInstanceWithoutShapeOrEntityIsLeftOut) {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity(kGuid, L"", {});
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(MakeUnitCube());
    auto& writer = builder.GetInstanceWriter();
    writer.AddInstance(entity, kRefused, kInvalidIndex, kInvalidIndex, {});
    writer.AddInstance(EntityIndex_t{1}, shape, kInvalidIndex, kInvalidIndex, {});
    writer.AddInstance(entity, shape, 3, 4, TestSupport::MakeTranslation(1, 2, 3));
    auto const storage = Open(builder);
    auto const& geometry = storage.GetModelReader().GetGeometry();
    ASSERT_EQ(geometry.GetInstanceCount(), 1u);
    InstanceRecord instance;
    geometry.GetInstance(instance, 0);
    EXPECT_EQ(instance.materialIndex, 3u);
    EXPECT_EQ(instance.layerIndex, 4u);
    AffineTransform placement;
    geometry.GetPlacement(placement, instance.placementIndex);
    EXPECT_EQ(placement.offset.z, 3);
}

TEST(ModelBuilder, MaterialsTexturesAndLayersReadBackWithoutDeduplication) {
    ModelBuilder builder;
    MaterialRecord const glass{{10, 20, 30, 40}, 1, true};
    EXPECT_EQ(builder.GetMaterialWriter().AddMaterial(glass), 0u);
    EXPECT_EQ(builder.GetMaterialWriter().AddMaterial(glass), 1u);
    EXPECT_EQ(builder.GetLayerWriter().AddLayer("T\xC3\xBCren"), 0u);
    EXPECT_EQ(builder.GetLayerWriter().AddLayer("T\xC3\xBCren"), 1u);
    EXPECT_EQ(builder.GetTextureWriter().AddTexture(TextureType::PNG, {1, 2, 3}), 0u);
    EXPECT_EQ(builder.GetTextureWriter().AddTexture(static_cast<TextureType>(77), {}), 1u);

    auto const storage = Open(builder);
    auto const& geometry = storage.GetModelReader().GetGeometry();
    ASSERT_EQ(geometry.GetMaterialCount(), 2u);
    MaterialRecord material;
    geometry.GetMaterial(material, 1);
    EXPECT_EQ(material.color, glass.color);
    EXPECT_EQ(material.textureIndex, 1);
    EXPECT_TRUE(material.twoSided);
    ASSERT_EQ(geometry.GetExtraContentCount(), 2u);
    std::string name;
    geometry.GetLayerName(name, 1);
    EXPECT_EQ(name, "T\xC3\xBCren");
    ASSERT_EQ(geometry.GetTextureCount(), 2u);
    Texture texture;
    geometry.GetTexture(texture, 0);
    EXPECT_EQ(texture.getType(), TextureType::PNG);
    EXPECT_EQ(texture.getData(), (std::vector<char>{1, 2, 3}));
    geometry.GetTexture(texture, 1);
    EXPECT_EQ(static_cast<std::uint32_t>(texture.getType()), 77u);
    EXPECT_TRUE(texture.getData().empty());
}

/// A model of this many owner histories, all by a user whose name has this length.
std::vector<char> WriteHistories(std::size_t count, std::size_t nameLength) {
    ModelBuilder builder;
    auto& writer = builder.GetOwnerHistoryWriter();
    std::string const name(nameLength, 'u');
    for (std::size_t i = 0; i < count; ++i) writer.AddOwnerHistory(writer.AddOwnerPart({name, "", ""}), 0, {name, ""});
    return builder.Create();
}

TEST(ModelBuilder, OwnerTextsThatRecurAreWrittenOnceUnlessTheyAreLong) {
    EXPECT_LT(WriteHistories(100, 256).size(), 100u * 100);
    auto const model = WriteHistories(100, 257);
    EXPECT_GT(model.size(), 100u * 2 * 257) << "what a buffer shares stays small beside what shares it";
    auto const storage = ModelStorage::FromBuffer(model);
    ASSERT_FALSE(storage.HasError());
    OwnerHistoryLinkRecord link;
    storage.GetModelReader().GetOwnerHistories().GetOwnerHistoryLinkRecord(link, 99);
    EXPECT_EQ(link.lastModifyingUser, std::string(257, 'u'));
}

TEST(ModelBuilder, OwnerHistoriesReadBack) {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity(kGuid, L"", {});
    auto& writer = builder.GetOwnerHistoryWriter();
    auto const part = writer.AddOwnerPart({"ann", "office", "editor"});
    auto const record = writer.AddOwnerHistoryRecord({3, OwnerHistoryChangeAction::ADDED, 1000, 2000});
    auto const history = writer.AddOwnerHistory(part, record, {"bob", "viewer"});
    writer.LinkOwnerHistory(entity, history);

    auto const storage = Open(builder);
    auto const& histories = storage.GetModelReader().GetOwnerHistories();
    ASSERT_EQ(histories.GetLinkCount(), 1u);
    ASSERT_EQ(histories.GetReferenceCount(), 1u);
    OwnerHistoryLink link;
    histories.GetLink(link, 0);
    EXPECT_EQ(link.entity, entity);
    OwnerPart partOut;
    histories.GetOwnerPart(partOut, histories.GetOwnerPartIndex(link.reference));
    EXPECT_EQ(partOut.user, "ann");
    EXPECT_EQ(partOut.organization, "office");
    EXPECT_EQ(partOut.application, "editor");
    OwnerHistoryRecord recordOut;
    histories.GetOwnerHistory(recordOut, histories.GetOwnerHistoryIndex(link.reference));
    EXPECT_EQ(recordOut.state, 3u);
    EXPECT_EQ(recordOut.changeAction, OwnerHistoryChangeAction::ADDED);
    EXPECT_EQ(recordOut.creationDate, 1000);
    EXPECT_EQ(recordOut.lastModifiedDate, 2000);
    OwnerHistoryLinkRecord linkRecord;
    histories.GetOwnerHistoryLinkRecord(linkRecord, link.reference);
    EXPECT_EQ(linkRecord.lastModifyingUser, "bob");
    EXPECT_EQ(linkRecord.lastModifyingApplication, "viewer");
}

TEST(ModelBuilder, PropertiesOfAnEntityKeepTheirOrderHoweverEntitiesAlternate) {
    ModelBuilder builder;
    auto const first = builder.GetEntityWriter().AddEntity(kGuid, L"", {});
    auto const second = builder.GetEntityWriter().AddEntity(kGuid, L"", {});
    auto& writer = builder.GetPropertyWriter();
    writer.AddProperty(second, {"Pset", "FireRating", std::string("F90")});
    writer.AddProperty(first, {"Pset", "Width", 0.25});
    writer.AddProperty(second, {"Pset", "Count", std::int64_t{-7}});
    writer.AddProperty(first, {"Other", "IsExternal", true});

    auto const storage = Open(builder);
    auto const& properties = storage.GetModelReader().GetProperties();
    ASSERT_EQ(properties.GetPropertyCount(first), 2u);
    ASSERT_EQ(properties.GetPropertyCount(second), 2u);
    EXPECT_EQ(properties.GetPropertyCount(EntityIndex_t{2}), 0u);
    PropertyRecord property;
    properties.GetProperty(property, first, 0);
    EXPECT_EQ(property.name, "Width");
    EXPECT_EQ(std::get<double>(property.value), 0.25);
    properties.GetProperty(property, first, 1);
    EXPECT_EQ(property.set, "Other");
    EXPECT_EQ(std::get<bool>(property.value), true);
    properties.GetProperty(property, second, 0);
    EXPECT_EQ(std::get<std::string>(property.value), "F90");
    properties.GetProperty(property, second, 1);
    EXPECT_EQ(std::get<std::int64_t>(property.value), -7);
}

}  // namespace
