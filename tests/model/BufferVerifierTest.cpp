#include "model/BufferVerifier.h"

#include "model/ModelView.h"
#include "support/RawModel.h"
#include "support/SeedModels.h"
#include "support/Shapes.h"

#include <Quorlan/ModelBuilder.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <tuple>

namespace Quorlan {
namespace {

using Testing::RawModel;

bool PassesGeneratedVerifier(std::vector<char> const& buffer) {
    flatbuffers::Verifier verifier(reinterpret_cast<std::uint8_t const*>(buffer.data()), buffer.size(), 16);
    return Schema::VerifyModelBuffer(verifier);
}

template <class T>
bool IsMisaligned(T const* vector) {
    return CountOf(vector) != 0 && reinterpret_cast<std::uintptr_t>(vector->Data()) % 8 != 0;
}

/// What is asked beyond the generated verification. REQUIRES: that has passed.
bool IsWholeAndAligned(std::vector<char> const& buffer) {
    auto const& model = *Schema::GetModel(buffer.data());
    if (model.entities() == nullptr || model.entities()->records() == nullptr || model.geometry() == nullptr) {
        return false;
    }
    if (IsMisaligned(model.entities()->records()) || IsMisaligned(model.entities()->geometricKeys())) return false;
    if (IsMisaligned(model.geometry()->placements())) return false;
    if (model.ownerHistories() != nullptr && IsMisaligned(model.ownerHistories()->records())) return false;
    return model.properties() == nullptr || !IsMisaligned(model.properties()->entries());
}

void ExpectEqual(ShapeScan const& a, ShapeScan const& b) {
    auto const members = [](ShapeScan const& s) {
        return std::tuple(s.counts.faces, s.counts.holes, s.counts.vertices, s.counts.loopWords, s.indexCount,
                          s.sketch.topology, s.isSound, s.isFinite, s.isStorable, s.isRun);
    };
    EXPECT_EQ(members(a), members(b));
    EXPECT_EQ(std::memcmp(a.sketch.lengths, b.sketch.lengths, sizeof(a.sketch.lengths)), 0);
    EXPECT_EQ(std::memcmp(&a.min, &b.min, sizeof(a.min)), 0);
    EXPECT_EQ(std::memcmp(&a.max, &b.max, sizeof(a.max)), 0);
}

/// RETURNS how many of the shapes are runs.
template <class Shapes>
std::size_t ExpectScans(LargeVector<ShapeScan> const& scans, Shapes const* shapes) {
    EXPECT_EQ(scans.size(), CountOf(shapes));
    ShapeScanner scanner;
    std::size_t runs = 0;
    for (std::uint32_t i = 0; i < CountOf(shapes); ++i) {
        ExpectEqual(scans[i], scans[i].isRun ? scanner.Scan(BRepView(*shapes->Get(i))) : ShapeScan());
        runs += scans[i].isRun ? 1 : 0;
    }
    return runs;
}

std::size_t ExpectScans(ShapeScans const& scans, Schema::Geometry const& geometry) {
    return ExpectScans(scans[kFacetedBRep], geometry.facetedBReps()) +
           ExpectScans(scans[kBRepWithUV], geometry.brepsWithUV()) +
           ExpectScans(scans[kBRepWithNormal], geometry.brepsWithNormal());
}

/// The same with and without scanning; the scans are those of the shapes that have been verified.
bool ExpectSameAsGenerated(std::vector<char> const& buffer) {
    bool const passes = PassesGeneratedVerifier(buffer) && IsWholeAndAligned(buffer);
    auto const verified = VerifyBuffer(buffer);
    EXPECT_EQ(verified.root != nullptr, passes);
    ShapeScans scans;
    auto const scanned = VerifyBuffer(buffer, &scans);
    EXPECT_EQ(scanned.root, verified.root);
    if (scanned.root == nullptr) return false;
    EXPECT_EQ(scanned.shapeSizes, verified.shapeSizes);
    ExpectScans(scans, *scanned.root->geometry());
    return passes;
}

TEST(BufferVerifier, SaysWhatTheGeneratedVerifierSaysOfEveryTruncation) {
    auto const model = TestSupport::MakeFullSeedModel();
    for (std::size_t size = 8; size <= model.size(); ++size) {
        ExpectSameAsGenerated({model.begin(), model.begin() + static_cast<std::ptrdiff_t>(size)});
    }
}

TEST(BufferVerifier, SaysWhatTheGeneratedVerifierSaysOfChangedBytesAndWords) {
    constexpr unsigned kSeed = 5;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    std::size_t passed = 0;
    for (auto const& seed : TestSupport::MakeSeedModels()) {
        for (int round = 0; round < 5000; ++round) {
            auto buffer = seed.buffer;
            for (auto changes = 1 + random() % 2; changes > 0; --changes) {
                std::size_t const width = std::size_t{1} << (random() % 3);
                std::size_t const at = random() % (buffer.size() / width) * width;
                auto const value = static_cast<std::uint32_t>(random() % 2 == 0 ? random() : random() % 64 - 16);
                std::memcpy(buffer.data() + at, &value, width);
            }
            passed += ExpectSameAsGenerated(buffer);
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(passed, 1000u);
}

// A vtable is told by where it stands, so that no place may stand for "none met".
TEST(BufferVerifier, AFaceMayNotPutItsVtableBeforeTheBuffer) {
    RawModel model;
    model.facetedBReps.emplace();
    model.AddInstance(model.AddEntity(), model.AddBRep(Testing::RawBox({0, 0, 0}, {1, 1, 1})), {});
    auto buffer = model.Write();
    ASSERT_NE(VerifyBuffer(buffer).root, nullptr);
    auto const* const face = Schema::GetModel(buffer.data())->geometry()->facetedBReps()->Get(0)->faces()->Get(0);
    auto const at = reinterpret_cast<char const*>(face) - buffer.data();
    for (std::ptrdiff_t beyond = 0; beyond < 16; ++beyond) {
        auto const toVtable = static_cast<std::int32_t>(at + beyond);
        std::memcpy(buffer.data() + at, &toVtable, sizeof(toVtable));
        ExpectSameAsGenerated(buffer);
    }
}

/// Shapes in a row, of one kind each, with a hole in every third.
std::vector<char> WriteShapes(std::uint32_t count) {
    ModelBuilder builder;
    auto& definitions = builder.GetGeometryDefinitionBuilder();
    for (std::uint32_t i = 0; i < count; ++i) {
        auto shape = i % 3 == 0 ? TestSupport::MakePlateWithHole() : TestSupport::MakePrism(3 + i % 5, 1, 2);
        std::vector<Vertex> const normals(shape.vertices.size(), {0, 0, 1});
        std::vector<std::pair<float, float>> const uvs(shape.vertices.size(), {0.25f, 0.5f});
        switch (i / 3 % 3) {
            case 0: definitions.AddBRepWithNormals({&shape, &normals}); break;
            case 1: definitions.AddBRepWithUVs({&shape, &uvs}); break;
            default: definitions.AddBRep(shape);
        }
    }
    return builder.Create();
}

TEST(BufferVerifier, ScansRunsInTheWalkThatVerifiesThem) {
    auto const buffer = WriteShapes(30);
    ShapeScans scans;
    auto const model = VerifyBuffer(buffer, &scans);
    ASSERT_NE(model.root, nullptr);
    EXPECT_EQ(ExpectScans(scans, *model.root->geometry()), 30u);
}

// A table may be named by every offset of a long vector.
TEST(BufferVerifier, ARunThatManyShapesShareIsNotScannedForEach) {
    auto buffer = WriteShapes(30);
    auto const* const shapes = Schema::GetModel(buffer.data())->geometry()->facetedBReps();
    auto const first = static_cast<std::size_t>(reinterpret_cast<char const*>(shapes->Data()) - buffer.data());
    for (std::uint32_t i = 1; i < shapes->size(); ++i) {
        std::uint32_t toTheFirst = 0;
        std::memcpy(&toTheFirst, buffer.data() + first, 4);
        toTheFirst -= 4 * i;
        std::memcpy(buffer.data() + first + 4 * i, &toTheFirst, 4);
    }
    EXPECT_TRUE(ExpectSameAsGenerated(buffer));
    RunScanner runs(buffer);
    auto const& shape = *Schema::GetModel(buffer.data())->geometry()->facetedBReps()->Get(0);
    EXPECT_TRUE(runs.Learn(BRepView(shape)));
    EXPECT_FALSE(runs.Learn(BRepView(shape)));
    ShapeScan scan;
    std::size_t scanned = 0;
    while (runs.Scan(&shape, sizeof(Schema::PositionVertex), 1000, scan)) ++scanned;
    EXPECT_GT(scanned, 0u);
    EXPECT_LT(scanned, buffer.size() / 100);
}

TEST(BufferVerifier, RunsThatAreBrokenAnywhereAreVerifiedAsAllOthers) {
    constexpr unsigned kSeed = 9;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    auto const intact = WriteShapes(12);
    auto const words = static_cast<std::uint32_t>(intact.size() / 4);
    for (std::uint32_t word = 2; word < words; ++word) {
        for (std::uint32_t const change : {1u, 4u, 0x10000u, 0xFFFFFFFFu, static_cast<std::uint32_t>(random())}) {
            auto buffer = intact;
            std::uint32_t value = 0;
            std::memcpy(&value, buffer.data() + 4 * word, 4);
            value += change;
            std::memcpy(buffer.data() + 4 * word, &value, 4);
            ExpectSameAsGenerated(buffer);
            if (HasFailure()) FAIL() << "word " << word << " changed by " << change;
        }
    }
    for (std::size_t size = 8; size < intact.size(); ++size) {
        ExpectSameAsGenerated({intact.begin(), intact.begin() + static_cast<std::ptrdiff_t>(size)});
    }
}

TEST(BufferVerifier, MeasuresTheVerticesAndLoopsOfEveryShape) {
    auto const buffer = TestSupport::MakeFullSeedModel();
    auto const model = VerifyBuffer(buffer);
    using Sizes = std::vector<std::uint64_t>;
    // The plate: 16 vertices, 10 faces and 2 holes of 4. The prism over an L: 12 vertices, 2 faces of 6, 6 of 4.
    EXPECT_EQ(model.shapeSizes[kFacetedBRep], Sizes{16 * 12 + 12 * 4 * 2});
    EXPECT_EQ(model.shapeSizes[kBRepWithNormal], Sizes{16 * 24 + 12 * 4 * 2});
    EXPECT_EQ(model.shapeSizes[kBRepWithUV], Sizes{12 * 20 + (2 * 6 + 6 * 4) * 2});
    EXPECT_EQ(model.shapeSizes[kGraphicsContainer], Sizes{2 * 24 + 44});
    EXPECT_EQ(model.longestOwnerPart, std::strlen("userorganizationapplication"));
    EXPECT_EQ(model.longestOwnerHistory, std::strlen("last userlast application"));
}

}  // namespace
}  // namespace Quorlan
