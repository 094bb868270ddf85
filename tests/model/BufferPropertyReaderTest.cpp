#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>

namespace {

using namespace Quorlan;

/// Properties of `entities`, one per element, found again by entity and order.
void ExpectFound(std::vector<std::uint32_t> const& entities) {
    ModelBuilder builder;
    std::map<std::uint32_t, std::vector<std::int64_t>> expected;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        auto const value = static_cast<std::int64_t>(i);
        builder.GetPropertyWriter().AddProperty(EntityIndex_t{entities[i]}, {"Set", "Number", value});
        expected[entities[i]].push_back(value);
    }
    auto const storage = ModelStorage::FromBuffer(builder.Create());
    auto const& reader = storage.GetModelReader().GetProperties();
    PropertyRecord property;
    for (auto const& [entity, values] : expected) {
        ASSERT_EQ(reader.GetPropertyCount(EntityIndex_t{entity}), values.size());
        for (std::uint32_t i = 0; i < values.size(); ++i) {
            reader.GetProperty(property, EntityIndex_t{entity}, i);
            ASSERT_EQ(std::get<std::int64_t>(property.value), values[i]);
        }
        for (std::uint32_t const neighbour : {entity - 1, entity + 1, ~entity}) {
            auto const found = expected.find(neighbour);
            ASSERT_EQ(reader.GetPropertyCount(EntityIndex_t{neighbour}),
                      found == expected.end() ? 0 : found->second.size());
        }
    }
}

TEST(BufferPropertyReader, FindsWhatWasWrittenHoweverItIsSpread) {
    ExpectFound({});
    ExpectFound({0});
    ExpectFound({0xFFFFFFFF});
    ExpectFound({7, 7, 7, 7, 7});
    ExpectFound({0, 0xFFFFFFFF, 5, 5, 0});
    for (std::uint32_t const seed : {1u, 2u, 3u, 4u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        std::vector<std::uint32_t> entities;
        for (int i = 0; i < 2000; ++i) {
            entities.push_back(static_cast<std::uint32_t>(3000 * std::pow(unit(random), 2.0 * seed - 1)));
        }
        ExpectFound(entities);
    }
}

}  // namespace
