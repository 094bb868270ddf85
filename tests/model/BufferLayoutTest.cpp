#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>
#include <gtest/gtest.h>

#include <cstring>

/// Reads a written buffer by positions alone, as a reader of another make would.
namespace {

using namespace Quorlan;

template <class T>
T Load(char const* at) {
    T value;
    std::memcpy(&value, at, sizeof(value));
    return value;
}

/// What an offset leads to.
char const* Follow(char const* at) { return at + Load<std::uint32_t>(at); }

/// The place of a table's field, or null where it is absent.
char const* Field(char const* table, std::uint16_t voffset) {
    char const* const vtable = table - Load<std::int32_t>(table);
    if (voffset >= Load<std::uint16_t>(vtable)) return nullptr;
    auto const offset = Load<std::uint16_t>(vtable + voffset);
    return offset == 0 ? nullptr : table + offset;
}

char const* Child(char const* table, std::uint16_t voffset) {
    char const* const field = Field(table, voffset);
    return field == nullptr ? nullptr : Follow(field);
}

std::uint32_t Count(char const* vector) { return Load<std::uint32_t>(vector); }
char const* Elements(char const* vector) { return vector + 4; }

struct Written {
    std::vector<char> buffer;
    char const* root;
    char const* geometry;
};

Written WriteModel() {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, L"text",
                                                            TestSupport::MakeTranslation(10, 20, 30));
    builder.GetMaterialWriter().AddMaterial({{1, 2, 3, 4}, 0, true});
    builder.GetMaterialWriter().AddMaterial({{5, 6, 7, 8}, -1, false});
    builder.GetLayerWriter().AddLayer("walls");
    auto const plate = TestSupport::MakePlateWithHole();
    std::vector<Vertex> const normals(plate.vertices.size(), Vertex{0.5, 0.25, 0.125});
    std::vector<std::pair<float, float>> const uvs(plate.vertices.size(), {0.5f, 0.75f});
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    definitions.AddGraphicsContainer({{{{1, 2, 3}, {4, 5, 6}}}, {{{1, 2, 3}, {0, 0, 1}, {1, 0, 0}, 7, 8}}});
    definitions.AddBRepWithUVs({&plate, &uvs});
    definitions.AddBRepWithNormals({&plate, &normals});
    auto const shape = definitions.AddBRep(plate);
    builder.GetInstanceWriter().AddInstance(entity, shape, 1, 0, TestSupport::MakeTranslation(1, 2, 3));

    Written written{builder.Create(), nullptr, nullptr};
    written.root = Follow(written.buffer.data());
    written.geometry = Child(written.root, 8);
    return written;
}

TEST(BufferLayout, EntityRecordsHold64BytesWithThePlacementAt16) {
    auto const written = WriteModel();
    char const* const records = Child(Child(written.root, 4), 4);
    ASSERT_EQ(Count(records), 1u);
    char const* const record = Elements(records);
    EXPECT_EQ(Load<std::uint32_t>(record), 0u);
    EXPECT_EQ(Load<double>(record + 16), 10);
    EXPECT_EQ(Load<double>(record + 32), 30);
    EXPECT_EQ(Load<float>(record + 40), 1);
    EXPECT_EQ(Load<float>(record + 56), 1);
}

TEST(BufferLayout, InstancesAreFiveWords) {
    auto const written = WriteModel();
    char const* const instances = Child(written.geometry, 12);
    ASSERT_EQ(Count(instances), 1u);
    std::array<std::uint32_t, 5> const expected{0, 0, 3, 1, 0};
    EXPECT_EQ((Load<std::array<std::uint32_t, 5>>(Elements(instances))), expected);
    char const* const placements = Child(written.geometry, 4);
    ASSERT_EQ(Count(placements), 1u);
    EXPECT_EQ(Load<double>(Elements(placements) + 16), 3);
    EXPECT_EQ(Load<float>(Elements(placements) + 24), 1);
    EXPECT_EQ(Load<float>(Elements(placements) + 40), 1);
}

