// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/positive_definite.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <limits>
#include <random>

using namespace cornerpin;

namespace {

// A = R'R with R of full rank.
Eigen::Matrix<double, 8, 8> positiveDefinite() {
  std::mt19937 random(20240802);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Eigen::Matrix<double, 8, 8> r;
  for (int i = 0; i < 64; ++i) r(i % 8, i / 8) = uniform(random);
  return r.transpose() * r + Eigen::Matrix<double, 8, 8>::Identity();
}

}  // namespace

TEST(InvertPositiveDefinite, ReadsTheUpperTriangleAndWritesTheInverse) {
  const Eigen::Matrix<double, 8, 8> a = positiveDefinite();
  const Eigen::Matrix<double, 8, 8> inverse = a.inverse();
  SquareMatrix<8> matrix;
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (int j = 0; j < 8; ++j) {
    for (int i = 0; i < 8; ++i)
      matrix[static_cast<std::size_t>(8 * j + i)] = i <= j ? a(i, j) : kNaN;
  }
  double determinant = 0.0;
  ASSERT_TRUE(invertPositiveDefinite(matrix, &determinant));
  EXPECT_NEAR(determinant / a.determinant(), 1.0, 1e-12);
  for (int j = 0; j < 8; ++j) {
    for (int i = 0; i < 8; ++i) {
      EXPECT_NEAR(matrix[static_cast<std::size_t>(8 * j + i)], inverse(i, j), 1e-12);
    }
  }
}

TEST(InvertPositiveDefinite, RefusesWhatIsNot) {
  SquareMatrix<8> zero{};
  EXPECT_FALSE(invertPositiveDefinite(zero));
  Eigen::Matrix<double, 8, 8> a = positiveDefinite();
  a(7, 7) = -1.0;
  SquareMatrix<8> indefinite;
  for (int k = 0; k < 64; ++k) indefinite[static_cast<std::size_t>(k)] = a(k % 8, k / 8);
  EXPECT_FALSE(invertPositiveDefinite(indefinite));
}

// Of the pair (1, r), (r, 1), each may vary 1 / (1 - r^2) times as much as alone.
TEST(InvertDetermined, RefusesWhatLeavesNoDigits) {
  const auto pairOf = [](double beside) {
    SquareMatrix<8> matrix{};
    for (std::size_t i = 0; i < 8; ++i) matrix[9 * i] = 1.0;
    matrix[1] = matrix[8] = 1.0 - 0.5 / beside;
    return matrix;
  };
  SquareMatrix<8> some = pairOf(0.8e12);
  EXPECT_TRUE(invertDetermined(some));
  SquareMatrix<8> none = pairOf(1.25e12);
  EXPECT_FALSE(invertDetermined(none));
}
