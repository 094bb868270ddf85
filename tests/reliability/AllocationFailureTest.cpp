#include "reliability/FailingAllocator.h"
#include "support/ReadEverything.h"
#include "support/RunEveryTool.h"
#include "support/SeedModels.h"
#include "support/Shapes.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStatistics.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/Identifiers.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>
#include <Tools/LodLineBRepBuilder.h>
#include <Tools/UniqueGeometryDefinitionBuilder.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <new>

namespace {

using namespace Quorlan;
using namespace Quorlan::Tools;
using TestSupport::FailAllocation;
using TestSupport::GetLiveBlockCount;

constexpr std::size_t kMostAllocations = 100000;

/// Runs `run` with its first allocation failing, then with its second, and so on until it gets through. Every exception
/// must be the allocator's own. `afterFailure` looks at what a failure left behind. RETURNS the number of failures.
template <class RunOnce, class Look>
std::size_t FailEachAllocation(RunOnce const& run, Look const& afterFailure) {
    for (std::size_t number = 0; number < kMostAllocations; ++number) {
        FailAllocation failure(number);
        try {
            run();
            EXPECT_FALSE(failure.HasFailed()) << "the failure of allocation " << number << " was swallowed";
            return number;
        } catch (std::bad_alloc const&) {
            EXPECT_TRUE(failure.HasFailed());
        }
        afterFailure();
    }
    ADD_FAILURE() << "still failing after " << kMostAllocations << " allocations";
    return kMostAllocations;
}

/// The same for something made anew each time: a failure must leave no block behind.
template <class RunOnce>
void ExpectNoLeaks(RunOnce const& run) {
    run();  // what is allocated once and for all, stays
    std::ptrdiff_t const before = GetLiveBlockCount();
    std::size_t const failures =
        FailEachAllocation(run, [before] { ASSERT_EQ(GetLiveBlockCount(), before) << "a failure leaks"; });
    EXPECT_EQ(GetLiveBlockCount(), before);
    EXPECT_GT(failures, 0u);
}

std::vector<char> const& GetModel() {
    static std::vector<char> const model = TestSupport::MakeFullSeedModel();
    return model;
}

std::vector<char> const& GetSeed(std::string const& name) {
    static auto const seeds = TestSupport::MakeSeedModels();
    for (auto const& seed : seeds) {
        if (seed.name == name) return seed.buffer;
    }
    throw std::invalid_argument(name);
}

/// A tool that goes on after each failure and must in the end give what a fresh tool gives.
template <class Tool, class Build, class Same>
void ExpectToolSurvives(Build const& build, Same const& same) {
    GetModel();  // what is made once and for all must not be counted
    std::ptrdiff_t const before = GetLiveBlockCount();
    {
        Tool tool;
        EXPECT_GT(FailEachAllocation([&] { build(tool); }, [] {}), 0u);
        Tool fresh;
        build(fresh);
        EXPECT_TRUE(same(tool, fresh));
    }
    EXPECT_EQ(GetLiveBlockCount(), before) << "the tool leaks";
}

template <class Value>
bool HasSameBytes(std::vector<Value> const& a, std::vector<Value> const& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Value)) == 0);
}

TEST(AllocationFailure, OpeningAndValidatingLeakNothing) {
    ExpectNoLeaks([] { ModelStorage::FromBuffer(GetModel()); });
    ExpectNoLeaks([] {
        auto broken = GetModel();
        std::memset(broken.data() + broken.size() / 2, 1, 64);
        ModelValidator().Build(broken);
    });
    ExpectNoLeaks([] { ModelStatistics().Build(GetModel()); });
}

TEST(AllocationFailure, BoundingBoxBuilderIsRebuilt) {
    ExpectToolSurvives<BoundingBoxBuilder>(
        [](auto& tool) { tool.Build(GetModel().data()); },
        [](auto& a, auto& b) { return HasSameBytes(a.getBoundingBoxes(), b.getBoundingBoxes()); });
}

TEST(AllocationFailure, PlacementBuilderIsRebuilt) {
    ExpectToolSurvives<PlacementBuilder>(
        [](auto& tool) { tool.Build(GetModel().data()); },
        [](auto& a, auto& b) { return HasSameBytes(a.getPlacements(), b.getPlacements()); });
}

TEST(AllocationFailure, InstancesByEntitiesBuilderIsRebuilt) {
    ExpectToolSurvives<InstancesByEntitiesBuilder>(
        [](auto& tool) { tool.Build(GetModel().data()); },
        [](auto& a, auto& b) { return a.GetInstancesByEntities() == b.GetInstancesByEntities(); });
}

