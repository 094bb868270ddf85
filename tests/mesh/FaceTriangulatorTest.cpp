#include "mesh/FaceTriangulator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>
#include <vector>

namespace {

using GeometryObjectLib::Vector3f;
using Quorlan::Tools::FaceTriangulator;
using Quorlan::Tools::PlanePoint;

constexpr int kPoints = 8;
constexpr int kPieces = 4;
constexpr std::uint16_t kCorners = kPoints * kPieces;

/// A star around the origin in the plane with the axes u and v, its points at random distances and its edges in pieces:
/// whether three corners on an edge are in line is decided by the last bits of the projection.
std::vector<Vector3f> RandomStar(std::mt19937& random, Vector3f const& u, Vector3f const& v) {
    std::uniform_real_distribution<float> radius(1, 10);
    std::vector<Vector3f> points;
    for (int i = 0; i < kPoints; ++i) {
        float const angle = 6.2831853F * static_cast<float>(i) / kPoints;
        float const r = radius(random);
        points.push_back(u * (r * std::cos(angle)) + v * (r * std::sin(angle)));
    }
    std::vector<Vector3f> corners;
    for (int i = 0; i < kPoints; ++i) {
        Vector3f const& next = points[static_cast<std::size_t>((i + 1) % kPoints)];
        for (int piece = 0; piece < kPieces; ++piece) {
            float const share = static_cast<float>(piece) / kPieces;
            corners.push_back(points[static_cast<std::size_t>(i)] * (1 - share) + next * share);
        }
    }
    return corners;
}

std::vector<std::uint16_t> EarcutIn(std::vector<Vector3f> const& corners, Vector3f const& p, Vector3f const& q) {
    std::vector<PlanePoint> points;
    for (auto const& corner : corners) points.push_back({Dot(p, corner), Dot(q, corner)});
    return mapbox::earcut<std::uint16_t>(std::vector<std::vector<PlanePoint>>{points});
}

TEST(FaceTriangulator, FirstAxisOfATiltedPlaneIsNotOfUnitLengthAndDecidesTheTriangles) {
    constexpr unsigned kSeed = 19;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    Vector3f const normal = Vector3f{0.7F, 0.7F, 0.1F} / Length(Vector3f{0.7F, 0.7F, 0.1F});
    Vector3f const first = Vector3f{-normal.z, 0, normal.x} / Length(normal);
    Vector3f const second = Cross(normal, first);
    ASSERT_LT(Length(first), 0.75F);
    Vector3f const u = first / Length(first);
    Vector3f const v = Cross(normal, u);

    std::vector<std::uint16_t> indices(kCorners);
    std::iota(indices.begin(), indices.end(), std::uint16_t{0});
    FaceTriangulator triangulator;
    int differentInUnitAxes = 0;
    for (int round = 0; round < 50; ++round) {
        auto const corners = RandomStar(random, u, v);
        auto const triangles = triangulator.Triangulate({{indices.data(), kCorners}}, normal, corners.data());
        EXPECT_EQ(triangles, EarcutIn(corners, first, second)) << round;
        differentInUnitAxes += triangles == EarcutIn(corners, u, second) ? 0 : 1;
    }
    EXPECT_GT(differentInUnitAxes, 0);
}

}  // namespace
