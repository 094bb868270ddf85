#include "picking/RaySlabs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace Quorlan::Tools::Picking;
using Quorlan::HasAvx2;
using WideNode = QuantizedAxisAlignedBoxTreeWideNode_s;

struct Random {
    std::mt19937 engine{17};

    double Between(double lower, double upper) { return std::uniform_real_distribution<double>(lower, upper)(engine); }
    std::array<float, 3> Vector(double size) {
        auto const next = [&] { return static_cast<float>(Between(-size, size)); };
        float const x = next(), y = next();
        return {x, y, next()};
    }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(engine() % limit); }

    /// Towards a place near some child of the node.
    std::array<float, 3> DirectionTo(WideNode const& wide, std::array<float, 3> const& origin,
                                     std::array<float, 3> const& halfCell) {
        std::size_t const child = Below(8);
        std::array<float, 3> direction{};
        for (std::size_t k = 0; k < 3; ++k) {
            double const step = wide.bounds[2 * k][child] + Between(-10, 20);
            double const cell = wide.base[k] + step * (1 << (wide.form >> 4 * k & 15));
            direction[k] = static_cast<float>(cell * 2 * halfCell[k] - origin[k]);
        }
        return direction;
    }

    WideNode Node() {
        WideNode wide;
        unsigned form = Below(8) << 12 | Below(2) << 15;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            unsigned const shift = Below(9);
            form |= shift << 4 * axis;
            wide.base[axis] = static_cast<std::uint16_t>(Below(65536u - (255u << shift)));
            for (std::size_t i = 0; i < 8; ++i) {
                auto const a = static_cast<std::uint8_t>(Below(256));
                auto const b = static_cast<std::uint8_t>(std::min(255u, a + Below(120)));
                wide.bounds[2 * axis][i] = a;
                wide.bounds[2 * axis + 1][i] = b;
            }
        }
        wide.form = static_cast<std::uint16_t>(form);
        return wide;
    }
};

unsigned FindMet(RaySlabs const& slabs, WideNode const& wide) {
    std::uint32_t const index = 0;
    unsigned met = 0;
    slabs.FindMet(&wide, &index, 1, &met);
    return met;
}

/// The children whose boxes the half line meets, in double precision, when they are larger by `slack` of the size.
unsigned FindMetInDoubles(WideNode const& wide, std::array<float, 3> const& origin,
                          std::array<float, 3> const& direction, std::array<float, 3> const& halfCell, double slack) {
    unsigned met = 0;
    for (unsigned child = 0; child <= (wide.form >> 12 & 7u); ++child) {
        double entry = 0;
        double exit = std::numeric_limits<double>::infinity();
        for (std::size_t k = 0; k < 3; ++k) {
            unsigned const shift = wide.form >> 4 * k & 15;
            double const cell = 2.0 * halfCell[k];
            double const more = slack * (std::abs(double{origin[k]}) + 65535 * cell);
            double const lower = (wide.base[k] + (1.0 * wide.bounds[2 * k][child] * (1 << shift))) * cell - more;
            double const upper =
                (wide.base[k] + (1.0 * wide.bounds[2 * k + 1][child] + 1) * (1 << shift) - 1) * cell + more;
            double a = (lower - origin[k]) / direction[k];
            double b = (upper - origin[k]) / direction[k];
            if (a > b) std::swap(a, b);
            entry = std::max(entry, a);
            exit = std::min(exit, b);
        }
        if (entry <= exit) met |= 1u << child;
    }
    return met;
}

TEST(RaySlabs, MissNoBoxThatIsMetAndFewOfThoseThatAreNot) {
    Random random;
    int exact = 0;
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        WideNode const wide = random.Node();
        std::array<float, 3> const halfCell{0.001f, 0.0005f, 0.0001f};
        auto const origin = random.Vector(200);
        auto const direction = random.DirectionTo(wide, origin, halfCell);
        RaySlabs const slabs(origin, direction, halfCell);
        ASSERT_TRUE(slabs.IsUsable());
        unsigned const met = FindMet(slabs, wide);
        unsigned const least = FindMetInDoubles(wide, origin, direction, halfCell, 0);
        ASSERT_EQ(least & ~met, 0u) << i;
        // A step is at most 2^8 cells more than the box; those steps are no error of the test.
        unsigned const most = FindMetInDoubles(wide, origin, direction, halfCell, 256.0 / 65535 + 1e-4);
        ASSERT_EQ(met & ~most, 0u) << i;
        for (unsigned bit = 0; bit < 8; ++bit) {
            exact += static_cast<int>(least >> bit & 1);
            found += static_cast<int>(met >> bit & 1);
        }
    }
    EXPECT_GT(exact, 2000);
    EXPECT_LT(found, exact + exact / 10);
}

TEST(RaySlabs, ChildrenThatAreNotThereAreNotMet) {
    WideNode wide;
    for (std::size_t row = 0; row < 6; ++row) std::fill_n(wide.bounds[row], 8, row % 2 == 0 ? 0 : 255);
    for (unsigned count = 1; count <= 8; ++count) {
        wide.form = static_cast<std::uint16_t>((count - 1) << 12);
        RaySlabs const slabs({0.01f, 0.01f, -5}, {0.001f, 0, 1}, {0.5f, 0.5f, 0.5f});
        EXPECT_EQ(FindMet(slabs, wide), (1u << count) - 1);
    }
}

TEST(RaySlabs, SameAnswersWithAvx2AndWithout) {
    if (!HasAvx2()) GTEST_SKIP() << "no AVX2 here";
    Random random;
    std::vector<WideNode> nodes(64);
    std::vector<std::uint32_t> indices(nodes.size());
    std::size_t found = 0;
    for (int i = 0; i < 2000; ++i) {
        for (auto& node : nodes) node = random.Node();
        for (auto& index : indices) index = random.Below(4) == 0 ? 0 : random.Below(64);
        std::array<float, 3> halfCell{0.001f, 0.0005f, 0.0001f};
        auto origin = random.Vector(100);
        auto direction = random.DirectionTo(nodes[0], origin, halfCell);
        if (i % 5 == 0) halfCell[2] = 0;
        if (i % 7 == 0) direction[0] = 0;
        if (i % 11 == 0) origin[1] = 0;
        unsigned wide[64];
        unsigned plain[64];
        RaySlabs(origin, direction, halfCell, true).FindMet(nodes.data(), indices.data(), indices.size(), wide);
        RaySlabs(origin, direction, halfCell, false).FindMet(nodes.data(), indices.data(), indices.size(), plain);
        for (std::size_t k = 0; k < indices.size(); ++k) {
            ASSERT_EQ(wide[k], plain[k]) << i << ' ' << k;
            found += plain[k] != 0 ? 1 : 0;
        }
    }
    EXPECT_GT(found, 1000u);
}

}  // namespace
