// SPDX-License-Identifier: BSD-3-Clause
#include "shot/homography_fit.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <complex>
#include <cstring>
#include <random>
#include <unsupported/Eigen/NonLinearOptimization>

using namespace cornerpin;

namespace {

constexpr unsigned kSeed = 20240711;

const Homography kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Homography kView = {{{1.1, 0.05, 0.2}, {-0.1, 0.9, -0.1}, {0.15, -0.2, 1}}};

Matches noisyMatches(int count, double noise, unsigned seed = kSeed) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return 2.0 * static_cast<double>(random()) / 4294967296.0 - 1.0; };
  Matches matches;
  for (int i = 0; i < count; ++i) {
    const Point from = {uniform(), uniform()};
    const Point to = map(kView, from);
    matches.add({from,
                 {to.x + noise * uniform(), to.y + noise * uniform()},
                 0.3 + 0.7 * std::fabs(uniform())});
  }
  return matches;
}

// The loss as it is defined, of any number type.
template <class T>
T lossOf(Loss loss, double width, T r2) {
  using std::log;
  using std::real;
  using std::sqrt;
  const double b = width * width;
  const bool inside = real(r2) <= b;
  switch (loss) {
    case Loss::None:
      return r2;
    case Loss::Huber:
      return inside ? r2 : 2.0 * width * sqrt(r2) - b;
    case Loss::Cauchy:
      return b * log(1.0 + r2 / b);
    case Loss::Tukey:
      break;
  }
  const T rest = 1.0 - r2 / b;
  return inside ? b / 3.0 * (1.0 - rest * rest * rest) : T(b / 3.0);
}

template <class T>
T costOf(const Matches& m, const std::array<T, 8>& p, Loss loss, double width) {
  T cost(0.0);
  for (std::size_t i = 0; i < m.size(); ++i) {
    const Match k = m[i];
    const T s = p[6] * k.from.x + p[7] * k.from.y + 1.0;
    const T dx = (p[0] * k.from.x + p[1] * k.from.y + p[2]) / s - k.to.x;
    const T dy = (p[3] * k.from.x + p[4] * k.from.y + p[5]) / s - k.to.y;
    cost += k.weight * k.weight * lossOf<T>(loss, width, dx * dx + dy * dy);
  }
  return cost;
}

template <class T>
std::array<T, 8> parameters(const Homography& h) {
  std::array<T, 8> p;
  for (std::size_t i = 0; i < 8; ++i) p[i] = h[i / 3][i % 3];
  return p;
}

std::array<double, 8> gradientOf(const NormalSums& n) {
  return {n.gx[0], n.gx[1], n.gx[2], n.gy[0], n.gy[1], n.gy[2], n.gz[0], n.gz[1]};
}

class EveryLoss : public testing::TestWithParam<Loss> {};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Engine, EveryLoss,
                         testing::Values(Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey));

// Complex steps: derivatives to the last digits, without cancellation.
TEST_P(EveryLoss, HasTheGradientOfItsCost) {
  const Matches matches = noisyMatches(37, 0.3);
  const double width = 0.25;
  const Homography h = {{{1.0, 0.1, 0.15}, {-0.05, 1.0, -0.1}, {0.1, -0.1, 1}}};
  NormalSums sums;
  normalSumsBase(matches, h, GetParam(), width, sums);
  EXPECT_NEAR(sums.cost, costOf(matches, parameters<double>(h), GetParam(), width),
              1e-14 * sums.cost * 37);
  const auto gradient = gradientOf(sums);
  for (std::size_t e = 0; e < 8; ++e) {
    auto p = parameters<std::complex<double>>(h);
    p[e] += std::complex<double>(0.0, 1e-30);
    const double expected = costOf(matches, p, GetParam(), width).imag() / 1e-30 / 2.0;
    EXPECT_NEAR(gradient[e], expected, 1e-12) << "parameter " << e;
  }
}

TEST(NormalSums, HoldTheProductsOfTheJacobian) {
  const Matches matches = noisyMatches(9, 0.1);
  NormalSums n;
  normalSumsBase(matches, kView, Loss::None, 0.0, n);
  Eigen::MatrixXd jacobian(18, 8);
  for (std::size_t i = 0; i < 9; ++i) {
    for (std::size_t e = 0; e < 8; ++e) {
      auto p = parameters<std::complex<double>>(kView);
      p[e] += std::complex<double>(0.0, 1e-30);
      const Match k = matches[i];
      const auto s = p[6] * k.from.x + p[7] * k.from.y + 1.0;
      const auto row = static_cast<Eigen::Index>(2 * i);
      const auto column = static_cast<Eigen::Index>(e);
      jacobian(row, column) =
          k.weight * ((p[0] * k.from.x + p[1] * k.from.y + p[2]) / s).imag() / 1e-30;
      jacobian(row + 1, column) =
          k.weight * ((p[3] * k.from.x + p[4] * k.from.y + p[5]) / s).imag() / 1e-30;
    }
  }
  Eigen::Matrix3d block;
  block << n.mm[0], n.mm[1], n.mm[3], n.mm[1], n.mm[2], n.mm[4], n.mm[3], n.mm[4], n.mm[5];
  Eigen::Matrix<double, 8, 8> normal = Eigen::Matrix<double, 8, 8>::Zero();
  normal.block<3, 3>(0, 0) = normal.block<3, 3>(3, 3) = block;
  normal.block<3, 2>(0, 6) << -n.xmm[0], -n.xmm[1], -n.xmm[1], -n.xmm[2], -n.xmm[3], -n.xmm[4];
  normal.block<3, 2>(3, 6) << -n.ymm[0], -n.ymm[1], -n.ymm[1], -n.ymm[2], -n.ymm[3], -n.ymm[4];
  normal.block<2, 6>(6, 0) = normal.block<6, 2>(0, 6).transpose().eval();
  normal.block<2, 2>(6, 6) << n.zmm[0], n.zmm[1], n.zmm[1], n.zmm[2];
  EXPECT_LT((normal - jacobian.transpose() * jacobian).norm(), 1e-13 * normal.norm());
}

