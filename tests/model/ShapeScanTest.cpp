#include "model/ShapeScan.h"

#include "model/StoredBounds.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

namespace {

using namespace Quorlan;

constexpr double kTolerance = 1e-5;

/// A model of one shape, and that shape in its bytes.
struct StoredShapeModel {
    std::vector<char> bytes;

    explicit StoredShapeModel(GeometryObjectLib::FacetedBRep const& shape) {
        ModelBuilder builder;
        builder.GetGeometryDefinitionBuilder().AddBRep(shape);
        bytes = builder.Create();
    }

    BRepView View() const { return BRepView(*Schema::GetModel(bytes.data())->geometry()->facetedBReps()->Get(0)); }
};

/// The same shape written by FlatBuffers' own builder: back to front, with the layouts where it puts them.
std::vector<char> WriteElsewhere(BRepView const& shape) {
    flatbuffers::FlatBufferBuilder builder;
    std::vector<flatbuffers::Offset<Schema::FaceTable>> faces;
    for (auto const* face : *shape.faces) {
        auto const loop = builder.CreateVector(face->outerLoop()->data(), face->outerLoop()->size());
        faces.push_back(Schema::CreateFaceTable(builder, loop));
    }
    auto const* const first = reinterpret_cast<Schema::PositionVertex const*>(shape.vertices);
    auto const vertices = builder.CreateVectorOfStructs(first, shape.vertexCount);
    auto const faceVector = builder.CreateVector(faces);
    builder.Finish(Schema::CreateFacetedBRepTable(builder, faceVector, 0, vertices));
    auto const* const bytes = reinterpret_cast<char const*>(builder.GetBufferPointer());
    return {bytes, bytes + builder.GetSize()};
}

ShapeScan ScanOf(GeometryObjectLib::FacetedBRep const& shape) {
    StoredShapeModel const model(shape);
    return ShapeScanner().Scan(model.View());
}

TEST(ShapeScanner, CountsAndMeasuresAShape) {
    auto const scan = ScanOf(TestSupport::MakeBox({0, 0, 0}, {3, 4, 12}));
    EXPECT_EQ(scan.counts.faces, 6u);
    EXPECT_EQ(scan.counts.holes, 0u);
    EXPECT_EQ(scan.counts.vertices, 8u);
    EXPECT_EQ(scan.counts.loopWords, 12u);
    EXPECT_EQ(scan.min.x(), 0);
    EXPECT_EQ(scan.max.z(), 12);
    EXPECT_TRUE(scan.isSound && scan.isFinite && scan.isStorable && scan.isRun);
}

TEST(ShapeScanner, KnowsAShapeThatAnotherWriterLaidOut) {
    StoredShapeModel const model(TestSupport::MakeUnitCube());
    auto const bytes = WriteElsewhere(model.View());
    BRepView const other(*flatbuffers::GetRoot<Schema::FacetedBRepTable>(bytes.data()));
    auto const scan = ShapeScanner().Scan(other);
    EXPECT_FALSE(scan.isRun);
    EXPECT_TRUE(scan.isStorable);
    EXPECT_EQ(scan.sketch.topology, ScanOf(TestSupport::MakeUnitCube()).sketch.topology);
}

TEST(ShapeScanner, TellsPositionsThatAreNoNumbers) {
    for (double const odd : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        auto cube = TestSupport::MakeUnitCube();
        for (std::size_t i : {0u, 3u, 7u}) {
            auto broken = cube;
            broken.vertices[i].z = odd;
            EXPECT_FALSE(ScanOf(broken).isFinite) << odd << " at " << i;
        }
    }
}

TEST(ShapeScanner, RefusesIndicesBeyondTheVertices) {
    StoredShapeModel model(TestSupport::MakeUnitCube());
    auto* const loop = const_cast<flatbuffers::Vector<std::uint16_t>*>(model.View().faces->Get(5)->outerLoop());
    loop->Mutate(3, 8);
    EXPECT_FALSE(ShapeScanner().Scan(model.View()).isSound);
}

TEST(ShapeScanner, BytesBetweenThePartsThatAreNotZeroMakeNoRun) {
    GeometryObjectLib::FacetedBRep triangle;
    triangle.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    triangle.faces = {{0, 1, 2}};
    StoredShapeModel model(triangle);
    EXPECT_TRUE(ShapeScanner().Scan(model.View()).isRun);
    auto* const loop = const_cast<std::uint8_t*>(model.View().faces->Get(0)->outerLoop()->Data());
    loop[6] = 1;
    EXPECT_FALSE(ShapeScanner().Scan(model.View()).isRun);
}

TEST(ShapeScanner, HolesOutOfTheOrderOfTheirFacesAreNotStorable) {
    auto plate = TestSupport::MakePlateWithHole();
    plate.holes[3] = {{0, 1, 2}};
    StoredShapeModel model(plate);
    ASSERT_TRUE(ShapeScanner().Scan(model.View()).isStorable);
    auto* const last = const_cast<Schema::HoleTable*>(model.View().holes->Get(model.View().holes->size() - 1));
    ASSERT_TRUE(reinterpret_cast<flatbuffers::Table*>(last)->SetField<std::uint16_t>(Schema::HoleTable::VT_FACE, 0, 9));
    EXPECT_FALSE(ShapeScanner().Scan(model.View()).isStorable);
}

TEST(ShapeScanner, CopiesWithinTheToleranceHaveLengthsWithinFourTolerances) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> nudge(-0.55e-5, 0.55e-5);
    for (int i = 0; i < 200; ++i) {
        auto const shape = TestSupport::MakePrism(3 + i % 20, 0.5 + i, 2);
        auto copy = shape;
        auto const rotation = TestSupport::MakeRotation({1, 0.1 * i, -2}, 0.1 * i);
        for (Vertex& v : copy.vertices)
            v = TransformPoint(rotation.matrix, v + Vertex{nudge(random), nudge(random), 0});
        auto const a = ScanOf(shape).sketch;
        auto const b = ScanOf(copy).sketch;
        EXPECT_EQ(a.topology, b.topology);
        double const rounding = 1e-6 * (1 + i);  // single precision
        EXPECT_NEAR(a.lengths[0], b.lengths[0], 4 * kTolerance + rounding);
        EXPECT_NEAR(a.lengths[1], b.lengths[1], 4 * kTolerance + rounding);
    }
}

/// To the bit, where zeros of both signs are the bounds too.
TEST(ShapeScanner, BoundsAreThoseThatAWriterFinds) {
    for (std::uint32_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        double const values[] = {-0.0, 0.0, seed % 2 == 0 ? 1.0 : -0.0, seed % 3 == 0 ? -1.0 : 0.0};
        auto shape = TestSupport::MakePrism(3, 1, 1);
        shape.vertices.resize(6 + random() % 12);
        for (Vertex& v : shape.vertices) v = {values[random() % 4], values[random() % 4], values[random() % 4]};
        StoredBounds expected;
        for (Vertex const& v : shape.vertices) {
            expected.Add(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
        }
        auto const scan = ScanOf(shape);
        auto const min = expected.GetMin();
        auto const max = expected.GetMax();
        ASSERT_EQ(std::memcmp(&scan.min, &min, sizeof(min)), 0);
        ASSERT_EQ(std::memcmp(&scan.max, &max, sizeof(max)), 0);
    }
}

}  // namespace
