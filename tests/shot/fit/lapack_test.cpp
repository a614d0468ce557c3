// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/lapack.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <limits>
#include <random>

using namespace cornerpin;

namespace {

template <std::size_t N>
void expectTheEigenvaluesOfAnotherSolver() {
  constexpr auto kSize = static_cast<int>(N);
  std::mt19937 random(20240801);
  std::uniform_real_distribution<double> uniform(-1, 1);
  NormalMatrix<N> normal;
  Eigen::Matrix<double, Eigen::Dynamic, kSize> system(20, kSize);
  for (int k = 0; k < 20; ++k) {
    typename NormalMatrix<N>::Row row;
    for (std::size_t i = 0; i < N; ++i) row[i] = system(k, static_cast<int>(i)) = uniform(random);
    normal.add(row);
  }
  ASSERT_TRUE(normal.decompose());
  const Eigen::JacobiSVD<Eigen::MatrixXd> svd(system, Eigen::ComputeThinV);
  for (int i = 0; i < kSize; ++i) {
    const double singular = svd.singularValues()[kSize - 1 - i];
    EXPECT_NEAR(normal.eigenvalues[static_cast<std::size_t>(i)], singular * singular, 1e-12);
  }
  // The first eigenvector belongs to the smallest eigenvalue; its sign is free.
  const Eigen::Map<const Eigen::VectorXd> first(normal.elements.data(), kSize);
  EXPECT_NEAR(std::fabs(first.dot(svd.matrixV().col(kSize - 1))), 1.0, 1e-12);
}

}  // namespace

TEST(NormalMatrix, HasTheSquaredSingularValuesOfItsRowsForEigenvalues) {
  expectTheEigenvaluesOfAnotherSolver<8>();
  expectTheEigenvaluesOfAnotherSolver<9>();
}