TEST_P(EveryLoss, HasTheSameBitsInEveryVariant) {
#if defined(__x86_64__)
  if (!__builtin_cpu_supports("avx2")) GTEST_SKIP() << "this processor has no AVX2";
  for (int count : {1, 4, 7, 8, 33, 300}) {
    const Matches matches = noisyMatches(count, 0.4);
    for (double tilt : {0.1, 1.5}) {  // the second puts some matches behind the horizon
      const Homography h = {{{1, 0.1, 0}, {0, 1, 0.1}, {tilt, -0.2, 1}}};
      NormalSums base;
      NormalSums fast;
      normalSumsBase(matches, h, GetParam(), 0.2, base);
      normalSumsAvx2(matches, h, GetParam(), 0.2, fast);
      EXPECT_EQ(std::memcmp(&base, &fast, sizeof base), 0) << count << " matches, tilt " << tilt;
    }
  }
#else
  GTEST_SKIP() << "one variant only";
#endif
}

TEST(HomographyFit, FindsAnExactTransform) {
  for (int count : {4, 5, 32, 101}) {
    const Matches matches = noisyMatches(count, 0.0);
    const HomographyFit fit = fitHomography(matches, kIdentity);
    EXPECT_TRUE(fit.converged);
    for (std::size_t i = 0; i < 9; ++i) {
      EXPECT_NEAR(fit.h[i / 3][i % 3], kView[i / 3][i % 3], 1e-10) << count << " matches";
    }
  }
}

namespace {

struct Residuals {
  using Scalar = double;
  using InputType = Eigen::VectorXd;
  using ValueType = Eigen::VectorXd;
  using JacobianType = Eigen::MatrixXd;
  enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };
  const Matches& m;
  Loss loss;
  double width;
  int inputs() const { return 8; }
  int values() const { return static_cast<int>(m.size()); }
  // Roots of the losses, so that their squares are what is minimised.
  int operator()(const Eigen::VectorXd& x, Eigen::VectorXd& f) const {
    for (std::size_t i = 0; i < m.size(); ++i) {
      const Match k = m[i];
      const double s = x[6] * k.from.x + x[7] * k.from.y + 1.0;
      const double dx = (x[0] * k.from.x + x[1] * k.from.y + x[2]) / s - k.to.x;
      const double dy = (x[3] * k.from.x + x[4] * k.from.y + x[5]) / s - k.to.y;
      f[static_cast<Eigen::Index>(i)] =
          k.weight * std::sqrt(lossOf<double>(loss, width, dx * dx + dy * dy));
    }
    return 0;
  }
};

}  // namespace

TEST_P(EveryLoss, ReachesTheOptimumOfAnIndependentSolver) {
  for (unsigned seed = kSeed; seed < kSeed + 10; ++seed) {
    const Matches matches = noisyMatches(40, 0.05, seed);
    FitOptions options;
    options.loss = GetParam();
    options.width = 0.04;
    const HomographyFit plain = fitHomography(matches, kView);
    const HomographyFit fit = fitHomography(matches, plain.h, options);
    EXPECT_TRUE(fit.converged);
    Residuals residuals{matches, GetParam(), options.width};
    Eigen::NumericalDiff<Residuals, Eigen::Central> differences(residuals);
    Eigen::LevenbergMarquardt<decltype(differences)> lm(differences);
    lm.parameters.ftol = lm.parameters.xtol = 1e-14;
    lm.parameters.maxfev = 10000;
    Eigen::VectorXd x(8);
    for (int i = 0; i < 8; ++i) {
      x[i] = fit.h[static_cast<std::size_t>(i / 3)][static_cast<std::size_t>(i % 3)];
    }
    lm.minimize(x);
    const double independent = lm.fvec.squaredNorm();
    EXPECT_LE(fit.cost, independent * (1 + 1e-9)) << "seed " << seed;
    EXPECT_NEAR(fit.cost, costOf(matches, parameters<double>(fit.h), GetParam(), options.width),
                1e-10 * fit.cost);
  }
}

TEST(HomographyFit, ComesFromFarAway) {
  const Matches matches = noisyMatches(30, 1e-3);
  const Homography turned = {{{-0.2, 0.9, 0.3}, {-0.9, -0.2, 0}, {0.1, 0.1, 1}}};
  const HomographyFit near = fitHomography(matches, kView);
  const HomographyFit far = fitHomography(matches, turned);
  EXPECT_NEAR(far.cost, near.cost, 1e-9 * near.cost);
}

TEST(HomographyFit, RefusesAStartThatPutsAMatchBehindTheHorizon) {
  Matches matches = noisyMatches(8, 0.0);
  const HomographyFit fit = fitHomography(matches, {{{1, 0, 0}, {0, 1, 0}, {5, 5, 1}}});
  EXPECT_FALSE(fit.converged);
  EXPECT_TRUE(std::isinf(fit.cost));
}

TEST(HomographyFit, EndsOnMatchesThatFixNothing) {
  Matches matches;
  for (int i = 0; i < 6; ++i) matches.add({{0.1 * i, 0.2 * i}, {0.1 * i, 0.3 * i}, 1.0});
  const HomographyFit fit = fitHomography(matches, kIdentity);
  EXPECT_FALSE(fit.converged);
  EXPECT_TRUE(isFinite(fit.h));
}
