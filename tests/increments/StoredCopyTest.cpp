#include "increments/ForwardingReader.h"
#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"
#include "support/RawModel.h"
#include "support/SeedModels.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/EntityMerger.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

/// Copying from a model buffer, which goes over as it is stored where it can, gives the bytes that copying through the
/// public operations of the readers gives.
namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;
using Action = OwnerHistoryChangeAction;
using List = std::vector<std::pair<Action, EntityIndex_t>>;
using Tools::Increments::IncrementModelBuilder;

List ListOf(IModelReader const& reader, std::uint32_t first, std::uint32_t step, Action action) {
    List list;
    for (std::uint32_t i = first; i < reader.GetEntities().GetCount(); i += step) {
        list.emplace_back(action, EntityIndex_t{i});
    }
    return list;
}

std::vector<char> CopyAll(IModelReader const& reader) {
    IncrementModelBuilder builder;
    builder.Add(reader, ListOf(reader, 0, 1, Action::NOCHANGE));
    return builder.GetResult();
}

void ExpectSameBytes(std::vector<char> const& model) {
    auto const storage = ModelStorage::FromBuffer(model);
    ASSERT_FALSE(storage.HasError());
    IModelReader const& reader = storage.GetModelReader();
    ForwardingReader const forwarding(reader);
    EXPECT_EQ(CopyAll(reader), CopyAll(forwarding));

    IncrementModelBuilder parts;
    IncrementModelBuilder forwardedParts;
    for (std::uint32_t first : {2u, 0u, 1u}) {  // every entity once, in three calls, and every third twice
        auto list = ListOf(reader, first, 3, Action::MODIFIED);
        if (first == 0) list.insert(list.end(), list.rbegin(), list.rend());
        parts.Add(reader, list);
        forwardedParts.Add(forwarding, list);
    }
    EXPECT_EQ(parts.GetResult(), forwardedParts.GetResult());

    Tools::EntityMerger merger;
    Tools::EntityMerger forwardedMerger;
    merger.Add(reader, MakeGuid(1), TestSupport::MakeTranslation(1, 2, 3), L"all", Action::ADDED);
    forwardedMerger.Add(forwarding, MakeGuid(1), TestSupport::MakeTranslation(1, 2, 3), L"all", Action::ADDED);
    EXPECT_EQ(merger.GetResult(), forwardedMerger.GetResult());
}

/// An entity with an instance of the shape.
void AddPart(ModelBuilder& builder, std::uint32_t number, GeometryDefinitionIndex_t shape) {
    EntityIndex_t const entity = builder.GetEntityWriter().AddEntity(MakeGuid(number), L"part", {});
    builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex, {});
}

/// Shapes whose sizes differ by fractions and small multiples of the tolerance of copies, turned and moved: whether one
/// is a copy of another hangs on the last digits, and chains of near copies have no clear beginning.
std::vector<char> WriteNearCopies(std::uint32_t seed, std::uint32_t count) {
    std::mt19937 random(seed);
    auto const below = [&random](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    ModelBuilder builder;
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    for (std::uint32_t i = 0; i < count; ++i) {
        double const step = below(2) == 0 ? 0.4e-5 : 2.1e-5;
        FacetedBRep shape = below(3) == 0 ? TestSupport::MakePlateWithHole()
                                          : TestSupport::MakeBox({0, 0, 0}, {1 + step * below(9), 0.5, 0.25});
        if (below(4) == 0) shape.vertices[0].z += step * below(4);
        if (below(8) == 0) std::swap(shape.faces[0], shape.faces[1]);
        auto const motion = below(2) == 0 ? TestSupport::MakeTranslation(below(5), 0.1 * below(7), 0)
                                          : TestSupport::MakeRotationZ(0.3 * below(20));
        for (Vertex& vertex : shape.vertices) vertex = TransformPoint(motion.matrix, vertex);
        std::vector<Vertex> const normals(shape.vertices.size(), {0, 0, 1});
        std::vector<std::pair<float, float>> const uvs(shape.vertices.size(), {0.25f, 0.5f});
        switch (below(4)) {
            case 0: AddPart(builder, i, definitions.AddBRepWithNormals({&shape, &normals})); break;
            case 1: AddPart(builder, i, definitions.AddBRepWithUVs({&shape, &uvs})); break;
            default: AddPart(builder, i, definitions.AddBRep(shape));
        }
    }
    return builder.Create();
}

TEST(StoredCopy, RandomScenesGiveTheBytesOfTheOpenWay) {
    for (std::uint32_t seed = 0; seed < 6; ++seed) {
        SCOPED_TRACE(seed);
        ModelBuilder builder;
        SceneWriter scene(builder);
        for (std::uint32_t number = 0; number < 60; ++number) {
            scene.AddEntity(number, seed, static_cast<Action>(number % 5));
        }
        ExpectSameBytes(builder.Create());
    }
}

TEST(StoredCopy, NearCopiesGiveTheBytesOfTheOpenWay) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        ExpectSameBytes(WriteNearCopies(seed, 300));
    }
}

