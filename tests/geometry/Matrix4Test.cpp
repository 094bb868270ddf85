#include <GeometryObjectLib/Matrix4.h>

#include <gtest/gtest.h>

#include <numeric>

namespace {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

std::array<double, 16> const kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Matrix4 Counting(double first) {
    Matrix4 matrix;
    std::iota(matrix.m.begin(), matrix.m.end(), first);
    return matrix;
}

TEST(Matrix4, DefaultIsTheIdentity) { EXPECT_EQ(Matrix4().m, kIdentity); }

TEST(Matrix4, SixteenValuesAreTakenColumnByColumn) {
    double const values[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    Matrix4 const matrix(values, 16);
    EXPECT_EQ(matrix.m, (std::array<double, 16>{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15}));
    EXPECT_EQ(matrix(1, 3), 13);
}

TEST(Matrix4, NullPointerOrAnotherCountGivesTheIdentity) {
    double const values[16] = {9};
    EXPECT_EQ(Matrix4(nullptr, 16).m, kIdentity);
    EXPECT_EQ(Matrix4(values, 15).m, kIdentity);
    EXPECT_EQ(Matrix4(values, 0).m, kIdentity);
}

TEST(Matrix4, ElementsAreStoredRowByRow) {
    Matrix4 const matrix = Counting(0);
    EXPECT_EQ(matrix(2, 1), 9);
    EXPECT_EQ(matrix.GetColumn(3).y, 7);
}

TEST(Matrix4, ProductIsRowByColumnAndAppliesTheRightFactorFirst) {
    Matrix4 const product = Counting(0) * Counting(1);
    EXPECT_EQ(product.m,
              (std::array<double, 16>{62, 68, 74, 80, 174, 196, 218, 240, 286, 324, 362, 400, 398, 452, 506, 560}));
    Matrix4 turn;
    turn.m = {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    Matrix4 move;
    move(0, 3) = 5;
    Vertex const p = TransformPoint(turn * move, {1, 0, 0});
    EXPECT_EQ(p.x, 0);
    EXPECT_EQ(p.y, 6);
}

TEST(Matrix4, DirectionsAreNotMovedAndPointsAreNotDivided) {
    Matrix4 matrix;
    matrix(0, 3) = 5;
    matrix(3, 3) = 2;
    EXPECT_EQ(TransformDirection(matrix, {1, 2, 3}).x, 1);
    EXPECT_EQ(TransformPoint(matrix, {1, 2, 3}).x, 6);
}

}  // namespace