TEST(BufferLayout, MaterialsHold20BytesWithTheTwoSidedFlagAt8) {
    auto const written = WriteModel();
    char const* const materials = Child(written.geometry, 6);
    ASSERT_EQ(Count(materials), 2u);
    EXPECT_EQ(Elements(materials)[8], 1);
    EXPECT_EQ(Elements(materials)[28], 0);
}

TEST(BufferLayout, DefinitionsHold32BytesWithKindIndexAndBounds) {
    auto const written = WriteModel();
    char const* const definitions = Child(written.geometry, 10);
    ASSERT_EQ(Count(definitions), 4u);
    std::array<int, 4> const kinds{5, 6, 7, 1};
    for (std::uint32_t i = 0; i < 4; ++i) {
        char const* const definition = Elements(definitions) + 32 * i;
        EXPECT_EQ(definition[0], kinds[i]);
        EXPECT_EQ(Load<std::uint32_t>(definition + 4), 0u);
    }
    EXPECT_EQ(Load<float>(Elements(definitions) + 96 + 8), 0);
    EXPECT_EQ(Load<float>(Elements(definitions) + 96 + 20), 4);
}

TEST(BufferLayout, BRepsStandInTheVectorsOfTheirKinds) {
    auto const written = WriteModel();
    struct {
        std::uint16_t voffset;
        std::size_t stride;
        float lastOfFirstVertex;
    } const vectors[] = {{16, 12, 0}, {28, 20, 0.75f}, {30, 24, 0.125f}};
    for (auto const& [voffset, stride, last] : vectors) {
        char const* const breps = Child(written.geometry, voffset);
        ASSERT_EQ(Count(breps), 1u);
        char const* const brep = Follow(Elements(breps));
        char const* const faces = Child(brep, 4);
        char const* const holes = Child(brep, 6);
        char const* const vertices = Child(brep, 8);
        ASSERT_EQ(Count(faces), 10u);
        ASSERT_EQ(Count(holes), 2u);
        ASSERT_EQ(Count(vertices), 16u);
        EXPECT_EQ(Load<float>(Elements(vertices) + stride), 4);
        EXPECT_EQ(Load<float>(Elements(vertices) + stride - 4), last);

        char const* const loop = Child(Follow(Elements(faces)), 4);
        ASSERT_EQ(Count(loop), 4u);
        EXPECT_EQ((Load<std::array<std::uint16_t, 4>>(Elements(loop))), (std::array<std::uint16_t, 4>{0, 3, 2, 1}));

        char const* const hole = Follow(Elements(holes) + 4);
        EXPECT_EQ(Load<std::uint16_t>(Field(hole, 4)), 1);
        EXPECT_EQ(Count(Child(hole, 6)), 4u);
    }
}

TEST(BufferLayout, GraphicsContainersHoldSegmentsAndArcs) {
    auto const written = WriteModel();
    char const* const containers = Child(written.geometry, 32);
    ASSERT_EQ(Count(containers), 1u);
    char const* const container = Follow(Elements(containers));
    EXPECT_EQ(Load<float>(Elements(Child(container, 4)) + 20), 6);
    EXPECT_EQ(Load<float>(Elements(Child(container, 6)) + 36), 7);
    EXPECT_EQ(Load<float>(Elements(Child(container, 6)) + 40), 8);
}

TEST(BufferLayout, LayersAreStrings) {
    auto const written = WriteModel();
    char const* const layers = Child(written.geometry, 8);
    ASSERT_EQ(Count(layers), 1u);
    char const* const name = Follow(Elements(layers));
    EXPECT_EQ(std::string(Elements(name), Count(name)), "walls");
}

TEST(BufferLayout, FreeFieldsStayFree) {
    auto const written = WriteModel();
    for (std::uint16_t voffset = 18; voffset <= 26; voffset += 2) EXPECT_EQ(Field(written.geometry, voffset), nullptr);
}

}  // namespace
