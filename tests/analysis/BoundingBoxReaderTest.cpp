// The boxes of an opened model, as against those of a raw buffer.

#include <Quorlan/ModelStorage.h>
#include <Tools/BoundingBoxBuilder.h>

#include "support/PlainAnalysis.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Tools::BoundingBoxBuilder;

ModelStorage Open(RawModel const& model) {
    auto storage = ModelStorage::FromBuffer(model.Write());
    EXPECT_FALSE(storage.HasError());
    return storage;
}

Vector3f Narrow(Vertex const& v) { return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)}; }

/// What the reader says of instance i, taken step by step.
AxisAlignedBox3 PlainBox(IModelReader const& reader, std::uint32_t i, AffineTransform const& transform) {
    InstanceRecord instance;
    reader.GetGeometry().GetInstance(instance, i);
    DefinitionBounds bounds;
    reader.GetGeometry().GetDefinitionBounds(bounds, instance.definitionIndex);
    AffineTransform placement;
    reader.GetGeometry().GetPlacement(placement, instance.placementIndex);
    EntityIdentifier entity;
    reader.GetEntities().GetIdentifier(entity, instance.entityIndex);
    auto const world =
        PlainCompose(ToPlainFrame(transform), PlainCompose(ToPlainFrame(entity.placement), ToPlainFrame(placement)));
    Vertex const center = (bounds.max + bounds.min) * 0.5;
    Vertex const half = (bounds.max - bounds.min) * 0.5;
    return PlainTransformBox(world, Narrow(center - half), Narrow(center + half));
}

/// A reader that writes down what it is asked for: two instances of one box, and operations with a default left out.
class LoggingReader final : public IModelReader, public IEntityReader, public IGeometryReader {
public:
    explicit LoggingReader(std::uint32_t instanceCount) : instanceCount_(instanceCount) {}

    IEntityReader const& GetEntities() const override { return Log("entities"), *this; }
    IGeometryReader const& GetGeometry() const override { return Log("geometry"), *this; }
    IPropertyReader const& GetProperties() const override { std::abort(); }
    IOwnerHistoryReader const& GetOwnerHistories() const override { std::abort(); }

    std::uint32_t GetCount() const override { return Log("entity count"), 1; }
    EntityIdentifier const& GetIdentifier(EntityIdentifier& out, std::uint32_t) const override {
        Log("identifier");
        out.placement = {};
        return out;
    }
    void GetText(std::wstring&, std::uint32_t) const override { Log("text"); }
    void GetGuid(_GUID&, std::uint32_t) const override { Log("GUID"); }
    void GetGuidText(std::string&, std::uint32_t) const override { Log("GUID text"); }
    void GetGeometricKey(GeometricKey&, std::uint32_t) const override { Log("key"); }
    char const* GetIdentifierText(std::uint32_t) const override { return Log("identifier text"), ""; }
    void GetIdentifierString(std::string&, std::uint32_t) const override { Log("identifier string"); }

    std::uint32_t GetInstanceCount() const override { return Log("instance count"), instanceCount_; }
    void GetInstance(InstanceRecord& out, std::uint32_t) const override { Log("instance"), out = {}; }
    std::uint32_t GetDefinitionCount() const override { return Log("definition count"), 1; }
    void GetDefinitionBounds(DefinitionBounds& out, std::uint32_t) const override {
        Log("bounds");
        out = {{0, 0, 0}, {1, 2, 3}};
    }
    std::uint32_t GetMaterialCount() const override { return Log("material count"), 0; }
    void GetMaterial(MaterialRecord&, std::uint32_t) const override { Log("material"); }
    std::uint32_t GetTextureCount() const override { return Log("texture count"), 0; }
    void GetTexture(Texture&, std::uint32_t) const override { Log("texture"); }
    std::uint32_t GetExtraContentCount() const override { return Log("layer count"), 0; }
    void GetLayerName(std::string&, std::uint32_t) const override { Log("layer"); }
    std::uint32_t GetDefinitionKind(std::uint32_t) const override { return Log("kind"), 1; }
    bool GetFacetedBRep(FacetedBRep&, std::uint32_t) const override { return Log("shape"), false; }
    void GetVertexNormals(std::vector<Vertex>&, std::uint32_t) const override { Log("normals"); }
    void GetTextureCoordinates(std::vector<std::pair<float, float>>&, std::uint32_t) const override { Log("uvs"); }
    bool GetGraphicsContainer(GraphicsContainer&, std::uint32_t) const override { return Log("lines"), false; }
    void GetPlacement(AffineTransform& out, std::uint32_t) const override { Log("placement"), out = {}; }

