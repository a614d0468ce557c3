// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/path_equations.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>

#include "tests/shot/random.h"

using namespace cornerpin;

namespace {

struct Problem {
  std::vector<double> weights;
  std::vector<PathBend> bends;
  std::vector<Point> places;
};

Problem problem(std::size_t count, std::uint32_t seed) {
  made::Random random(seed);
  Problem p;
  for (std::size_t i = 0; i < count; ++i) {
    p.weights.push_back(random.real(0.1, 4.0));
    const double x = random.real(-9.0, 9.0);
    const double y = random.real(-9.0, 9.0);
    p.places.push_back({x, y});
  }
  for (std::size_t j = 0; j + 3 < count; ++j) {
    PathBend bend;
    for (double& factor : bend.factors) factor = random.real(-3.0, 3.0);
    bend.weight = random.chance(0.2) ? 0.0 : random.real(0.0, 2.0);
    p.bends.push_back(bend);
  }
  return p;
}

// The matrix in full.
Eigen::MatrixXd matrixOf(const Problem& p, double strength) {
  const auto n = static_cast<Eigen::Index>(p.weights.size());
  Eigen::MatrixXd a = Eigen::MatrixXd::Zero(n, n);
  for (Eigen::Index i = 0; i < n; ++i) a(i, i) = p.weights[static_cast<std::size_t>(i)];
  for (std::size_t j = 0; j < p.bends.size(); ++j) {
    Eigen::VectorXd row = Eigen::VectorXd::Zero(n);
    for (std::size_t k = 0; k < 4; ++k) {
      row(static_cast<Eigen::Index>(j + k)) = p.bends[j].factors[k];
    }
    a += strength * p.bends[j].weight * row * row.transpose();
  }
  return a;
}

}  // namespace

TEST(PathEquations, HaveTheSolutionOfTheMatrixInFull) {
  for (std::size_t count : {4u, 5u, 7u, 40u}) {
    const Problem p = problem(count, static_cast<std::uint32_t>(count));
    const Eigen::MatrixXd a = matrixOf(p, 2.5);
    const auto n = static_cast<Eigen::Index>(count);
    Eigen::MatrixXd right(n, 2);
    for (Eigen::Index i = 0; i < n; ++i) {
      const auto k = static_cast<std::size_t>(i);
      right.row(i) << p.weights[k] * p.places[k].x, p.weights[k] * p.places[k].y;
    }
    const Eigen::MatrixXd expected = a.fullPivLu().solve(right);
    const std::vector<Point> found = PathEquations(p.weights, p.bends, 2.5).solve(p.places);
    for (Eigen::Index i = 0; i < n; ++i) {
      EXPECT_NEAR(found[static_cast<std::size_t>(i)].x, expected(i, 0), 1e-10);
      EXPECT_NEAR(found[static_cast<std::size_t>(i)].y, expected(i, 1), 1e-10);
    }
  }
}

TEST(PathEquations, HaveTheDiagonalOfTheInverse) {
  for (std::size_t count : {4u, 6u, 40u}) {
    const Problem p = problem(count, static_cast<std::uint32_t>(100 + count));
    const Eigen::MatrixXd inverse = matrixOf(p, 0.7).fullPivLu().inverse();
    const std::vector<double> variances = PathEquations(p.weights, p.bends, 0.7).variances();
    for (std::size_t i = 0; i < count; ++i) {
      const auto k = static_cast<Eigen::Index>(i);
      EXPECT_NEAR(variances[i], inverse(k, k), 1e-10 * inverse(k, k)) << i << " of " << count;
    }
  }
}

TEST(PathEquations, LeaveThePointsWhereNothingHoldsThemTogether) {
  Problem p = problem(9, 3);
  for (PathBend& bend : p.bends) bend.weight = 0.0;
  const PathEquations equations(p.weights, p.bends, 1e6);
  const std::vector<Point> found = equations.solve(p.places);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_DOUBLE_EQ(found[i].x, p.places[i].x);
    EXPECT_DOUBLE_EQ(equations.variances()[i], 1.0 / p.weights[i]);
  }
}
