// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/homography_fit.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <unsupported/Eigen/NonLinearOptimization>

#include "cornerpin/deriv/deriv.h"
#include "shot/fit/normal_equations.h"

using namespace cornerpin;

namespace {

constexpr unsigned kSeed = 20240711;

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

double valueOf(double x) { return x; }
double valueOf(const MDeriv<double>& x) { return x.x(); }

// The loss as it is defined, of plain and of derivative numbers.
template <class T>
T lossOf(Loss loss, double width, const T& r2) {
  using std::log;
  using std::sqrt;
  const double b = width * width;
  const bool inside = valueOf(r2) <= b;
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

// Where the parameters put a point, less where it ought to be.
template <class T>
std::array<T, 2> residualOf(const Match& m, const std::array<T, 8>& p) {
  const T s = p[6] * m.base.x + p[7] * m.base.y + 1.0;
  return {(p[0] * m.base.x + p[1] * m.base.y + p[2]) / s - m.present.x,
          (p[3] * m.base.x + p[4] * m.base.y + p[5]) / s - m.present.y};
}

double costOf(const Matches& m, const std::array<double, 8>& p, Loss loss, double width) {
  double cost = 0.0;
  for (std::size_t i = 0; i < m.size(); ++i) {
    const auto [dx, dy] = residualOf(m[i], p);
    cost += m[i].weight * m[i].weight * lossOf(loss, width, dx * dx + dy * dy);
  }
  return cost;
}

template <class T>
std::array<T, 8> parameters(const Homography& h) {
  std::array<T, 8> p;
  for (std::size_t i = 0; i < 8; ++i) p[i] = h[i / 3][i % 3];
  return p;
}

// Each the variable of its own derivative.
std::array<MDeriv<double>, 8> variables(const Homography& h) {
  auto p = parameters<MDeriv<double>>(h);
  for (std::size_t i = 0; i < 8; ++i) {
    std::array<double, 8> d{};
    d[i] = 1.0;
    p[i] = MDeriv<double>(p[i].x(), d.data(), 8, true);
  }
  return p;
}

// A transform and matches around it or next to its horizon.
struct View {
  Homography h{};
  Matches matches;
};

View randomView(unsigned seed, bool nearHorizon) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return 2.0 * static_cast<double>(random()) / 4294967296.0 - 1.0; };
  View view;
  view.h = {{{1.0 + 0.3 * uniform(), 0.5 * uniform(), 0.3 * uniform()},
             {0.5 * uniform(), 1.0 + 0.3 * uniform(), 0.3 * uniform()},
             {0.4 + 0.1 * uniform(), 0.3 * uniform(), 1.0}}};
  for (int i = 0; i < 36; ++i) {
    Point from = {uniform(), uniform()};
    const double s = 1e-3 + 0.1 * std::fabs(uniform());
    if (nearHorizon) from.x = (s - 1.0 - view.h[2][1] * from.y) / view.h[2][0];
    const Point to = map(view.h, from);
    view.matches.add({from, {to.x + 0.3 * uniform(), to.y + 0.3 * uniform()}, 1.0 + uniform()});
  }
  return view;
}

// What the sums ought to be, by derivative numbers, and the sizes of the terms that they round.
struct Derivatives {
  double costSize = 0.0;
  Eigen::Matrix<double, 8, 1> gradient = Eigen::Matrix<double, 8, 1>::Zero();
  Eigen::Matrix<double, 8, 8> normal = Eigen::Matrix<double, 8, 8>::Zero();
  Eigen::Matrix<double, 8, 1> gradientSize = Eigen::Matrix<double, 8, 1>::Zero();
  Eigen::Matrix<double, 8, 8> normalSize = Eigen::Matrix<double, 8, 8>::Zero();
};

Derivatives derivativesOf(const View& view, Loss loss, double width) {
  Derivatives sums;
  for (std::size_t i = 0; i < view.matches.size(); ++i) {
    const Match m = view.matches[i];
    const double w2 = m.weight * m.weight;
    const auto [dx, dy] = residualOf(m, variables(view.h));
    const MDeriv<double> r2 = dx * dx + dy * dy;
    const MDeriv<double> cost = w2 * lossOf(loss, width, r2);
    double one[] = {1.0};
    const double slope = lossOf(loss, width, MDeriv<double>(r2.x(), one, 1, true)).d(0);
    Eigen::Matrix<double, 2, 8> jacobian;
    for (int e = 0; e < 8; ++e) {
      jacobian(0, e) = dx.d(e);
      jacobian(1, e) = dy.d(e);
      sums.gradient[e] += cost.d(e) / 2.0;
    }
    sums.normal += w2 * slope * jacobian.transpose() * jacobian;
    // A residual, and the loss with it, is as exact as the places that it is the difference of.
    const double places = std::hypot(m.present.x, m.present.y) + 1.0;
    const Eigen::Matrix<double, 2, 8> size = w2 * places / width * jacobian.cwiseAbs();
    sums.costSize += w2 * places * width;
    sums.gradientSize += width * (size.row(0) + size.row(1)).transpose();
    sums.normalSize += size.transpose() * jacobian.cwiseAbs();
  }
  return sums;
}