    std::vector<std::string> const& GetLog() const { return log_; }

private:
    void Log(char const* operation) const { log_.emplace_back(operation); }

    std::uint32_t instanceCount_;
    mutable std::vector<std::string> log_;
};

TEST(BoundingBoxBuilderOnReader, AsksForWhatItNeedsInOrderAndForNothingElse) {
    LoggingReader const reader(2);
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(reader));
    EXPECT_EQ(reader.GetLog(),
              (std::vector<std::string>{"entities", "geometry", "definition count", "instance count",  //
                                        "instance", "bounds", "placement", "identifier",               //
                                        "instance", "bounds", "placement", "identifier"}));
    EXPECT_TRUE(SameBits(builder.getBoundingBoxes()[1], AxisAlignedBox3{{0.5, 1, 1.5}, {0.5, 1, 1.5}}));
}

TEST(BoundingBoxBuilderOnReader, WithoutInstancesOnlyTheCountsAreAskedFor) {
    LoggingReader const reader(0);
    BoundingBoxBuilder builder;
    EXPECT_FALSE(builder.Build(reader));
    EXPECT_EQ(reader.GetLog(),
              (std::vector<std::string>{"entities", "geometry", "definition count", "instance count"}));
}

TEST(BoundingBoxBuilderOnReader, UnitBoxOnAnEntityTenAway) {
    RawModel model;
    model.AddInstance(model.AddEntity(At(10, 0, 0)), model.AddDefinition({0, 0, 0}, {1, 1, 1}));
    auto const storage = Open(model);
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(storage.GetModelReader()));
    ASSERT_EQ(builder.getBoundingBoxes().size(), 1u);
    EXPECT_TRUE(SameBits(builder.getBoundingBoxes()[0], AxisAlignedBox3{{10.5, 0.5, 0.5}, {0.5, 0.5, 0.5}}));
}

TEST(BoundingBoxBuilderOnReader, GivesTheBitsOfThePlainComputation) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kMixed}) {
        auto const storage = Open(MakeRandomModel(21, 300, style));
        auto const transform = RandomTransform(22);
        BoundingBoxBuilder builder;
        ASSERT_TRUE(builder.Build(transform, storage.GetModelReader()));
        ASSERT_EQ(builder.getBoundingBoxes().size(), 300u);
        for (std::uint32_t i = 0; i < 300; ++i) {
            auto const expected = PlainBox(storage.GetModelReader(), i, transform);
            ASSERT_TRUE(SameBits(builder.getBoundingBoxes()[i], expected)) << "instance " << i;
        }
    }
}

TEST(BoundingBoxBuilderOnReader, AgreesWithTheBufferOnAlignedPlacements) {
    auto const model = MakeRandomModel(23, 100, RandomPlacements::kAligned);
    auto const storage = Open(model);
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(storage.GetModelReader()));
    auto const boxes = PlainBoxes(model);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        EXPECT_NEAR(builder.getBoundingBoxes()[i].center.x, boxes[i].center.x, 1e-5);
        EXPECT_NEAR(builder.getBoundingBoxes()[i].halfExtent.z, boxes[i].halfExtent.z, 1e-5);
    }
}

TEST(BoundingBoxBuilderOnReader, ModelWithoutInstancesFailsAndKeepsTheEarlierBoxes) {
    auto const full = Open(MakeRandomModel(24, 5));
    auto const empty = Open(RawModel());
    BoundingBoxBuilder builder;
    ASSERT_TRUE(builder.Build(full.GetModelReader()));
    EXPECT_FALSE(builder.Build(empty.GetModelReader()));
    EXPECT_EQ(builder.getBoundingBoxes().size(), 5u);
}

}  // namespace
