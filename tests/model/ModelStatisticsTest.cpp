#include "support/Shapes.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStatistics.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Quorlan;

ModelStatistics::table_s FindTable(ModelStatistics const& statistics, std::string const& name) {
    auto const& tables = statistics.GetTables();
    auto const table = std::find_if(tables.begin(), tables.end(), [&](auto const& t) { return t.name == name; });
    EXPECT_NE(table, tables.end()) << name;
    return table == tables.end() ? ModelStatistics::table_s{} : *table;
}

TEST(ModelStatistics, CountsWhatTheBufferHolds) {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({}, L"plate", {});
    auto const plate = TestSupport::MakePlateWithHole();
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(plate);
    for (int i = 0; i < 3; ++i) {
        builder.GetInstanceWriter().AddInstance(entity, shape, kInvalidIndex, kInvalidIndex, {});
    }
    auto const buffer = builder.Create();
    ModelStatistics statistics;
    ASSERT_TRUE(statistics.Build(buffer));
    EXPECT_EQ(statistics.GetVertexCount(), 16u);
    EXPECT_EQ(statistics.GetFaceCount(), 10u);
    EXPECT_EQ(statistics.GetHoleCount(), 2u);
    EXPECT_EQ(FindTable(statistics, "instances").count, 3u);
    EXPECT_EQ(FindTable(statistics, "instances").bytes, 4u + 3 * 20);
    EXPECT_EQ(FindTable(statistics, "entities").bytes, 4u + 64);
    EXPECT_EQ(FindTable(statistics, "texts").count, 1u);
    EXPECT_GT(FindTable(statistics, "facetedBReps").bytes, 16u * 12 + 48 * 2);

    std::uint64_t sum = 0;
    for (auto const& table : statistics.GetTables()) sum += table.bytes;
    EXPECT_LE(sum, buffer.size());
    EXPECT_GT(sum, buffer.size() / 2);
}

TEST(ModelStatistics, AFailedBuildKeepsTheEarlierResult) {
    ModelStatistics statistics;
    ASSERT_TRUE(statistics.Build(ModelBuilder().Create()));
    auto const tables = statistics.GetTables().size();
    EXPECT_FALSE(statistics.Build({}));
    EXPECT_EQ(statistics.GetTables().size(), tables);
}

}  // namespace