TEST(AllocationFailure, QaabBuilderIsRebuilt) {
    ExpectToolSurvives<QaabBuilder>([](auto& tool) { tool.Build(GetModel().data()); },
                                    [](auto& a, auto& b) { return HasSameBytes(a.getNodes(), b.getNodes()); });
}

TEST(AllocationFailure, LodLineBuildersAreRebuilt) {
    ExpectToolSurvives<LodLineBuilder>(
        [](auto& tool) { tool.Build(GetModel().data()); },
        [](auto& a, auto& b) { return a.GetLodLines().size() == 5 && b.GetLodLines().size() == 5; });
    ExpectToolSurvives<LodLineBRepBuilder>(
        [](auto& tool) { tool.Build(GetModel().data()); },
        [](auto& a, auto& b) { return a.GetLine(1, 0).radius == b.GetLine(1, 0).radius; });
}

TEST(AllocationFailure, VertexNormalBuilderIsRebuilt) {
    for (unsigned definition = 0; definition < 4; ++definition) {
        if (definition == 2) continue;  // lines
        ExpectToolSurvives<VertexNormalBuilder>([definition](auto& tool) { tool.Build(GetModel(), definition, 0.5f); },
                                                [](auto& a, auto& b) {
                                                    return HasSameBytes(a.GetTriangles(), b.GetTriangles()) &&
                                                           HasSameBytes(a.GetCorners(), b.GetCorners()) &&
                                                           HasSameBytes(a.GetNormals(), b.GetNormals());
                                                });
    }
}

TEST(AllocationFailure, GraphicsContainerBuilderKeepsItsContainers) {
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(GetModel().data()));
    Tools::GraphicsContainer out;
    EXPECT_GT(FailEachAllocation([&] { builder.GetGraphicsContainer(0, out = {}); }, [] {}), 0u);
    EXPECT_EQ(out.lines.size(), 2u);
    EXPECT_EQ(out.arcs.size(), 1u);
}

// Faces without holes: earcut itself loses its newest block of nodes when its list of blocks cannot grow.
TEST(AllocationFailure, QuantificationLeaksNothing) {
    ExpectNoLeaks([] {
        QuantificationBuilder builder(GetSeed("box").data());
        builder.Build(0);
    });
}

TEST(AllocationFailure, PicksLeakNothing) {
    ExpectNoLeaks([] { TestSupport::RunPicks(GetModel()); });
}

TEST(AllocationFailure, WritersLeakNothing) {
    auto const storage = ModelStorage::FromBuffer(GetModel());
    ExpectNoLeaks([&] { TestSupport::RunWriters(storage.GetModelReader()); });
    ExpectNoLeaks([] { TestSupport::MakeFullSeedModel(); });
}

TEST(AllocationFailure, ReadersLeakNothing) {
    auto const storage = ModelStorage::FromBuffer(GetModel());
    ExpectNoLeaks([&] { TestSupport::ReadEverything(storage.GetModelReader()); });
}

TEST(AllocationFailure, AFailedCreateChangesNothing) {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({1, 2, 3, {4}}, L"entity", {});
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(TestSupport::MakePlateWithHole());
    builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex, {});
    builder.GetPropertyWriter().AddProperty(entity, {"set", "name", std::string("text")});
    auto const expected = builder.Create();
    std::vector<char> created;
    EXPECT_GT(FailEachAllocation([&] { created = builder.Create(); }, [&] { EXPECT_TRUE(created.empty()); }), 0u);
    EXPECT_EQ(created, expected);
}