Eigen::Matrix<double, 8, 8> normalOf(const NormalEquations& n) {
  Eigen::Matrix3d block;
  block << n.mm[0], n.mm[1], n.mm[3], n.mm[1], n.mm[2], n.mm[4], n.mm[3], n.mm[4], n.mm[5];
  Eigen::Matrix<double, 8, 8> normal = Eigen::Matrix<double, 8, 8>::Zero();
  normal.block<3, 3>(0, 0) = normal.block<3, 3>(3, 3) = block;
  normal.block<3, 2>(0, 6) << -n.xmm[0], -n.xmm[1], -n.xmm[1], -n.xmm[2], -n.xmm[3], -n.xmm[4];
  normal.block<3, 2>(3, 6) << -n.ymm[0], -n.ymm[1], -n.ymm[1], -n.ymm[2], -n.ymm[3], -n.ymm[4];
  normal.block<2, 6>(6, 0) = normal.block<6, 2>(0, 6).transpose().eval();
  normal.block<2, 2>(6, 6) << n.zmm[0], n.zmm[1], n.zmm[1], n.zmm[2];
  return normal;
}

std::array<double, 8> gradientOf(const NormalEquations& n) {
  return {n.gx[0], n.gx[1], n.gx[2], n.gy[0], n.gy[1], n.gy[2], n.gz[0], n.gz[1]};
}

NormalEquations sumBy(const NormalEquationsVariant& variant, const Matches& matches,
                      const Homography& h, Loss loss, double width) {
  NormalEquations sums;
  variant.run({matches.base().x(),
               matches.base().y(),
               matches.present().x(),
               matches.present().y(),
               matches.squaredWeights().data(),
               matches.base().paddedSize(),
               {h[0][0], h[0][1], h[0][2], h[1][0], h[1][1], h[1][2], h[2][0], h[2][1], h[2][2]},
               loss,
               width},
              sums);
  return sums;
}

class EveryLoss : public testing::TestWithParam<Loss> {};

}  // namespace

INSTANTIATE_TEST_SUITE_P(HomographyFit, EveryLoss,
                         testing::Values(Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey));

TEST_P(EveryLoss, HasTheDerivativesOfItsCost) {
  constexpr double kWidth = 0.25;
  constexpr double kRounding = 36 * 10 * std::numeric_limits<double>::epsilon();
  for (unsigned seed = kSeed; seed < kSeed + 200; ++seed) {
    const View view = randomView(seed, seed % 2 == 0);
    const NormalEquations sums =
        sumBy(normalEquationsVariants().front(), view.matches, view.h, GetParam(), kWidth);
    const Derivatives expected = derivativesOf(view, GetParam(), kWidth);
    EXPECT_NEAR(sums.cost, costOf(view.matches, parameters<double>(view.h), GetParam(), kWidth),
                kRounding * expected.costSize);
    const auto gradient = gradientOf(sums);
    const auto normal = normalOf(sums);
    for (int e = 0; e < 8; ++e) {
      ASSERT_NEAR(gradient[static_cast<std::size_t>(e)], expected.gradient[e],
                  kRounding * expected.gradientSize[e])
          << "seed " << seed << ", parameter " << e;
      for (int f = 0; f < 8; ++f) {
        ASSERT_NEAR(normal(e, f), expected.normal(e, f), kRounding * expected.normalSize(e, f))
            << "seed " << seed << ", parameters " << e << " and " << f;
      }
    }
  }
}

TEST_P(EveryLoss, HasTheSameBitsInEveryVariant) {
  for (const NormalEquationsVariant& variant : normalEquationsVariants()) {
    for (int count : {1, 4, 7, 8, 33, 300}) {
      const Matches matches = noisyMatches(count, 0.4);
      for (double tilt : {0.1, 1.5}) {  // the second puts some matches behind the horizon
        const Homography h = {{{1, 0.1, 0}, {0, 1, 0.1}, {tilt, -0.2, 1}}};
        const NormalEquations base =
            sumBy(normalEquationsVariants().front(), matches, h, GetParam(), 0.2);
        const NormalEquations fast = sumBy(variant, matches, h, GetParam(), 0.2);
        EXPECT_EQ(std::memcmp(&base, &fast, sizeof base), 0)
            << variant.name << ", " << count << " matches, tilt " << tilt;
      }
    }
  }
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
      const auto [dx, dy] =
          residualOf<double>(m[i], {x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7]});
      f[static_cast<Eigen::Index>(i)] =
          m[i].weight * std::sqrt(lossOf(loss, width, dx * dx + dy * dy));
    }
    return 0;
  }
};

}  // namespace

TEST_P(EveryLoss, ReachesTheOptimumOfAnIndependentSolver) {
  for (unsigned seed = kSeed; seed < kSeed + 10; ++seed) {
    const Matches matches = noisyMatches(40, 0.05, seed);
    // Tukey's has several optima where it is narrower than the noise.
    const double width = GetParam() == Loss::Tukey ? 0.12 : 0.04;
    const HomographyFit plain = fitHomography(matches, kView);
    const HomographyFit fit = fitHomography(matches, plain.h, GetParam(), width);
    EXPECT_TRUE(fit.converged);
    Residuals residuals{matches, GetParam(), width};
    Eigen::NumericalDiff<Residuals, Eigen::Central> differences(residuals);
    Eigen::LevenbergMarquardt<decltype(differences)> lm(differences);
    lm.parameters.ftol = lm.parameters.xtol = 1e-14;
    lm.parameters.maxfev = 10000;
    // From the fit's start, then from its end: neither solver goes below the other.
    for (const Homography& start : {plain.h, fit.h}) {
      auto p = parameters<double>(start);
      Eigen::VectorXd x = Eigen::Map<Eigen::VectorXd>(p.data(), 8);
      lm.minimize(x);
      EXPECT_NEAR(fit.cost, lm.fvec.squaredNorm(), 1e-9 * fit.cost) << "seed " << seed;
    }
    EXPECT_NEAR(fit.cost, costOf(matches, parameters<double>(fit.h), GetParam(), width),
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
