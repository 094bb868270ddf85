#include "model/BufferVerifier.h"

#include "model/ModelView.h"
#include "support/RawModel.h"
#include "support/SeedModels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

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

bool ExpectSameAsGenerated(std::vector<char> const& buffer) {
    bool const passes = PassesGeneratedVerifier(buffer) && IsWholeAndAligned(buffer);
    EXPECT_EQ(VerifyBuffer(buffer).root != nullptr, passes);
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
        for (int round = 0; round < 8000; ++round) {
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
