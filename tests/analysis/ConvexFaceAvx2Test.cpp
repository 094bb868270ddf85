#include "analysis/ConvexFaceAvx2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <vector>

#if QUORLAN_HAS_AVX2

namespace {

using namespace Quorlan;
using GeometryObjectLib::Vertex;

struct Polygon {
    std::vector<float> numbers{0};  ///< what may be read before the first vertex, then the vertices
    std::vector<std::uint16_t> loop;

    void Add(double x, double y) {
        loop.push_back(static_cast<std::uint16_t>(loop.size()));
        numbers.insert(numbers.end(), {static_cast<float>(x), static_cast<float>(y), 0.0F});
    }
};

/// `turns` times round a circle whose points are moved to the centre by `dent`, one after the other.
Polygon PolygonAround(std::size_t size, int turns = 1, double dent = 0) {
    Polygon polygon;
    for (std::size_t i = 0; i < size; ++i) {
        double const angle = 6.283185307 * turns * static_cast<double>(i) / static_cast<double>(size);
        double const radius = i % 2 == 0 ? 1 : 1 - dent;
        polygon.Add(radius * std::cos(angle), radius * std::sin(angle));
    }
    return polygon;
}

/// The face's area; not a number where it is refused.
double Measure(Polygon const& polygon, double* volume = nullptr) {
    std::vector<double> scratch(GetConvexFaceScratchSize(polygon.loop.size()));
    ConvexFaceMeasures measures;
    auto const* const vertices = reinterpret_cast<std::uint8_t const*>(polygon.numbers.data() + 1);
    if (!MeasureConvexFaceAvx2({vertices, 3 * sizeof(float), polygon.loop.data(), polygon.loop.size()},
                               Vertex{0.25, 0.5, -3}, 1e-7, scratch.data(), measures)) {
        return std::nan("");
    }
    if (volume != nullptr) {
        *volume = std::accumulate(measures.volumes, measures.volumes + polygon.loop.size() - 2, 0.0);
    }
    return measures.area;
}

TEST(ConvexFaceAvx2, RegularPolygonsAreMeasured) {
    if (!HasAvx2()) GTEST_SKIP() << "no AVX2 here";
    for (std::size_t size = 5; size < 80; ++size) {
        double const angle = 6.283185307179586 / static_cast<double>(size);
        double const area = 0.5 * static_cast<double>(size) * std::sin(angle);
        double volume = 0;
        EXPECT_NEAR(Measure(PolygonAround(size), &volume), area, 1e-6) << size;
        EXPECT_NEAR(volume, area, 1e-6) << size;  // a third of the apex' depth
    }
}

TEST(ConvexFaceAvx2, WhatIsNotConvexIsRefused) {
    if (!HasAvx2()) GTEST_SKIP() << "no AVX2 here";
    EXPECT_TRUE(std::isnan(Measure(PolygonAround(12, 1, 0.5))));
    EXPECT_TRUE(std::isnan(Measure(PolygonAround(5, 2)))) << "a pentagram turns left at each corner, but not when cut";
    Polygon flat;
    for (int i = 0; i < 9; ++i) flat.Add(i, 0);
    EXPECT_TRUE(std::isnan(Measure(flat)));
}

TEST(ConvexFaceAvx2, FaceWithoutEnoughAreaForItsExtentIsRefused) {
    if (!HasAvx2()) GTEST_SKIP() << "no AVX2 here";
    Polygon sliver = PolygonAround(16);
    for (std::size_t i = 2; i < sliver.numbers.size(); i += 3) sliver.numbers[i] *= 1e-6F;
    EXPECT_TRUE(std::isnan(Measure(sliver)));
}

}  // namespace

#endif