TEST(StoredCopy, SeedModelsGiveTheBytesOfTheOpenWay) {
    for (auto const& [name, model] : TestSupport::MakeSeedModels()) {
        SCOPED_TRACE(name);
        if (!ModelStorage::FromBuffer(model).HasError()) ExpectSameBytes(model);
    }
}

TEST(StoredCopy, ShapesThatAreNotFiniteHugeFarOrFlatGiveTheBytesOfTheOpenWay) {
    ModelBuilder builder;
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    std::uint32_t number = 0;
    auto const add = [&](FacetedBRep const& shape) { AddPart(builder, number++, definitions.AddBRep(shape)); };
    for (int repeat = 0; repeat < 3; ++repeat) {
        FacetedBRep cube = TestSupport::MakeUnitCube();
        add(cube);
        cube.vertices[3].y = std::nan("");
        add(cube);
        cube.vertices[3].y = HUGE_VAL;
        add(cube);
        for (Vertex& vertex : cube.vertices) vertex = {vertex.x, 0, 0};
        add(cube);  // all on one line: written each time
        cube = TestSupport::MakeUnitCube();
        for (Vertex& vertex : cube.vertices) vertex = vertex + Vertex{1000, 2000, -3000.0 * repeat};
        add(cube);
        cube = TestSupport::MakeUnitCube();
        cube.vertices.resize(2);
        cube.faces = {{0, 1}};
        add(cube);
        cube.vertices.clear();
        cube.faces.clear();
        add(cube);
    }
    ExpectSameBytes(builder.Create());
    FacetedBRep huge = TestSupport::MakeUnitCube();
    for (Vertex& vertex : huge.vertices) vertex = 3e9 * vertex;
    add(huge);
    add(TestSupport::MakeUnitCube());
    add(huge);
    ExpectSameBytes(builder.Create());
}

/// A buffer that no writer of ours made: shared and absent parts, indices and kinds that lead nowhere.
TEST(StoredCopy, OddBuffersGiveTheBytesOfTheOpenWay) {
    RawModel model;
    model.entityKind = 0;
    for (std::uint32_t i = 0; i < 6; ++i) model.AddEntity(At(i, 0, 0));
    auto const plate = ToRawBRep(TestSupport::MakePlateWithHole());
    std::vector<RawBRep> shapes(9, plate);
    shapes[1].holes->insert(shapes[1].holes->begin(), RawHole{5, std::vector<std::uint16_t>{0, 1, 2}});  // not sorted
    shapes[2].faces->at(0) = std::nullopt;
    shapes[3].faces->at(0)->at(1) = 60000;  // beyond the vertices
    shapes[4].holes->at(0).loop = std::nullopt;
    shapes[5].vertices = std::nullopt;
    shapes[6].faces = std::nullopt;
    shapes[7].holes = std::nullopt;
    shapes[8].vertices->resize(2);
    for (std::uint8_t const kind : std::vector<std::uint8_t>{1, 6, 7}) {
        for (auto const& shape : shapes)
            model.AddInstance(model.AddInstance(0, 0) % 6, model.AddBRep(shape, kind), At(0, kind, 1));
    }
    for (std::uint8_t const kind : std::vector<std::uint8_t>{0, 1, 2, 5, 6, 7, 16, 255}) {
        model.AddInstance(kind % 6, model.AddDefinition({0, 0, 0}, {1, 1, 1}, kind, 99), {}, 7, 7);
    }
    ExpectSameBytes(model.Write());
}

