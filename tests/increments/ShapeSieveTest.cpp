#include "increments/ShapeSieve.h"

#include "support/Shapes.h"
#include "support/Transforms.h"

#include <Quorlan/ModelBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools::Increments;

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

ShapeSketch SketchOf(double first, double second, std::uint64_t topology = 1) { return {topology, {first, second}}; }

TEST(ShapeSieve, HandsOutWhatIsSimilarOnceInTheOrderOfComing) {
    ShapeSieve sieve(kTolerance);
    std::vector<GeometryDefinitionIndex_t> waiting;
    ASSERT_FALSE(sieve.FindSimilar(SketchOf(1, 2), waiting));
    sieve.Wait(SketchOf(1, 2), GeometryDefinitionIndex_t{7});
    sieve.Wait(SketchOf(1 + 15 * kTolerance, 2), GeometryDefinitionIndex_t{5});
    EXPECT_FALSE(sieve.FindSimilar(SketchOf(1, 2, 9), waiting));
    EXPECT_FALSE(sieve.FindSimilar(SketchOf(1, 2 + 9 * kTolerance), waiting));
    EXPECT_TRUE(sieve.FindSimilar(SketchOf(1 + 7.5 * kTolerance, 2), waiting));
    EXPECT_EQ(waiting,
              (std::vector<GeometryDefinitionIndex_t>{GeometryDefinitionIndex_t{7}, GeometryDefinitionIndex_t{5}}));
    waiting.clear();
    EXPECT_TRUE(sieve.FindSimilar(SketchOf(1 + 7.5 * kTolerance, 2), waiting)) << "they still resemble it";
    EXPECT_TRUE(waiting.empty()) << "but wait no longer";
}

TEST(ShapeSieve, ReleasesAllInTheOrderOfComing) {
    ShapeSieve sieve(kTolerance);
    sieve.Reserve(1000);
    std::vector<GeometryDefinitionIndex_t> expected;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        expected.push_back(GeometryDefinitionIndex_t{i});
        sieve.Wait(SketchOf(1000.0 - i, 2, i % 3), expected.back());
    }
    std::vector<GeometryDefinitionIndex_t> waiting;
    sieve.ReleaseAll(waiting);
    EXPECT_EQ(waiting, expected);
    waiting.clear();
    sieve.ReleaseAll(waiting);
    EXPECT_TRUE(waiting.empty());
}

/// Whatever could have a common copy with a sketch is noticed, however the sketches crowd, also where lengths are huge.
TEST(ShapeSieve, MissesNothingThatAScanFinds) {
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        std::mt19937 random(seed);
        double const scale = seed == 5 ? 1e12 : 1;
        std::uniform_real_distribution<double> length(0, 400 * kTolerance);
        ShapeSieve sieve(kTolerance);
        std::vector<ShapeSketch> seen;
        std::vector<bool> isHandedOut;
        for (std::uint32_t i = 0; i < 300; ++i) {
            auto const sketch = SketchOf(scale + length(random), scale + length(random), random() % 2);
            std::vector<GeometryDefinitionIndex_t> waiting;
            bool const isSimilar = sieve.FindSimilar(sketch, waiting);
            for (auto const shape : waiting) {
                ASSERT_FALSE(isHandedOut[static_cast<std::uint32_t>(shape)]) << "seed " << seed;
                isHandedOut[static_cast<std::uint32_t>(shape)] = true;
            }
            for (std::uint32_t k = 0; k < i; ++k) {
                bool const isNear = seen[k].topology == sketch.topology &&
                                    std::abs(seen[k].lengths[0] - sketch.lengths[0]) <= 8 * kTolerance &&
                                    std::abs(seen[k].lengths[1] - sketch.lengths[1]) <= 8 * kTolerance;
                if (!isNear) continue;
                ASSERT_TRUE(isSimilar) << "seed " << seed;
                ASSERT_TRUE(isHandedOut[k]) << "seed " << seed;
            }
            seen.push_back(sketch);
            isHandedOut.push_back(isSimilar);
            if (isSimilar) {
                sieve.Remember(sketch);
            } else {
                sieve.Wait(sketch, GeometryDefinitionIndex_t{i});
            }
        }
    }
}

}  // namespace
