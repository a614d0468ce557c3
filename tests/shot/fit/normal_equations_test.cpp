// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/normal_equations.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "tests/shot/fit/defined_loss.h"
#include "tests/support/processor.h"

using namespace cornerpin;

namespace {

constexpr unsigned kSeed = 20240711;

Matches scatteredMatches(int count) {
  std::mt19937 random(kSeed);
  const auto uniform = [&] { return 2.0 * static_cast<double>(random()) / 4294967296.0 - 1.0; };
  Matches matches;
  for (int i = 0; i < count; ++i) {
    matches.add({{uniform(), uniform()}, {uniform(), uniform()}, 1.0 + 0.7 * uniform()});
  }
  return matches;
}

using Derivative8 = MDeriv<double>;

// The variable number i of eight, which is 0.
Derivative8 variable(std::size_t i) {
  std::array<double, 8> d{};
  d[i] = 1.0;
  return {0.0, d.data(), 8, true};
}

// The transform, varied by a, b and c: its image (X, Y), seen from that of the origin, is carried
// on by the rows (1 + a0, a1, a2), (b0, 1 + b1, b2) and (-c0, -c1, 1).
std::array<Derivative8, 8> varied(const Homography& h) {
  const auto v = [](std::size_t i) { return variable(i); };
  const double cx = h[0][2], cy = h[1][2];
  std::array<Derivative8, 8> p;
  for (std::size_t k = 0; k < 3; ++k) {
    const double x = h[0][k] - cx * h[2][k], y = h[1][k] - cy * h[2][k], w = h[2][k];
    const Derivative8 newX = x + v(0) * x + v(1) * y + v(2) * w;
    const Derivative8 newY = y + v(3) * x + v(4) * y + v(5) * w;
    const Derivative8 newW = w - (v(6) * x + v(7) * y);
    p[k] = newX + cx * newW;
    p[3 + k] = newY + cy * newW;
    if (k < 2) p[6 + k] = newW;
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
    const auto [dx, dy] = defined::residualOf(m, varied(view.h));
    const MDeriv<double> r2 = dx * dx + dy * dy;
    const MDeriv<double> cost = w2 * defined::lossOf(loss, width, r2);
    double one[] = {1.0};
    const double slope = defined::lossOf(loss, width, MDeriv<double>(r2.x(), one, 1, true)).d(0);
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
  normal.block<3, 2>(0, 6) << n.cubic[0], n.cubic[1], n.cubic[1], n.cubic[2], n.mm[0], n.mm[1];
  normal.block<3, 2>(3, 6) << n.cubic[1], n.cubic[2], n.cubic[2], n.cubic[3], n.mm[1], n.mm[2];
  normal.block<2, 6>(6, 0) = normal.block<6, 2>(0, 6).transpose().eval();
  normal.block<2, 2>(6, 6) << n.cc[0], n.cc[1], n.cc[1], n.cc[2];
  return normal;
}

std::array<double, 8> gradientOf(const NormalEquations& n) {
  return {n.ab[0], n.ab[2], n.ab[4], n.ab[1], n.ab[3], n.ab[5], n.c[0], n.c[1]};
}

NormalEquations sumBy(const NormalEquationsVariant& variant, const Matches& matches,
                      const Homography& h, Loss loss, double width) {
  NormalEquations sums;
  NormalEquationsPass(matches, matches.squaredWeights(), loss, width, variant)(h, sums);
  return sums;
}

class SumsOf : public testing::TestWithParam<Loss> {};

// The third coordinate is x + 1.
const Homography kBowed = {{{1, 0, 0}, {0, 1, 0}, {1, 0, 1}}};

Matches atDenominator(double s) {
  return {{{s - 1.0, 0.25}, {0.5, 0.5}, 2.0}, {{0.0, 0.0}, {0.0, 3.0}, 1.0}};
}

NormalEquations sumOf(const Matches& matches, const Homography& h, Loss loss, double width) {
  NormalEquations sums;
  NormalEquationsPass(matches, matches.squaredWeights(), loss, width)(h, sums);
  return sums;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(NormalEquations, SumsOf,
                         testing::Values(Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey));

TEST_P(SumsOf, HasTheDerivativesOfItsCost) {
  constexpr double kWidth = 0.25;
  constexpr double kRounding = 36 * 10 * std::numeric_limits<double>::epsilon();
  for (unsigned seed = kSeed; seed < kSeed + 200; ++seed) {
    const View view = randomView(seed, seed % 2 == 0);
    const NormalEquations sums =
        sumBy(normalEquationsVariants().front(), view.matches, view.h, GetParam(), kWidth);
    const Derivatives expected = derivativesOf(view, GetParam(), kWidth);
    EXPECT_NEAR(
        sums.cost,
        defined::costOf(view.matches, defined::parameters<double>(view.h), GetParam(), kWidth),
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

TEST_P(SumsOf, HasTheSameBitsInEveryVariant) {
  for (const NormalEquationsVariant& variant : normalEquationsVariants()) {
    for (int count : {1, 4, 7, 8, 33, 300}) {
      const Matches matches = scatteredMatches(count);
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

TEST(NormalEquations, OfOneMatchAreTheProductsByHand) {
  // s = 2 and the image (3, 1); that of the origin is (1, 2), so (X, Y) = (2, -1). The residual is
  // (1, -1).
  const Matches matches = {{{1, 2}, {2, 2}, 3.0}};
  const NormalEquations n =
      sumOf(matches, {{{3, 1, 1}, {2, -1, 2}, {0.5, 0.25, 1}}}, Loss::None, 0.0);
  const double mm[] = {4, -2, 1, 2, -1, 1};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(n.mm[i], 9.0 * mm[i]) << i;
  const double cubic[] = {8, -4, 2, -1};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(n.cubic[i], 9.0 * cubic[i]) << i;
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(n.cc[i], 9.0 * 5.0 * mm[i]) << i;
  const double ab[] = {2, -2, -1, 1, 1, -1};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(n.ab[i], 9.0 * ab[i]) << i;
  const double c[] = {2 * 3, -1 * 3};
  for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(n.c[i], 9.0 * c[i]) << i;
  EXPECT_EQ(n.cost, 18.0);
}

TEST(NormalEquations, TakeTheWeightsThatTheyAreGiven) {
  const Matches matches = scatteredMatches(10);
  const Homography h = {{{1, 0.1, 0}, {0, 1, 0.1}, {0.1, -0.2, 1}}};
  Matches heavier;
  std::vector<double> squaredWeights(12, 0.0);
  for (std::size_t i = 0; i < 10; ++i) {
    Match m = matches[i];
    m.weight = static_cast<double>(i);
    squaredWeights[i] = m.weight * m.weight;
    heavier.add(m);
  }
  NormalEquations given;
  NormalEquationsPass(matches, squaredWeights, Loss::Huber, 0.2)(h, given);
  const NormalEquations own = sumOf(heavier, h, Loss::Huber, 0.2);
  EXPECT_EQ(std::memcmp(&given, &own, sizeof own), 0);
}

TEST(NormalEquations, CountAMatchJustInFrontOfTheHorizon) {
  const NormalEquations n = sumOf(atDenominator(1.02e-6), kBowed, Loss::None, 0.0);
  EXPECT_TRUE(std::isfinite(n.cost));
  EXPECT_EQ(n.mm[5], 5.0);
  EXPECT_NEAR(n.cost * 1.02e-6 * 1.02e-6, 4.0 * 1.0625, 1e-4);
}

TEST(NormalEquations, LeaveOutAMatchOnOrBehindTheHorizon) {
  for (double s : {0.98e-6, 0.0, -1e-6, -1.0}) {
    const NormalEquations n = sumOf(atDenominator(s), kBowed, Loss::None, 0.0);
    EXPECT_EQ(n.mm[5], 1.0) << s;
    EXPECT_EQ(n.ab[5], -3.0) << s;
    EXPECT_EQ(n.cost, HUGE_VAL) << s;
  }
}

TEST(NormalEquations, CountAMatchBehindTheHorizonWithTheBoundOfTheLoss) {
  const Matches matches = atDenominator(-1.0);
  EXPECT_EQ(sumOf(matches, kBowed, Loss::Huber, 6.0).cost, HUGE_VAL);
  EXPECT_EQ(sumOf(matches, kBowed, Loss::Cauchy, 6.0).cost, HUGE_VAL);
  // The other match is half a width away: a third of 36 times 1 - (3/4)^3.
  EXPECT_EQ(sumOf(matches, kBowed, Loss::Tukey, 6.0).cost, 4.0 * 12.0 + 12.0 * (37.0 / 64.0));
}

TEST(NormalEquationsVariants, AreThoseThatTheProcessorRuns) {
  std::vector<std::string> expected = processor::kernelVariants();
  expected.front() = "base";
  std::vector<std::string> names;
  for (const NormalEquationsVariant& variant : normalEquationsVariants()) {
    names.emplace_back(variant.name);
  }
  EXPECT_EQ(names, expected);
}

TEST(NormalEquationsVariants, AreDifferentFunctions) {
  const auto& variants = normalEquationsVariants();
  for (std::size_t i = 1; i < variants.size(); ++i) EXPECT_NE(variants[i].run, variants[i - 1].run);
}