/// Every operation of every writer on its own: what it leaves behind is destroyed and leaks nothing.
TEST(AllocationFailure, EveryOperationOfAWriterLeaksNothing) {
    auto const plate = TestSupport::MakePlateWithHole();
    std::vector<Vertex> const normals(plate.vertices.size(), {0, 0, 1});
    std::vector<std::pair<float, float>> const uvs(plate.vertices.size());
    std::string const longText(100, 'x');
    std::wstring const longName(100, L'x');
    using Operation = std::function<void(ModelBuilder&)>;
    Operation const operations[] = {
        [&](auto& b) { b.GetEntityWriter().AddEntity({}, longName, {}); },
        [&](auto& b) { b.GetEntityWriter().AddEntityAt({}, longName, {}); },
        [&](auto& b) { b.GetEntityWriter().AddEntityWithIdentifierText(longText, longName, {}); },
        [&](auto& b) { b.GetEntityWriter().AddEntityWithGeometricKey({}, longName, {}); },
        [&](auto& b) { b.GetEntityWriter().AddEntityWithoutIdentifier(longName, {}); },
        [&](auto& b) { b.GetMaterialWriter().AddMaterial({}); },
        [&](auto& b) { b.GetLayerWriter().AddLayer(longText); },
        [&](auto& b) { b.GetTextureWriter().AddTexture(TextureType::PNG, std::vector<char>(100)); },
        [&](auto& b) { b.GetGeometryDefinitionBuilder().AddBRep(plate); },
        [&](auto& b) {
            b.GetGeometryDefinitionBuilder().AddBRepWithNormals({&plate, &normals});
        },
        [&](auto& b) {
            b.GetGeometryDefinitionBuilder().AddBRepWithUVs({&plate, &uvs});
        },
        [&](auto& b) {
            b.GetGeometryDefinitionBuilder().AddGraphicsContainer({{{{0, 0, 0}, {1, 0, 0}}}, {{}}});
        },
        [&](auto& b) {
            b.GetOwnerHistoryWriter().AddOwnerPart({longText, longText, longText});
        },
        [&](auto& b) { b.GetOwnerHistoryWriter().AddOwnerHistoryRecord({}); },
        [&](auto& b) {
            b.GetOwnerHistoryWriter().AddOwnerHistory(0, 0, {longText, longText});
        },
        [&](auto& b) { b.GetOwnerHistoryWriter().LinkOwnerHistory({}, 0); },
        [&](auto& b) {
            b.GetPropertyWriter().AddProperty({}, {longText, longText + "2", longText + "3"});
        },
    };
    for (auto const& operation : operations) {
        SCOPED_TRACE(&operation - operations);
        ExpectNoLeaks([&] {
            ModelBuilder builder;
            operation(builder);
            operation(builder);
        });
    }
}

TEST(AllocationFailure, UniqueDefinitionsLeakNothing) {
    ExpectNoLeaks([] {
        ModelBuilder model;
        UniqueGeometryDefinitionBuilder unique(model.GetGeometryDefinitionBuilder());
        AffineTransform transform;
        for (int i = 0; i < 3; ++i) unique.Add(TestSupport::MakePlateWithHole(), &transform);
        unique.Add(TestSupport::MakePrism(5, 1, 2), &transform);
    });
}

TEST(AllocationFailure, IdentifiersLeakNothing) {
    ExpectNoLeaks([] {
        std::vector<double> values;
        DecodeDoubles("AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", values);
        GuidToText(_GUID{});
        GuidToIfcGuid(_GUID{});
    });
}

/// Merge and Squash promise more: after an exception nothing has changed.
TEST(AllocationFailure, AFailedMergeKeepsTheEarlierResultAndError) {
    auto const& full = GetSeed("full");
    auto const& change = GetSeed("modified");
    Increments::Merge reference;
    ASSERT_TRUE(reference.Build(GetSeed("box"), {change}));
    auto const earlier = reference.GetResult();

    std::size_t failures = 0;
    for (;; ++failures) {
        Increments::Merge merge;
        ASSERT_FALSE(merge.Build(full, {}));
        ASSERT_TRUE(merge.Build(GetSeed("box"), change));
        bool hasThrown = false;
        {
            FailAllocation failure(failures);
            try {
                merge.Build(full, change);
            } catch (std::bad_alloc const&) {
                hasThrown = true;
            }
        }
        EXPECT_EQ(merge.GetError(), "increment is invalid");
        if (!hasThrown) break;
        ASSERT_EQ(merge.GetResult(), earlier) << "allocation " << failures;
    }
    EXPECT_GT(failures, 50u);
}

TEST(AllocationFailure, AFailedSquashKeepsTheEarlierResults) {
    auto const& base = GetSeed("modified");
    auto const& change = GetSeed("deleted");
    Increments::Squash reference;
    ASSERT_TRUE(reference.Build({}, base));
    auto const earlier = reference.GetResult();
    auto const modified = reference.GetModified();
    ASSERT_EQ(modified.size(), 2u);

    std::size_t failures = 0;
    for (;; ++failures) {
        Increments::Squash squash;
        ASSERT_TRUE(squash.Build({}, base));
        bool hasThrown = false;
        {
            FailAllocation failure(failures);
            try {
                squash.Build(base, change);
            } catch (std::bad_alloc const&) {
                hasThrown = true;
            }
        }
        if (!hasThrown) break;
        ASSERT_EQ(squash.GetResult(), earlier) << "allocation " << failures;
        ASSERT_EQ(squash.GetModified(), modified);
        ASSERT_TRUE(squash.GetDeleted().empty());
    }
    EXPECT_GT(failures, 50u);
}

TEST(AllocationFailure, MergeAndSquashLeakNothing) {
    ExpectNoLeaks([] { Increments::Merge().Build(GetSeed("full"), GetSeed("modified")); });
    ExpectNoLeaks([] { Increments::Squash().Build(GetSeed("modified"), GetSeed("deleted")); });
}

}  // namespace