TEST(StoredCopy, ReadersOfBothKindsCanFeedOneBuilder) {
    std::vector<char> const model = WriteNearCopies(11, 120);
    auto const storage = ModelStorage::FromBuffer(model);
    IModelReader const& reader = storage.GetModelReader();
    ForwardingReader const forwarding(reader);
    IncrementModelBuilder mixed;
    IncrementModelBuilder open;
    for (std::uint32_t first = 0; first < 5; ++first) {
        auto const list = ListOf(reader, first, 5, Action::ADDED);
        mixed.Add(first == 2 ? static_cast<IModelReader const&>(forwarding) : reader, list);
        open.Add(forwarding, list);
    }
    EXPECT_EQ(mixed.GetResult(), open.GetResult());
}

TEST(StoredCopy, SourceMayGoBeforeTheResultIsTaken) {
    std::vector<char> const model = WriteNearCopies(12, 50);
    IncrementModelBuilder builder;
    std::vector<char> expected;
    {
        auto const storage = ModelStorage::FromBuffer(model);
        builder.Add(storage.GetModelReader(), ListOf(storage.GetModelReader(), 0, 1, Action::NOCHANGE));
        expected = CopyAll(storage.GetModelReader());
    }
    EXPECT_EQ(builder.GetResult(), expected);
}

/// Entities 0, 3, 6... of the second model replace those of the first.
void ExpectMergeAndSquashLikeTheOpenWay(std::vector<char> const& first, std::vector<char> const& second) {
    auto const base = ModelStorage::FromBuffer(first);
    auto const change = ModelStorage::FromBuffer(second);
    IModelReader const& baseReader = base.GetModelReader();
    IModelReader const& changeReader = change.GetModelReader();
    List kept;
    for (auto const& entry : ListOf(baseReader, 0, 1, Action::ADDED)) {
        if (static_cast<std::uint32_t>(entry.second) >= changeReader.GetEntities().GetCount()) kept.push_back(entry);
    }
    IncrementModelBuilder merged;
    merged.Add(ForwardingReader(baseReader), kept);
    merged.Add(ForwardingReader(changeReader), ListOf(changeReader, 0, 1, Action::NOCHANGE));
    IncrementModelBuilder squashed;
    squashed.Add(ForwardingReader(baseReader), kept);
    squashed.Add(ForwardingReader(changeReader), ListOf(changeReader, 0, 1, Action::ADDED));

    Tools::Increments::Merge merge;
    ASSERT_TRUE(merge.Build(first, second));
    EXPECT_EQ(merge.GetResult(), merged.GetResult());
    Tools::Increments::Squash squash;
    ASSERT_TRUE(squash.Build(first, second));
    EXPECT_EQ(squash.GetResult(), squashed.GetResult());
}

std::vector<char> WriteScene(std::uint32_t count, std::uint32_t revision) {
    ModelBuilder builder;
    SceneWriter scene(builder);
    for (std::uint32_t number = 0; number < count; ++number) scene.AddEntity(number, revision, Action::ADDED);
    return builder.Create();
}

TEST(StoredCopy, MergeAndSquashGiveTheBytesOfTheOpenWay) {
    ExpectMergeAndSquashLikeTheOpenWay(WriteScene(80, 1), WriteScene(25, 2));
    ExpectMergeAndSquashLikeTheOpenWay(WriteScene(30, 3), WriteScene(30, 3));
}

}  // namespace
