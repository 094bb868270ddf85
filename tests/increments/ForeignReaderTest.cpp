#include "increments/ModelContent.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/IModelReader.h>
#include <Tools/EntityMerger.h>
#include <Tools/Increments/IncrementModelBuilder.h>

#include <gtest/gtest.h>

/// The writing tools over a model that is no model buffer.
namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Action = OwnerHistoryChangeAction;

/// A house of two entities, held in no buffer: a cube with normals, and lines.
class HouseReader final : public IModelReader,
                          public IEntityReader,
                          public IGeometryReader,
                          public IPropertyReader,
                          public IOwnerHistoryReader {
public:
    IEntityReader const& GetEntities() const override { return *this; }
    IGeometryReader const& GetGeometry() const override { return *this; }
    IPropertyReader const& GetProperties() const override { return *this; }
    IOwnerHistoryReader const& GetOwnerHistories() const override { return *this; }

    std::uint32_t GetCount() const override { return 2; }
    EntityIdentifier const& GetIdentifier(EntityIdentifier& out, std::uint32_t entity) const override {
        out = {0, entity, entity, 0, TestSupport::MakeTranslation(0, 0, entity)};
        return out;
    }
    void GetText(std::wstring& out, std::uint32_t reference) const override { out = std::to_wstring(reference); }
    void GetGuid(_GUID& out, std::uint32_t reference) const override { out = MakeGuid(reference); }
    void GetGuidText(std::string& out, std::uint32_t) const override { out.clear(); }
    void GetGeometricKey(GeometricKey& out, std::uint32_t) const override { out = {}; }
    char const* GetIdentifierText(std::uint32_t) const override { return ""; }
    void GetIdentifierString(std::string& out, std::uint32_t) const override { out.clear(); }

    std::uint32_t GetInstanceCount() const override { return 4; }
    void GetInstance(InstanceRecord& out, std::uint32_t instance) const override {
        // The last two name an entity and a definition that do not exist.
        out = {0, instance == 2 ? 9 : instance % 2, instance == 3 ? 9 : instance % 2, 0, 0};
    }
    std::uint32_t GetDefinitionCount() const override { return 2; }
    void GetDefinitionBounds(DefinitionBounds& out, std::uint32_t) const override { out = {}; }
    std::uint32_t GetMaterialCount() const override { return 1; }
    void GetMaterial(MaterialRecord& out, std::uint32_t) const override { out = {{1, 2, 3, 4}, 0, true}; }
    std::uint32_t GetTextureCount() const override { return 1; }
    void GetTexture(Texture& out, std::uint32_t) const override { out = Texture(TextureType::PNG, {'x'}); }
    std::uint32_t GetExtraContentCount() const override { return 1; }
    void GetLayerName(std::string& out, std::uint32_t) const override { out = "Layer"; }
    std::uint32_t GetDefinitionKind(std::uint32_t definition) const override { return definition == 0 ? 7 : 5; }
    bool GetFacetedBRep(FacetedBRep& out, std::uint32_t) const override {
        out = TestSupport::MakeUnitCube();
        return true;
    }
    void GetVertexNormals(std::vector<Vertex>& out, std::uint32_t) const override { out.assign(8, {0, 0, 1}); }
    void GetTextureCoordinates(std::vector<std::pair<float, float>>& out, std::uint32_t) const override { out.clear(); }
    bool GetGraphicsContainer(GraphicsContainer& out, std::uint32_t) const override {
        out = {{{{0, 0, 0}, {1, 2, 3}}}, {}};
        return true;
    }
    void GetPlacement(AffineTransform& out, std::uint32_t) const override {
        out = TestSupport::MakeTranslation(5, 6, 7);
    }

    std::uint32_t GetPropertyCount(EntityIndex_t entity) const override { return static_cast<std::uint32_t>(entity); }
    void GetProperty(PropertyRecord& out, EntityIndex_t, std::uint32_t) const override { out = {"Set", "Name", 0.5}; }

    std::uint32_t GetLinkCount() const override { return 2; }
    void GetLink(OwnerHistoryLink& out, std::uint32_t link) const override { out = {EntityIndex_t{link * 9}, 3}; }
    std::uint32_t GetOwnerPartIndex(std::uint32_t reference) const override { return reference; }
    std::uint32_t GetOwnerHistoryIndex(std::uint32_t reference) const override { return reference; }
    void GetOwnerHistoryLinkRecord(OwnerHistoryLinkRecord& out, std::uint32_t reference) const override {
        out = {std::to_string(reference), {}};
    }
    void GetOwnerPart(OwnerPart& out, std::uint32_t index) const override { out = {std::to_string(index), {}, {}}; }
    void GetOwnerHistory(OwnerHistoryRecord& out, std::uint32_t index) const override {
        out = {index, Action::NOCHANGE, 0, 0};
    }
};

TEST(ForeignReader, IncrementModelBuilderReadsThroughThePublicOperationsAlone) {
    Tools::Increments::IncrementModelBuilder builder;
    builder.Add(HouseReader(), {{Action::ADDED, EntityIndex_t{1}}, {Action::MODIFIED, EntityIndex_t{0}}});
    auto const content = ReadContent(builder.GetResult());
    ASSERT_EQ(content.size(), 2u);
    EXPECT_EQ(content[0].guid, MakeGuid(1));
    EXPECT_EQ(content[0].text, L"1");
    EXPECT_EQ(content[0].placement.origin[2], 1);
    EXPECT_EQ(content[0].properties.size(), 1u);
    EXPECT_EQ(content[0].instances.size(), 1u);
    EXPECT_EQ(content[0].instances.at(0).kind, 5u);
    EXPECT_EQ(content[1].instances.at(0).kind, 7u);
    EXPECT_EQ(content[1].instances.at(0).points.at(0).z, 7);
    EXPECT_EQ(content[1].instances.at(0).layer, "Layer");
    EXPECT_TRUE(content[1].instances.at(0).material->texture);
    EXPECT_EQ(content[1].history.changeAction, Action::MODIFIED);
    EXPECT_EQ(content[1].history.state, 3u);
    EXPECT_EQ(content[1].owner.user, "3");
    EXPECT_EQ(content[0].owner.user, std::to_string(kInvalidIndex)) << "the reader's answer for no owner history";
    EXPECT_EQ(content[0].link.lastModifyingUser, std::to_string(kInvalidIndex));
}

TEST(ForeignReader, OperationsWithADefaultFollowFromTheOthers) {
    HouseReader const house;
    PlacementRecord placement;
    house.IEntityReader::GetPlacementRecord(placement, 1);
    EXPECT_EQ(placement.origin, (std::array<double, 3>{0, 0, 1}));
    house.IGeometryReader::GetPlacementRecord(placement, 0);
    EXPECT_EQ(placement.origin, (std::array<double, 3>{5, 6, 7}));
    EXPECT_EQ(placement.xAxis, (std::array<float, 3>{1, 0, 0}));
    EXPECT_EQ(house.GetPlacementCount(), 1u);
    EXPECT_EQ(house.GetReferenceCount(), 4u);
}

TEST(ForeignReader, EntityMergerReadsThroughThePublicOperationsAlone) {
    Tools::EntityMerger merger;
    merger.Add(HouseReader(), MakeGuid(5), TestSupport::MakeTranslation(1, 0, 0), L"house", Action::ADDED);
    auto const content = ReadContent(merger.GetResult());
    ASSERT_EQ(content.size(), 1u);
    ASSERT_EQ(content[0].instances.size(), 3u) << "the instance without a definition is left out";
    EXPECT_EQ(content[0].instances[0].points[0].x, 1 + 1 + 5);
}

}  // namespace
