#include "geometry/ConvexEars.h"

#include <mapbox/earcut.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace {

using PlanePoint = std::array<float, 2>;
using ConvexEars = GeometryObjectLib::ConvexEars<PlanePoint, std::uint16_t>;
using WidePoint = std::array<double, 2>;
using WideConvexEars = GeometryObjectLib::ConvexEars<WidePoint, std::uint32_t>;

/// What ConvexEars gives where it answers must be what earcut gives. Returns whether it answered.
bool AgreesWithEarcut(std::vector<PlanePoint> const& ring) {
    std::vector<std::uint16_t> triangles{7};
    bool const isCut = ConvexEars().Cut(ring.data(), ring.size(), triangles);
    EXPECT_EQ(triangles.front(), 7);
    triangles.erase(triangles.begin());
    if (isCut) {
        EXPECT_EQ(triangles, mapbox::earcut<std::uint16_t>(std::vector<std::vector<PlanePoint>>{ring}));
    } else {
        EXPECT_TRUE(triangles.empty());
    }
    return isCut;
}

std::vector<PlanePoint> RegularRing(int count, float radius, float centre) {
    std::vector<PlanePoint> ring;
    for (int i = 0; i < count; ++i) {
        float const angle = 6.2831853F * static_cast<float>(i) / static_cast<float>(count);
        ring.push_back({centre + radius * std::cos(angle), centre + radius * std::sin(angle)});
    }
    return ring;
}

TEST(ConvexEars, RegularRingsOfAllSizesAreCutAsEarcutCutsThem) {
    for (int count = 3; count < 300; ++count) EXPECT_TRUE(AgreesWithEarcut(RegularRing(count, 2, 0))) << count;
}

TEST(ConvexEars, RoundedRingsFarFromTheOriginAgreeOrAreLeftToEarcut) {
    int answered = 0;
    for (int count = 3; count < 200; ++count) {
        for (float const centre : {10.0F, 1e3F, 1e5F})
            answered += AgreesWithEarcut(RegularRing(count, 1, centre)) ? 1 : 0;
    }
    EXPECT_GT(answered, 100);
}

TEST(ConvexEars, RandomPointsOnAnEllipseAgree) {
    constexpr unsigned kSeed = 31;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    int answered = 0;
    for (int round = 0; round < 500; ++round) {
        std::vector<float> angles(3 + random() % 150);
        for (auto& angle : angles) angle = std::uniform_real_distribution<float>(0, 6.28F)(random);
        std::sort(angles.begin(), angles.end());
        std::vector<PlanePoint> ring;
        for (float const angle : angles) ring.push_back({5 * std::cos(angle), 0.1F * std::sin(angle)});
        answered += AgreesWithEarcut(ring) ? 1 : 0;
    }
    EXPECT_GT(answered, 250);
}

TEST(ConvexEars, RingsInDoublePrecisionAgree) {
    int answered = 0;
    for (int count = 3; count < 200; ++count) {
        std::vector<WidePoint> ring;
        for (PlanePoint const& p : RegularRing(count, 1.7F, 0.1F)) ring.push_back({p[0] * 1.1, p[1] / 3.0});
        std::vector<std::uint32_t> triangles;
        if (!WideConvexEars().Cut(ring.data(), ring.size(), triangles)) continue;
        ++answered;
        EXPECT_EQ(triangles, mapbox::earcut<std::uint32_t>(std::vector<std::vector<WidePoint>>{ring})) << count;
    }
    EXPECT_GT(answered, 150);
}

TEST(ConvexEars, StarsThatOnlyTurnLeftAgree) {
    for (int const step : {2, 3}) {
        std::vector<PlanePoint> const circle = RegularRing(7, 1, 0);
        std::vector<PlanePoint> star;
        for (int i = 0; i < 7; ++i) star.push_back(circle[static_cast<std::size_t>(i * step % 7)]);
        AgreesWithEarcut(star);
    }
}

TEST(ConvexEars, EverythingElseIsLeftToEarcut) {
    std::vector<PlanePoint> clockwise = RegularRing(9, 1, 0);
    std::reverse(clockwise.begin(), clockwise.end());
    EXPECT_FALSE(AgreesWithEarcut(clockwise));
    EXPECT_FALSE(AgreesWithEarcut({{0, 0}, {2, 0}, {2, 2}, {1, 2}, {0, 2}}));              // a straight corner
    EXPECT_FALSE(AgreesWithEarcut({{0, 0}, {2, 0}, {1, 1}, {2, 2}, {0, 2}}));              // a notch
    EXPECT_FALSE(AgreesWithEarcut({{0, 0}, {2, 0}, {2, 0}, {2, 2}, {0, 2}}));              // a point twice
    EXPECT_FALSE(AgreesWithEarcut({{0, 0}, {std::nanf(""), 0}, {2, 1}, {2, 2}, {0, 2}}));  // no number
    std::vector<std::uint16_t> triangles;
    EXPECT_FALSE(ConvexEars().Cut(nullptr, 0, triangles));
}

}  // namespace
